// Single steps of the LZ decoder's frame, in states that a whole call does not come to.
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "oodle/oodle2/core/decode_some.h"
#include "support/captured-log.h"

namespace {

using testing::ElementsAre;

constexpr std::int64_t kRawLength = 100;
constexpr std::uint8_t kReset = 0x8C;

// A state with scratch for Kraken, at the start of a window of kRawLength bytes.
struct Fixture {
    Fixture() {
        const std::ptrdiff_t size =
            oo2::ScratchSizeNeeded(OodleLZ_Compressor_Kraken, kRawLength) + oo2::kDecoderMemorySlack;
        memory.resize(static_cast<std::size_t>(size));
        oo2::DecodeContext start;
        start.windowBase = window.data();
        start.windowEnd = start.rawEnd = kRawLength;
        state = oo2::PlaceDecoderState(memory.data(), size, start);
    }

    bool Step(const std::vector<std::uint8_t>& stream) { return oo2::DecodeSome(*state, stream, result); }
    oo2::DecodeContext& Context() { return state->context; }

    std::vector<std::uint8_t> memory;
    std::vector<std::uint8_t> window = std::vector<std::uint8_t>(OODLELZ_BLOCK_LEN * 2);
    oo2::OodleLZDecoderState* state = nullptr;
    oo2::DecodeSomeResult result;
    CapturedLog log;
};

TEST(DecodeSome, tells_why_it_fails) {
    const std::vector<std::uint8_t> memset = {kReset, 6, 0x07, 0xFF, 0xFF, 1};
    const struct {
        const char* line;
        std::vector<std::uint8_t> stream;
        std::function<void(Fixture&)> prepare = [](Fixture&) {};
    } failures[] = {
        {"OODLE ERROR : you didn't give me enough window!\n", memset,
         [](Fixture& f) { f.Context().rawPos = kRawLength; }},
        {"OODLE ERROR : sliding window must be pow2!\n", memset,
         [](Fixture& f) { f.Context().rawEnd = 101; }},
        {"OODLE ERROR : only legacy compressors do sliding window!\n", memset,
         [](Fixture& f) { f.Context().windowEnd = 64; }},
        {"OODLE ERROR : Requested Fuzz Safety, saw a compressor that can't decode Safe\n",
         {kReset, 0, 0},
         [](Fixture& f) { f.Context().fuzzSafe = true; }},
        {"OODLE ERROR : Legacy LZ VTable not installed", {kReset, 0, 0}},
        {"OODLE ERROR : Heterogenous compressor file with insufficient decoder memory size!\n", memset,
         [](Fixture& f) { --f.state->scratchSize; }},
        // In the middle of a block whose header it never read, or read as nonsense.
        {"OODLE ERROR : LZ corruption : DecodeOneQ invalid decodeType!\n",
         {0, 0, 9},
         [](Fixture& f) { f.Context().rawPos = 1; }},
        {"OODLE ERROR : invalid decodeType!\n",
         {0, 0, 9},
         [](Fixture& f) { f.Context().rawPos = 1, f.state->block.decodeType = 99; }},
        {"OODLE ERROR : corruption : matchOff > 1\n",
         {0x03, 0xFF, 0xFF, 0x80, 0x00},
         [](Fixture& f) { f.Context().rawPos = 10, f.state->block.decodeType = oo2::kDecodeKraken; }},
    };
    for (const auto& failure : failures) {
        Fixture f;
        failure.prepare(f);
        EXPECT_FALSE(f.Step(failure.stream)) << failure.line;
        EXPECT_THAT(f.log.Lines(oo2::kLogError), ElementsAre(failure.line));
    }
}

TEST(DecodeSome, waits_for_more_and_gives_up_after_1000_calls) {
    Fixture f;
    for (int call = 1; call < 1000; ++call) {
        ASSERT_TRUE(f.Step({kReset, 6, 0x07, 0xFF})) << call;
        ASSERT_EQ(f.result.rawDecoded + f.result.compUsed, 0);
    }
    EXPECT_FALSE(f.Step({kReset, 6, 0x07, 0xFF}));
    EXPECT_THAT(f.log.Lines(oo2::kLogError), ElementsAre("OODLE ERROR : 1000 calls without progress!\n"));

    f.state->callsWithoutProgress = 998;
    EXPECT_TRUE(f.Step({kReset, 6, 0x07, 0xFF, 0xFF, 1}));
    EXPECT_EQ(f.result.rawDecoded, kRawLength);
    EXPECT_EQ(f.state->callsWithoutProgress, 0);
}

TEST(BlockHeader, older_ones_are_legacy_or_nothing) {
    const struct {
        std::uint8_t byte;
        int compressor;  // -1: no header
    } cases[] = {{0x00, OodleLZ_Compressor_LZH},
                 {0x55, OodleLZ_Compressor_LZH},
                 {0x0A, OodleLZ_Compressor_LZHLW},
                 {0x1A, OodleLZ_Compressor_LZNIB},
                 {0x8A, -1},
                 {0x03, -1}};
    for (const auto& c : cases) {
        const CapturedLog log;
        const auto header = oo2::ReadBlockHeader(std::vector<std::uint8_t>{c.byte, 6});
        EXPECT_EQ(header ? oo2::CompressorOf(*header) : -1, c.compressor) << int{c.byte};
    }
}

TEST(QuantumHeader, distances_have_up_to_5_groups) {
    const struct {
        std::vector<std::uint8_t> number;
        oo2::HeaderStatus status;
        std::uint64_t distance;
    } cases[] = {
        {{0x80, 0x01}, oo2::HeaderStatus::Ok, 2},
        {{0xFF, 0xFF}, oo2::HeaderStatus::Ok, 0x8000},
        {{0x00, 0x00, 0x80}, oo2::HeaderStatus::Ok, 0x8001},
        {{0x00, 0x05, 0x01, 0x82}, oo2::HeaderStatus::Ok, ((0x81 + (2 << 7)) << 15) + 5 + 0x8001},
        {{0x00, 0x00, 0, 0, 0, 0, 0x80},
         oo2::HeaderStatus::Ok,
         ((0x80ull + (0x80 << 7) + (0x80 << 14) + (0x80 << 21)) << 15) + 0x8001},
        {{0x00, 0x00, 0, 0, 0, 0, 0, 0x80}, oo2::HeaderStatus::NumberTooLarge, 0},
        {{0x00}, oo2::HeaderStatus::NeedMore, 0},
    };
    for (const auto& c : cases) {
        std::vector<std::uint8_t> bytes = {0x03, 0xFF, 0xFF};
        bytes.insert(bytes.end(), c.number.begin(), c.number.end());
        oo2::QuantumHeader header;
        EXPECT_EQ(oo2::ReadQuantumHeader(bytes, {.decodeType = oo2::kDecodeKraken}, 100, header), c.status);
        if (c.status == oo2::HeaderStatus::Ok) {
            EXPECT_EQ(header.distance, c.distance);
        }
    }
}

}  // namespace
