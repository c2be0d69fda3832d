// Engine encodings, over a stream and over a payload in memory.
#include "games/corvane/corvane-lib/src/ue4/util/ue4-binary-streams.h"

#include <gmock/gmock.h>

#include "support/allocation-meter.h"
#include "support/replay-builder.h"

namespace {

using corvane_test::Bytes;
using corvane_test::Writer;
using CppUtilities::LittleEndian;
using testing::EndsWith;
using testing::HasSubstr;

TEST(EngineString, is_read_as_this_formats_readers_do) {
    using namespace std::string_literals;
    struct Case {
        const char* what;
        Bytes bytes;
        std::string text;
        int rest;  // bytes left behind the string; -1: the data has run out
    };
    const Case cases[] = {
        {"8-bit", Writer().Str("abcd").U8(9).bytes, "abcd", 1},
        {"8-bit, length too long and ignored", Writer().I32(INT32_MAX).Add({'a', 'b', 0, 9}).bytes, "ab", 1},
        {"length 0 reads on to the next zero", Writer().I32(0).Add({'x', 'y', 0, 9}).bytes, "xy", 1},
        {"whitespace goes", Writer().Str(" A\tB \r\n\v\f").bytes, "AB", 0},
        {"bytes pass as they are", Writer().Str("\xC3\xA9\x85\xA0").bytes, "\xC3\xA9\x85\xA0", 0},
        {"UTF-16 whitespace goes", Writer().Str16(u" A\tB\u00A0").bytes, "AB\xC2\xA0\0"s, 0},
        {"UTF-16 pair", Writer().Str16(u"\U0001F600").bytes, "\xF0\x9F\x98\x80\0"s, 0},
        {"UTF-16 unpaired", Writer().I32(-2).U16(0xDC00).U16(0xD800).bytes, "\xEF\xBF\xBD\xEF\xBF\xBD", 0},
        {"UTF-16, one unit", Writer().I32(-1).U16(0x4E2D).bytes, "\xE4\xB8\xAD", 0},
        {"UTF-16 cut", Writer().I32(-3).U16('a').U16('b').U8(0).bytes, "", -1},
        {"UTF-16 far too long", Writer().I32(-INT32_MAX).U16('a').bytes, "", -1},
        {"8-bit without end", Writer().I32(3).Add({'a', 'b'}).bytes, "", -1},
        {"no length", {5, 0}, "", -1},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        ue4::FDataReader archive(c.bytes.data(), c.bytes.size(), LittleEndian);
        std::string text = "old";
        archive.ReadString(text);
        EXPECT_EQ(text, c.text);
        EXPECT_EQ(archive.Reader().fail() ? -1 : static_cast<int>(archive.Reader().remaining()), c.rest);

        ue4::PayloadReader payload(c.bytes);
        std::string same = "old";
        payload.ReadStoredString(same);
        EXPECT_EQ(ue4::WithoutWhitespace(same), c.text);
        EXPECT_EQ(static_cast<int>(payload.Rest().size()), std::max(c.rest, 0));
    }
}

TEST(PayloadReader, gives_zeros_from_the_first_value_that_is_not_whole) {
    const Bytes bytes = Writer().U8(7).I32(-2).Fill(6, 9).bytes;
    ue4::PayloadReader payload(bytes);
    EXPECT_EQ(payload.ReadByte(), 7);
    EXPECT_EQ(payload.ReadInt32(), -2);
    payload.Skip(3);
    EXPECT_EQ(payload.ReadUInt32(), 0U);
    EXPECT_TRUE(payload.Rest().empty());
    EXPECT_EQ(payload.ReadByte(), 0);
    ue4::PayloadReader skipped(bytes);
    skipped.Skip(static_cast<std::uint64_t>(-1));
    EXPECT_EQ(skipped.ReadByte(), 0);
}

// Expects a ReplayException with this text.
template <typename Read>
void ExpectReplayException(const char* text, const Read& read) {
    try {
        read();
        ADD_FAILURE() << "nothing was thrown";
    } catch (const ue4::ReplayException& exception) {
        EXPECT_THAT(exception.what(), HasSubstr("ue4-binary-streams"));
        EXPECT_THAT(exception.what(), EndsWith(text));
    }
}

TEST(EngineString, an_impossible_length_is_a_replay_exception) {
    const Bytes bytes = Writer().I32(INT32_MIN).Str("x").bytes;
    const char* const text = ":23: Invalid SaveNum, corrupted FArchive.";
    ue4::FDataReader archive(bytes.data(), bytes.size(), LittleEndian);
    ExpectReplayException(text, [&] { archive.ReadString(); });
    std::string name;
    ExpectReplayException(text, [&] { ue4::PayloadReader(bytes).ReadStoredString(name); });
}

// A payload that is compressed: the two sizes, then a stored block.
Bytes Compressed(std::int32_t size, std::int32_t compressedSize, const Bytes& stored) {
    return Writer().I32(size).I32(compressedSize).U8(0xCC).U8(6).Add(stored).bytes;
}

TEST(ReadPayload, does_what_the_flags_ask) {
    constexpr std::uint8_t kCompressed = ue4::FStreamReader::kPayloadCompressed;
    const Bytes good = Compressed(3, 5, {'a', 'b', 'c'});
    const struct {
        const char* what;
        Bytes stored;
        std::uint8_t flags;
        Bytes expected;
    } cases[] = {
        {"plain, unknown bits", {1, 2, 3}, 0xF9, {1, 2, 3}},
        {"compressed", good, kCompressed, {'a', 'b', 'c'}},
        {"compressed size beyond the payload",
         Compressed(3, INT32_MAX, {'a', 'b', 'c'}),
         kCompressed,
         {'a', 'b', 'c'}},
    };
    for (const auto& c : cases) {
        ue4::FDataReader archive(c.stored.data(), c.stored.size(), LittleEndian);
        EXPECT_EQ(archive.ReadPayload(static_cast<std::uint32_t>(c.stored.size()), c.flags), c.expected)
            << c.what;
    }
    const Bytes broken[] = {Compressed(4, 5, {'a', 'b', 'c'}),
                            Compressed(INT32_MAX, 5, {'a', 'b', 'c'}),
                            Compressed(-1, 5, {'a', 'b', 'c'}),
                            Compressed(3, -5, {'a', 'b', 'c'}),
                            {1, 0, 0}};
    for (const Bytes& stored : broken) {
        ue4::FDataReader archive(stored.data(), stored.size(), LittleEndian);
        testing::internal::CaptureStdout();
        const corvane_test::AllocationMeter meter;
        EXPECT_EQ(archive.ReadPayload(static_cast<std::uint32_t>(stored.size()), kCompressed), stored);
        EXPECT_LE(meter.Peak(), 1U << 20);
        EXPECT_THAT(testing::internal::GetCapturedStdout(), EndsWith("Failed to decompress data.\n"));
    }
}

TEST(ReadPayload, decrypts_before_it_decompresses) {
    // FIPS-197, appendix C.1; what comes out is no compressed stream.
    const Bytes cipher = {0x69, 0xc4, 0xe0, 0xd8, 0x6a, 0x7b, 0x04, 0x30,
                          0xd8, 0xcd, 0xb7, 0x80, 0x70, 0xb4, 0xc5, 0x5a};
    Bytes plain;
    for (int i = 0; i < 16; ++i) plain.push_back(static_cast<std::uint8_t>(i * 0x11));
    const auto read = [&](std::uint32_t size, std::uint8_t flags, const Bytes& key) {
        ue4::FDataReader archive(cipher.data(), cipher.size(), LittleEndian);
        archive.EncryptionKey = key;
        testing::internal::CaptureStdout();
        const Bytes payload = archive.ReadPayload(size, flags);
        return std::pair(payload, testing::internal::GetCapturedStdout());
    };
    const Bytes key = corvane_test::Sequence(0, 16);
    EXPECT_EQ(read(16, 2, key), std::pair(plain, std::string()));
    EXPECT_THAT(read(16, 6, key), testing::Pair(plain, HasSubstr("data::decompress ]")));
    EXPECT_THAT(read(15, 6, key),
                testing::Pair(Bytes{}, "[ orvel::util::data::decrypt ] Decryption failed.\n"));
    EXPECT_EQ(read(0, 6, key), std::pair(Bytes{}, std::string()));

    ue4::FDataReader archive(cipher.data(), cipher.size(), LittleEndian);
    ExpectReplayException(":51: Data was encrypted, but encryption key was not set.",
                          [&] { archive.ReadPayload(0, 2); });
}

}  // namespace
