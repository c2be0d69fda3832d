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
        try {
            parser.ParseReplay(resume, {});
        } catch (char* text) {
            failure = text;
        } catch (const std::exception& exception) {
            failure = exception.what();
        }
        peak = meter.Peak();
        document = json::parse(parser.TakeText());
        events = parser.FileInfo().Events;
        output = testing::internal::GetCapturedStdout();
    }
    explicit Parse(const Bytes& bytes) : Parse(TemporaryFile(bytes)) {}

    json document;
    std::deque<ue4::FLocalFileEventInfo> events;
    std::string failure;  // empty: none
    std::string output;
    ue4::ResumeState resume;
    std::size_t peak = 0;
};

TEST(ReplayParser, failures_leave_what_was_read_before) {
    const Bytes info = InfoBlock{}.Build();
    const Bytes cutHeader = Prefix(Header{}.Build(), 20);
    const Bytes badName = Writer().Add(Prefix(Header{.version = 5}.Build(), 24)).I32(INT32_MIN).bytes;
    const Bytes keyless = Join({InfoBlock{.encrypted = 1}.Build(), Chunk(kHeader, Header{}.Build()),
                                Event{.data = Bytes(16)}.Build()});
    const char* const logged = "\n[ orvel::corvane::ReplayParser::ParseReplay ] [Replay Exception] lib/";
    const struct {
        Bytes bytes;
        const char *failureEnd, *outputBegin;
        std::size_t members;
    } cases[] = {
        {{}, "no data in it.\n", "", 0},
        {Join({info, Chunk(kHeader, cutHeader)}), "iostream error", "\n", 1},
        {Join({info, Chunk(kHeader, badName)}), ":23: Invalid SaveNum, corrupted FArchive.", logged, 1},
        {keyless, ":51: Data was encrypted, but encryption key was not set.", logged, 2},
    };
    for (const auto& c : cases) {
        const Parse parse(c.bytes);
        EXPECT_THAT(parse.failure, EndsWith(c.failureEnd));
        EXPECT_THAT(parse.output, StartsWith(c.outputBegin));
        EXPECT_EQ(parse.document.size(), c.members);
    }
}

TEST(ReplayParser, one_payload_is_held_at_a_time_and_decrypted_in_place) {
    constexpr std::size_t kPayload = 8 * kMebibyte;
    const Bytes encrypted = InfoBlock{.encrypted = 1, .key = Sequence(1, 16)}.Build();
    const Bytes large = Event{.group = "AthenaMatchStats", .data = Bytes(kPayload, 0x20)}.Build();
    EXPECT_LE(Parse(Join({InfoBlock{}.Build(), large, large})).peak, kMebibyte + kPayload);
    EXPECT_LE(Parse(Join({encrypted, large, large})).peak, kMebibyte + kPayload);
}

// The file is sparse. On the 32-bit target neither offset fits into a size_t.
TEST(ReplayParser, events_behind_2_and_4_gib_are_read) {
    const Bytes head = Writer().U32(kData).I32(INT32_MAX).bytes;
    const auto event = [](std::uint32_t time) {
        return Event{.metadata = "playerElim", .time1 = time, .data = Elimination{}.Build()}.Build();
    };
    const TemporaryFile temporary({});
    std::fstream file(temporary.path, std::ios_base::binary | std::ios_base::in | std::ios_base::out);
    std::int64_t offset = 0;
    for (const Bytes& bytes : {InfoBlock{}.Build(), head, event(42), head, event(43)}) {
        file.seekp(offset).write(reinterpret_cast<const char*>(bytes.data()), std::ssize(bytes));
        offset += std::ssize(bytes) + (bytes == head ? INT32_MAX : std::int64_t{0});
    }
    file.close();

    const Parse parse(temporary);
    ASSERT_EQ(parse.events.size(), 2U);
    EXPECT_GT(parse.events[0].DataOffset, std::int64_t{1} << 31);
    EXPECT_GT(parse.events[1].DataOffset, std::int64_t{1} << 32);
    EXPECT_EQ(parse.document["events"][0]["eventMeta"]["time1"], 42);
    EXPECT_EQ(parse.document["events"][1]["eventMeta"]["time1"], 43);
    EXPECT_EQ(parse.document["ReplayFileMeta"]["TotalDataSizeInBytes"], offset);
    EXPECT_EQ(parse.resume.Offset, static_cast<std::uint32_t>(offset));
}

}  // namespace
