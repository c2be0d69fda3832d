// Whole replay files.
#include "games/corvane/corvane-lib/src/replay-parser.h"

#include <fstream>

#include <gmock/gmock.h>

#include "support/allocation-meter.h"
#include "support/replay-builder.h"

namespace {

using namespace corvane_test;
using nlohmann::json;
using testing::EndsWith;
using testing::StartsWith;

constexpr std::size_t kMebibyte = 1024 * 1024;

// One parse of a file.
struct Parse {
    explicit Parse(const TemporaryFile& file) {
        testing::internal::CaptureStdout();
        const AllocationMeter meter;
        orvel::corvane::ReplayParser parser(file.WidePath());
        bool flag = false;
        try {
            parser.ParseReplay(resumePosition, flag, {});
        } catch (char* text) {
            failure = text;
        } catch (const std::exception& exception) {
            failure = exception.what();
        }
        peak = meter.Peak();
        document = parser.Document();
        events = parser.FileInfo().Events;
        output = testing::internal::GetCapturedStdout();
    }
    explicit Parse(const Bytes& bytes) : Parse(TemporaryFile(bytes)) {}

    json document;
    std::deque<ue4::FLocalFileEventInfo> events;
    std::string failure;  // empty: none
    std::string output;
    std::uint32_t resumePosition = 0;
    std::size_t peak = 0;
};

Bytes Eliminations(const std::string& group, const std::string& metadata, std::uint32_t time = 1) {
    return Event{.group = group, .metadata = metadata, .time1 = time, .data = Elimination{}.Build()}.Build();
}

TEST(ReplayParser, failures_leave_what_was_read_before) {
    const Bytes badHeader = Header{.version = 10}.Build();
    Bytes badName = Header{.version = 5}.Build();
    badName[24 + 3] = 0x80;
    badName[24] = 0;
    const Bytes cut(badHeader.begin(), badHeader.end() - 1);
    struct Case {
        Bytes bytes;
        const char *failureEnd, *outputBegin;
        std::size_t members;
    };
    const char* const logged = "\n[ orvel::corvane::ReplayParser::ParseReplay ] [Replay Exception] lib/";
    const Case cases[] = {
        {{}, "no data in it.\n", "", 0},
        {Join({InfoBlock{}.Build(), Chunk(kHeader, cut)}), "iostream error", "\n", 1},
        {Join({InfoBlock{}.Build(), Chunk(kHeader, badName)}), ":23: Invalid SaveNum, corrupted FArchive.",
         logged, 1},
        {Join({InfoBlock{.encrypted = 1}.Build(), Chunk(kHeader, Header{}.Build()), Eliminations("x", "x")}),
         ":51: Data was encrypted, but encryption key was not set.", logged, 2},
    };
    for (const Case& c : cases) {
        const Parse parse(c.bytes);
        EXPECT_THAT(parse.failure, EndsWith(c.failureEnd));
        EXPECT_THAT(parse.output, StartsWith(c.outputBegin));
        EXPECT_EQ(parse.document.size(), c.members);
    }
    EXPECT_THAT(Parse(cases[1].bytes).failure, StartsWith("ios_base::failbit set"));
    EXPECT_THROW(orvel::corvane::ReplayParser(L"/no/such.replay"), std::ios_base::failure);
}

TEST(ReplayParser, one_payload_is_held_at_a_time_and_copied_only_to_decrypt_it) {
    constexpr std::size_t kPayload = 8 * kMebibyte;
    const Bytes encrypted = InfoBlock{.encrypted = 1, .key = Sequence(1, 16)}.Build();
    const Bytes large = Event{.group = "AthenaMatchStats", .data = Bytes(kPayload, 0x20)}.Build();
    EXPECT_LE(Parse(Join({InfoBlock{}.Build(), large, large})).peak, kMebibyte + kPayload);
    EXPECT_LE(Parse(Join({encrypted, large, large})).peak, kMebibyte + 2 * kPayload);
}

TEST(ReplayParser, a_file_of_more_than_4_gib_is_read_to_its_end) {
    constexpr std::int64_t kChunks = 3;
    const Bytes info = InfoBlock{}.Build();
    const Bytes head = Writer().U32(kData).I32(INT32_MAX).bytes;
    const Bytes event = Eliminations("playerElim", "", 42);
    const TemporaryFile temporary(info);
    std::fstream file(temporary.path, std::ios_base::binary | std::ios_base::in | std::ios_base::out);
    auto offset = static_cast<std::int64_t>(info.size());
    const auto put = [&](const Bytes& bytes) {
        file.seekp(offset).write(reinterpret_cast<const char*>(bytes.data()), std::ssize(bytes));
    };
    for (int i = 0; i < kChunks; ++i) {
        put(head);
        offset += std::int64_t{std::ssize(head)} + INT32_MAX;
    }
    put(event);
    offset += std::ssize(event);
    file.close();

    const Parse parse(temporary);
    ASSERT_EQ(parse.events.size(), 1U);
    EXPECT_GT(parse.events[0].DataOffset, kChunks * INT32_MAX);
    EXPECT_EQ(parse.document["events"][0]["eventMeta"]["time1"], 42);
    EXPECT_EQ(parse.document["ReplayFileMeta"]["TotalDataSizeInBytes"], offset);
    EXPECT_EQ(parse.resumePosition, static_cast<std::uint32_t>(offset));
}

}  // namespace
