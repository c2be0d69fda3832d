// Memory that runs out, at every allocation there is.
#include <new>

#include <gmock/gmock.h>

#include "cpp/faults/replay-under-test.h"
#include "support/allocation-meter.h"

namespace {

using namespace corvane_test;

// Runs the operation again and again; each time the next allocation fails, until no allocation is left. Each
// run must give the usual result or std::bad_alloc, and hold no memory afterwards. Returns the number of
// allocations.
template <typename Operation>
std::size_t FailEveryAllocation(const Operation& operation) {
    const std::string expected = operation();
    for (std::size_t before = 0;; ++before) {
        SCOPED_TRACE("after " + std::to_string(before) + " allocations");
        bool happened = false;
        bool isSame = false;
        bool isBadAlloc = false;
        const AllocationMeter meter;
        {
            const FailingAllocation failure(before);
            try {
                isSame = operation() == expected;
            } catch (const std::bad_alloc&) {
                isBadAlloc = true;
            } catch (...) {
            }
            happened = failure.Happened();
        }
        EXPECT_EQ(meter.Held(), 0);
        EXPECT_TRUE(isSame || isBadAlloc);
        if (!happened) return before;
    }
}

TEST(AllocationFailure, of_a_parse_leaves_nothing_behind) {
    const QuietOutput quiet;
    const Bytes info = InfoBlock{}.Build();
    const Event badEvent{.metadata = "playerElim",
                         .data = Elimination{.killed = {16, 0, 0, 0, 0x80}}.Build()};
    // Two good replays, then replays that fail in each of their parts.
    for (const Bytes& replay :
         {Whole(SectionsOfReplay()), Whole(SectionsOfEncryptedReplay()),
          Join({info, Chunk(kHeader, Writer().U32(0x2CF5A13D).bytes)}),
          Join({info, Chunk(kHeader, {}), Chunk(kHeader, {})}),
          Join({info, Chunk(kEvent, Writer().I32(INT32_MIN).bytes)}), Join({info, badEvent.Build()})}) {
        const TemporaryFile file(replay);
        const std::wstring path = file.WidePath();
        EXPECT_GT(FailEveryAllocation([&] { return ReadFile(path).text; }), 10u);
    }
}

}  // namespace
