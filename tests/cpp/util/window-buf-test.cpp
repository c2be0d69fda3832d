// The window over a file that counts what it is asked for and may fail.
#include "util/window-buf.h"

#include <algorithm>
#include <istream>
#include <string>
#include <tuple>

#include <gtest/gtest.h>

namespace {

class WindowBuf : public testing::Test {
  protected:
    static constexpr std::int64_t kSize = 200'000;

    WindowBuf() {
        for (int i = 0; i < kSize; ++i) bytes.push_back(static_cast<char>(i * 37 % 251));
    }

    std::string ReadBytes(std::size_t count) {
        std::string text(count, '\0');
        stream.read(text.data(), static_cast<std::streamsize>(count));
        text.resize(static_cast<std::size_t>(stream.gcount()));
        return text;
    }

    std::string bytes;
    int reads = 0;
    bool fails = false;
    orvel::util::WindowBuf window{[this](std::int64_t position, char* to, std::size_t count) {
                                      ++reads;
                                      if (fails) return std::ptrdiff_t{-1};
                                      const auto from =
                                          std::min(static_cast<std::size_t>(position), bytes.size());
                                      return static_cast<std::ptrdiff_t>(bytes.copy(to, count, from));
                                  },
                                  kSize};
    std::istream stream{&window};
};

TEST_F(WindowBuf, reads_the_files_bytes_wherever_it_is_sent) {
    const std::tuple<const char*, std::size_t, std::size_t> steps[] = {
        {"the beginning", 0, 10},
        {"within the window", 100, 10},
        {"back within the window", 3, 4},
        {"across its end", 250, 20},
        {"just behind it", 2000, 300},
        {"far away", 150'000, 9},
        {"across its end, more than it can hold", 150'100, 40'000},
        {"on from there", 190'100, 20},
        {"back before it", 190'000, 500},
        {"exactly to the end", 199'990, 10},
        {"past the end, from within", 199'995, 20},
        {"past the end, straight to the caller", 180'000, 100'000},
        {"from past the end", 200'010, 1},
    };
    for (const auto& [what, position, count] : steps) {
        SCOPED_TRACE(what);
        stream.clear();
        stream.seekg(static_cast<std::streamoff>(position));
        const std::string expected = bytes.substr(std::min(position, bytes.size()), count);
        EXPECT_EQ(ReadBytes(count), expected);
        EXPECT_EQ(stream.eof() && stream.fail(), expected.size() < count);
        EXPECT_FALSE(stream.bad());
        stream.clear();
        EXPECT_EQ(stream.tellg(), static_cast<std::streamoff>(position + expected.size()));
    }
}

TEST_F(WindowBuf, asks_for_nothing_that_it_holds) {
    for (const int position : {9, 200, 0, 128}) {
        stream.seekg(position);
        stream.seekg(1, std::ios_base::cur);
        EXPECT_EQ(ReadBytes(5), bytes.substr(static_cast<std::size_t>(position) + 1, 5));
    }
    EXPECT_EQ(reads, 2);  // the first began at 10, behind what 0 asks for
    stream.seekg(250);
    while (stream.tellg() < 100'000) stream.get();
    EXPECT_LE(reads, 16);  // the reads grow as long as they go on
    stream.seekg(0, std::ios_base::end);
    EXPECT_EQ(stream.tellg(), kSize);
    EXPECT_LE(reads, 16);
}

TEST_F(WindowBuf, ends_where_the_file_ended_when_it_was_opened_or_before) {
    bytes += "more";
    stream.seekg(kSize - 3);
    EXPECT_EQ(ReadBytes(5), bytes.substr(kSize - 3, 3));
    EXPECT_TRUE(stream.eof());
    stream.clear();
    bytes.resize(kSize - 50'000);
    stream.seekg(kSize - 60'000);
    EXPECT_EQ(ReadBytes(20'000), bytes.substr(kSize - 60'000));
    EXPECT_TRUE(stream.eof());
}

TEST_F(WindowBuf, a_failing_device_makes_the_stream_bad_and_leaves_the_position) {
    stream.seekg(-1);
    EXPECT_TRUE(stream.fail() && !stream.bad());
    stream.clear();
    EXPECT_EQ(ReadBytes(5), bytes.substr(0, 5));
    for (const std::size_t count : {10U, 100'000U}) {
        stream.seekg(50'000);
        fails = true;
        EXPECT_EQ(ReadBytes(count), "");
        EXPECT_TRUE(stream.bad());
        fails = false;
        stream.clear();
        EXPECT_EQ(stream.tellg(), 50'000);
        EXPECT_EQ(ReadBytes(count), bytes.substr(50'000, count));
        stream.seekg(0);
        stream.get();
    }
}

}  // namespace
