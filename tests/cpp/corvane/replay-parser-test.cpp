// Whole replay files: memory, and files above 4 GiB. tests/js/ tests failures.
#include "games/corvane/corvane-lib/src/replay-parser.h"

#include <fstream>

#include <gtest/gtest.h>

#include "support/allocation-meter.h"
#include "support/replay-builder.h"

namespace {

using namespace corvane_test;
using nlohmann::json;

constexpr std::size_t kMebibyte = 1024 * 1024;

// One parse of a file.
struct Parse {
    explicit Parse(const TemporaryFile& file) {
        const AllocationMeter meter;
        orvel::corvane::ReplayParser parser(file.WidePath());
        parser.ParseReplay(resume, {});
        peak = meter.Peak();
        document = json::parse(parser.TakeText());
        events = parser.FileInfo().Events;
    }
    explicit Parse(const Bytes& bytes) : Parse(TemporaryFile(bytes)) {}

    json document;
    std::deque<ue4::FLocalFileEventInfo> events;
    ue4::ResumeState resume;
    std::size_t peak = 0;
};

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
