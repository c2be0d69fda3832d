// The binary reader over memory and over streams that throw.
#include "util/binary-reader.h"

#include <algorithm>
#include <sstream>
#include <vector>

#include <gmock/gmock.h>

#include "support/allocation-meter.h"
#include "util/mem-stream.h"

namespace {

using CppUtilities::BigEndian;
using CppUtilities::BinaryReader;
using CppUtilities::LittleEndian;
using Bytes = std::vector<std::uint8_t>;

// A reader over memory that holds its bytes.
struct MemoryReader {
    explicit MemoryReader(Bytes content, CppUtilities::Endianess order = LittleEndian)
        : bytes(std::move(content)),
          reader(new orvel::util::MemStream(bytes.data(), bytes.size()), order, true) {}
    BinaryReader* operator->() { return &reader; }

    Bytes bytes;
    BinaryReader reader;
};

TEST(BinaryReader, integers_follow_the_byte_order_asked_for) {
    const Bytes bytes = {0x81, 2, 3, 4, 0x81, 2, 3, 4, 0x81, 2, 3, 4, 1, 2, 3, 4, 5, 6, 7, 0x88};
    for (const auto& [order, word, wide] : {std::tuple(LittleEndian, 0x04030281U, 0x8807060504030201U),
                                            std::tuple(BigEndian, 0x81020304U, 0x0102030405060788U)}) {
        MemoryReader reader(bytes, order);
        std::uint32_t value = 0;
        reader->read(value);
        EXPECT_EQ(value, word);
        EXPECT_EQ(reader->readInt32LE(), 0x04030281);
        EXPECT_EQ(reader->readInt32BE(), static_cast<std::int32_t>(0x81020304U));
        std::uint64_t long_value = 0;
        reader->read(long_value);
        EXPECT_EQ(long_value, wide);
    }
}

TEST(BinaryReader, a_failed_read_leaves_the_value_and_makes_all_later_reads_fail) {
    MemoryReader reader({1, 0, 0, 0, 2, 0});
    EXPECT_EQ(reader->tellg(), -1);  // memory has no position, and asking is no failure
    std::int32_t value = 0;
    reader->read(value);
    EXPECT_FALSE(reader->fail());
    reader->read(value);
    EXPECT_EQ(value, 1);
    EXPECT_TRUE(reader->fail() && reader->eof());
    EXPECT_EQ(reader->readInt32LE(), 0);
    EXPECT_EQ(reader->readTerminatedString(), "");
    EXPECT_EQ(reader->remaining(), 0U);
}

TEST(BinaryReader, strings_end_where_their_form_says) {
    MemoryReader reader({'a', 'b', 0, 'c', ';', 'd', 0, 0x3D, 0xD8, 3, 0, 0, 0, 'x', 0, 'y', 'z'});
    EXPECT_EQ(reader->readTerminatedString(), "ab");
    EXPECT_EQ(reader->readTerminatedString(';'), "c");
    EXPECT_EQ(reader->readWString(2), (std::wstring{L'd', wchar_t{0xD83D}}));
    std::string text;
    reader->read(text);
    EXPECT_EQ(text, std::string("x\0y", 3));
    EXPECT_EQ(reader->readTerminatedString(), "");  // its end is missing
    EXPECT_TRUE(reader->fail());
}

TEST(BinaryReader, a_length_that_the_stream_does_not_hold_takes_no_memory) {
    for (const std::uint64_t length : {11ULL, 5000ULL, 0x7FFFFFFFULL, 0x80000000ULL, 0xFFFFFFFFULL, ~0ULL}) {
        SCOPED_TRACE(length);
        const corvane_test::AllocationMeter meter;
        Bytes bytes{1};
        MemoryReader vector(Bytes(10));
        vector->read(bytes, length);
        EXPECT_TRUE(vector->fail() && bytes.empty());

        const auto low = static_cast<std::uint8_t>(length), high = static_cast<std::uint8_t>(length >> 24);
        MemoryReader counted({low, 0xFF, 0, high, 'a'});
        std::string text;
        counted->read(text);
        EXPECT_TRUE(counted->fail() && text.empty());

        MemoryReader wide(Bytes(10));
        EXPECT_EQ(wide->readWString(static_cast<std::uint32_t>(length)), L"");
        EXPECT_TRUE(wide->fail());
        EXPECT_LE(meter.Peak(), 10'000U);
    }
}

// Lengths around the one from which the reader first looks for a string's end, and longer ones.
TEST(BinaryReader, a_long_string_is_read_whole_or_runs_out) {
    for (const std::size_t length : {4095U, 4096U, 4097U, 20'480U, 1'000'000U}) {
        SCOPED_TRACE(length);
        const std::string name(length, 'a');
        std::istringstream file(name + std::string("\0b", 2));
        BinaryReader reader(&file, LittleEndian, false);
        EXPECT_EQ(reader.readTerminatedString(), name);
        EXPECT_FALSE(reader.fail());
        EXPECT_EQ(reader.readTerminatedString(), "");  // it has no end
        EXPECT_TRUE(reader.fail() && reader.eof());
    }
}

// A medium that fails after some blocks of 4,096 bytes, as a file on a drive that goes away.
struct BrokenBuffer : std::streambuf {
    explicit BrokenBuffer(int goodBlocks) : good(goodBlocks) {}
    int_type underflow() override {
        if (good-- == 0) throw std::ios_base::failure("error reading the file");
        setg(block.data(), block.data(), block.data() + block.size());
        return 'a';
    }
    pos_type seekoff(off_type, std::ios_base::seekdir, std::ios_base::openmode) override { return 4096; }
    std::string block = std::string(4096, 'a');
    int good;
};

// The texts of the standard libraries differ; ours does not.
TEST(BinaryReader, a_stream_failure_has_one_text) {
    std::stringbuf empty;
    BrokenBuffer broken(0), brokenLater(2);
    const std::tuple<const char*, std::streambuf*, void (*)(BinaryReader&)> cases[] = {
        {"ios_base::failbit set", &empty, [](BinaryReader& r) { r.readInt32LE(); }},
        {"ios_base::failbit set", &empty, [](BinaryReader& r) { r.readTerminatedString(); }},
        {"ios_base::badbit set", &broken, [](BinaryReader& r) { r.readInt32LE(); }},
        {"ios_base::badbit set", &brokenLater, [](BinaryReader& r) { r.readTerminatedString(); }},
    };
    for (const auto& [text, buffer, operation] : cases) {
        std::istream stream(buffer);
        stream.exceptions(std::ios_base::failbit | std::ios_base::badbit);
        BinaryReader reader(&stream, LittleEndian, false);
        EXPECT_THAT(([&reader, &run = operation] { run(reader); }),
                    testing::ThrowsMessage<std::ios_base::failure>(testing::StartsWith(text)));
        EXPECT_STREQ(reader.failureText(), text);
    }
}

TEST(BinaryReader, remaining_keeps_the_position_of_a_stream_that_has_one) {
    std::istringstream stream("0123456789");
    BinaryReader reader(&stream, LittleEndian, false);
    reader.seekg(4);
    EXPECT_EQ(reader.remaining(), 6U);
    EXPECT_EQ(reader.tellg(), 4);
    reader.seekg(40);
    EXPECT_EQ(reader.remaining(), 0U);
}

}  // namespace
