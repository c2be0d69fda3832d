// The window over a source that counts what it is asked for, grows and fails.
#include "util/window-buf.h"

#include <algorithm>
#include <istream>
#include <string>

#include <gmock/gmock.h>

namespace {

struct Source : std::streambuf {
    std::streamsize xsgetn(char* to, std::streamsize count) override {
        ++reads;
        if (failsToRead) throw std::ios_base::failure("error reading the file");
        if (hasMetEnd) return 0;
        const auto copied = bytes.copy(to, static_cast<std::size_t>(count), std::min(at, bytes.size()));
        at += copied;
        hasMetEnd = copied < static_cast<std::size_t>(count);
        return static_cast<std::streamsize>(copied);
    }
    pos_type seekpos(pos_type position, std::ios_base::openmode) override {
        ++seeks;
        if (failsToSeek) return pos_type(off_type(-1));
        at = static_cast<std::size_t>(off_type{position});
        hasMetEnd = false;
        return position;
    }
    pos_type seekoff(off_type, std::ios_base::seekdir, std::ios_base::openmode mode) override {
        return seekpos(static_cast<off_type>(bytes.size()), mode);  // from the end is all that is asked for
    }

    std::string bytes;
    std::size_t at = 0;
    bool hasMetEnd = false;  // as some C runtimes have it: nothing more before the next seek
    int reads = 0;
    int seeks = 0;
    bool failsToRead = false;
    bool failsToSeek = false;
};

class WindowBuf : public testing::Test {
  protected:
    WindowBuf() {
        for (int i = 0; i < 200'000; ++i) source.bytes.push_back(static_cast<char>(i * 37 % 251));
    }

    std::string ReadBytes(std::size_t count) {
        std::string text(count, '\0');
        stream.read(text.data(), static_cast<std::streamsize>(count));
        text.resize(static_cast<std::size_t>(stream.gcount()));
        return text;
    }

    Source source;
    orvel::util::WindowBuf window{&source};
    std::istream stream{&window};
};

TEST_F(WindowBuf, reads_the_sources_bytes_wherever_it_is_sent) {
    struct Step {
        const char* what;
        std::size_t position;
        std::size_t count;
    };
    const Step steps[] = {
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
    for (const Step& step : steps) {
        SCOPED_TRACE(step.what);
        stream.clear();
        stream.seekg(static_cast<std::streamoff>(step.position));
        const std::size_t begin = std::min(step.position, source.bytes.size());
        const std::string expected = source.bytes.substr(begin, step.count);
        EXPECT_EQ(ReadBytes(step.count), expected);
        EXPECT_EQ(stream.eof() && stream.fail(), expected.size() < step.count);
        EXPECT_FALSE(stream.bad());
        stream.clear();
        EXPECT_EQ(stream.tellg(), static_cast<std::streamoff>(step.position + expected.size()));
    }
}

TEST_F(WindowBuf, asks_the_source_for_nothing_that_it_holds) {
    for (const int position : {9, 200, 0, 128}) {
        stream.seekg(position);
        stream.seekg(1, std::ios_base::cur);
        EXPECT_EQ(ReadBytes(5), source.bytes.substr(static_cast<std::size_t>(position) + 1, 5));
    }
    EXPECT_EQ(source.reads, 2);  // the first began at 10, behind what 0 asks for
    const int seeks = source.seeks;
    stream.seekg(250);
    while (stream.tellg() < 100'000) stream.get();
    EXPECT_LE(source.reads, 16);  // the reads grow as long as they go on
    EXPECT_EQ(source.seeks, seeks);
    stream.seekg(0, std::ios_base::end);
    EXPECT_EQ(stream.tellg(), 200'000);
}

TEST_F(WindowBuf, reads_on_when_the_source_has_grown) {
    source.bytes = "abc";
    EXPECT_EQ(ReadBytes(5), "abc");
    EXPECT_TRUE(stream.eof());
    source.bytes += "de";
    stream.clear();
    EXPECT_EQ(ReadBytes(5), "de");
    EXPECT_TRUE(stream.eof());
}

TEST_F(WindowBuf, a_failing_source_makes_the_stream_bad_and_leaves_the_position) {
    stream.seekg(-1);
    EXPECT_TRUE(stream.fail() && !stream.bad());
    stream.clear();
    EXPECT_EQ(ReadBytes(5), source.bytes.substr(0, 5));
    for (const std::size_t count : {10U, 100'000U}) {
        for (bool Source::*fault : {&Source::failsToRead, &Source::failsToSeek}) {
            stream.seekg(50'000);
            source.*fault = true;
            EXPECT_EQ(ReadBytes(count), "");
            EXPECT_TRUE(stream.bad());
            source.*fault = false;
            stream.clear();
            EXPECT_EQ(stream.tellg(), 50'000);
            EXPECT_EQ(ReadBytes(count), source.bytes.substr(50'000, count));
            stream.seekg(0);
            stream.get();
        }
    }
    source.failsToSeek = true;
    stream.seekg(0, std::ios_base::end);
    EXPECT_TRUE(stream.fail());
}

}  // namespace
