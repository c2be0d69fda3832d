// Files that claim, or are, more than a reader should believe.
#include <gmock/gmock.h>

#include "cpp/faults/replay-under-test.h"

namespace {

using namespace corvane_test;

constexpr std::size_t kMebibyte = 1024 * 1024;
// The memory that any parse takes.
constexpr std::size_t kNothingMuch = 48 * 1024;
constexpr std::uint32_t kTwoBillion = 2'000'000'000;

// The information block up to its name.
Writer BlockBeforeName() { return Writer().U32(0x1CA2E27F).U32(6).U32(0).U32(0).U32(0); }

Bytes Repeated(const Bytes& bytes, std::size_t count) {
    Writer writer;
    for (std::size_t i = 0; i < count; ++i) writer.Add(bytes);
    return writer.bytes;
}

// A key that claims `count` bytes; 100 of them are there.
Bytes KeyOf(std::uint32_t count) {
    const Bytes block = InfoBlock{}.Build();
    return Writer().Add(Prefix(block, block.size() - 4)).U32(count).Fill(100).bytes;
}

// A header whose fields up to its lists are good.
Bytes HeaderBefore(std::uint32_t levelCount, const Bytes& rest) {
    const Bytes header = Header{.levels = {}, .gameData = {}}.Build();
    return Chunk(kHeader, Writer().Add(Prefix(header, header.size() - 12)).U32(levelCount).Add(rest).bytes);
}

struct Case {
    const char* name;
    Bytes bytes;
    Outcome outcome;
    std::size_t maxPeak = 4 * kMebibyte;
};

TEST(LargeNumbers, are_not_believed) {
    const QuietOutput quiet;
    const Bytes info = InfoBlock{}.Build();
    const Bytes level = Writer().I32(1).U8(0).U32(0).bytes;
    const std::vector<Case> cases = {
        {"a name without an end", BlockBeforeName().I32(10).Fill(8 * kMebibyte, 'a').bytes,
         Outcome::ProcessEnd},
        {"a UTF-16 name of 4 GB", BlockBeforeName().I32(-INT32_MAX).Fill(1000, 'a').bytes,
         Outcome::ProcessEnd},
        {"an event's id without an end",
         Join({info, Writer().U32(kEvent).Fill(8).Fill(8 * kMebibyte, 'a').bytes}), Outcome::Document},
        {"a UTF-16 name of 200,000 units that are not there",
         BlockBeforeName().I32(-200'000).Fill(1000, 'a').bytes, Outcome::ProcessEnd, kNothingMuch},
        {"a key of 60,000 bytes that are not there", KeyOf(60'000), Outcome::ProcessEnd, kNothingMuch},
        {"a key of two billion bytes", KeyOf(kTwoBillion), Outcome::ProcessEnd},
        {"two billion levels", Join({info, HeaderBefore(kTwoBillion, Repeated(level, 100'000))}),
         Outcome::Empty},
        {"fewer levels than the file holds", Join({info, HeaderBefore(16 * 1024, Repeated(level, 100'000))}),
         Outcome::Document},
        {"an event of two billion bytes",
         Join(
             {info, Chunk(kEvent, Writer().Str("").Str("").Str("playerElim").U64(0).U32(kTwoBillion).bytes)}),
         Outcome::ProcessEnd},
        {"an elimination that skips two billion bytes",
         Join({info,
               Event{.metadata = "playerElim", .data = Writer().U32(kTwoBillion).Fill(200).bytes}.Build()}),
         Outcome::Document},
        {"a chunk of two billion bytes", Join({info, Writer().U32(kData).U32(kTwoBillion).bytes}),
         Outcome::Document},
        {"a chunk that leads back to itself", Join({info, Writer().U32(kData).I32(-8).bytes}),
         Outcome::Document},
    };
    for (const Case& one : cases) {
        SCOPED_TRACE(one.name);
        const ReadResult result = Read(one.bytes);
        EXPECT_EQ(result.outcome, one.outcome) << result.text;
        EXPECT_LE(result.peakBytes, one.maxPeak);
    }
}

// Memory follows what the file holds. But the record of a chunk or an event is larger than an empty chunk or
// event.
TEST(LargeNumbers, empty_chunks_and_events_cost_their_records) {
    const Bytes event = Writer().Str("").Str("").Str("").U32(0).U32(0).U32(0).bytes;
    for (const auto& [chunk, times] :
         {std::pair(Chunk(kData, {}), 3U), std::pair(Chunk(kEvent, event), 5U)}) {
        const Bytes file = Join({InfoBlock{}.Build(), Repeated(chunk, 100'000)});
        const QuietOutput quiet;
        const ReadResult result = Read(file);
        EXPECT_EQ(result.outcome, Outcome::Document);
        EXPECT_LE(result.peakBytes, kMebibyte + times * file.size()) << chunk.size();
    }
}

}  // namespace
