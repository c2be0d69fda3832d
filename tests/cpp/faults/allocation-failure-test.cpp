// Memory that runs out, at every allocation there is.
#include <new>

#include <gmock/gmock.h>

#include "cpp/faults/replay-under-test.h"
#include "games/corvane/corvane-lib/src/replay-parser.h"
#include "oodle/oodle2/core/oodlelzcompressors.h"
#include "support/allocation-meter.h"
#include "util/data.h"

namespace {

using namespace corvane_test;

class AllocationFailure : public testing::Test {
  protected:
    const QuietOutput quiet;
};

// Runs the operation again and again, each time with the next allocation failing, until none is left to fail.
// Each time it must give the same as ever, or std::bad_alloc, and hold nothing afterwards. Returns the number
// of allocations.
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

// What a read of a file gives, be it a document or a failure.
std::string TextOrFailure(const std::wstring& path) {
    std::uint32_t resumePosition = 0;
    bool resumeFlag = false;
    try {
        orvel::corvane::ReplayParser parser(path);
        parser.ParseReplay(resumePosition, resumeFlag, {});
        return parser.Document().dump(1, ' ', false, nlohmann::json::error_handler_t::strict);
    } catch (const std::runtime_error& failure) {
        return failure.what();
    } catch (char* text) {
        return text;
    }
}

TEST_F(AllocationFailure, of_a_parse_leaves_nothing_behind) {
    for (const auto& sections : {SectionsOfReplay(), SectionsOfEncryptedReplay()}) {
        const TemporaryFile file(Whole(sections));
        const std::wstring path = file.WidePath();
        EXPECT_GT(FailEveryAllocation([&] { return TextOrFailure(path); }), 100u);
    }
}

TEST_F(AllocationFailure, of_a_parse_that_fails_leaves_nothing_behind) {
    const Event badEvent{.data = Writer().I32(INT32_MIN).bytes};
    const Bytes twoHeaders = Join({Chunk(kHeader, {}), Chunk(kHeader, {})});
    for (const Bytes& chunks :
         {Chunk(kHeader, Writer().U32(0x2CF5A13D).bytes), twoHeaders, Chunk(kEvent, badEvent.data),
          Event{.metadata = "playerElim", .data = Elimination{.killed = {16, 0, 0, 0, 0x80}}.Build()}
              .Build()}) {
        const TemporaryFile file(Join({InfoBlock{}.Build(), chunks}));
        const std::wstring path = file.WidePath();
        EXPECT_GT(FailEveryAllocation([&] { return TextOrFailure(path); }), 10u);
    }
}

TEST_F(AllocationFailure, of_a_payload_leaves_nothing_behind) {
    const Bytes data = Sequence(0, 64);
    const Bytes key = Sequence(0, 16);
    const std::size_t allocations = FailEveryAllocation([&] {
        const Bytes plain = orvel::util::data::decrypt(data, key);
        return std::string(plain.begin(), plain.end());
    });
    EXPECT_GE(allocations, 1u);
}

void IgnoreLine(int, const char*, int, const char*, ...) {}

int mallocCalls = 0;
int freeCalls = 0;

// A stored quantum of 64 bytes in a Kraken block: it needs the decoder's memory though it needs no scratch.
const Bytes kStream = Join({{0x8C, 0x06, 0x0B, 0xFF, 0xFF}, Sequence(0, 64)});

TEST_F(AllocationFailure, of_the_lz_decoder_is_a_failure_like_any_other) {
    Oodle_SetLogHook(&IgnoreLine);
    Bytes out(64);
    const auto decode = [&] {
        return OodleLZ_Decompress(kStream.data(), static_cast<std::ptrdiff_t>(kStream.size()), out.data(), 64,
                                  1, 0, 0, nullptr, 0, nullptr, nullptr, nullptr, 0,
                                  OodleLZ_Decode_Unthreaded);
    };
    Oodle_SetAllocatorHooks([](std::ptrdiff_t) -> void* { return ++mallocCalls, nullptr; },
                            [](void*) { ++freeCalls; });
    EXPECT_EQ(decode(), 0);
    EXPECT_EQ(mallocCalls, 1);
    EXPECT_EQ(freeCalls, 0);

    Oodle_SetAllocatorHooks(
        [](std::ptrdiff_t bytes) -> void* {
            return ++mallocCalls, std::malloc(static_cast<std::size_t>(bytes));
        },
        [](void* memory) { ++freeCalls, std::free(memory); });
    const AllocationMeter meter;
    EXPECT_EQ(decode(), 64);
    EXPECT_EQ(meter.Peak(), 0u) << "the decoder takes memory from its hook alone";
    EXPECT_EQ(out, Sequence(0, 64));
    EXPECT_EQ(mallocCalls, 2);
    EXPECT_EQ(freeCalls, 1);
    Oodle_SetAllocatorHooks(nullptr, nullptr);
    Oodle_SetLogHook(nullptr);
}

}  // namespace
