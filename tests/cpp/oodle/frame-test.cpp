// Calls that the LZ decoder refuses, each with its log line, and what a call does besides decoding.
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "oodle/oodle2/core/decode_some.h"
#include "oodle/oodle2/core/decompress.h"
#include "support/captured-log.h"

namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::EndsWith;
using Bytes = std::vector<std::uint8_t>;

// First bytes of block headers, and second ones: decode types.
constexpr std::uint8_t kNewHeader = 0x0C;
constexpr std::uint8_t kReset = 0x8C;
constexpr std::uint8_t kMemcpy = 0xCC;
constexpr std::uint8_t kLzb16 = 2;
constexpr std::uint8_t kKraken = 6;
constexpr std::uint8_t kCarriesCheck = 0x80;

Bytes Memset(std::uint8_t fill, std::uint8_t type = kKraken) {
    return {kReset, type, 0x07, 0xFF, 0xFF, fill};
}

// Decodes the stream with these settings, in as many bytes of the caller's as they say and behind a
// dictionary of 0xEE.
struct Decoded {
    explicit Decoded(const Bytes& stream, oo2::DecompressArgs args = {}, std::size_t dictionary = 0) {
        if (args.rawLen == 0) args.rawLen = 100;
        raw.assign(dictionary + static_cast<std::size_t>(args.rawLen), 0xEE);
        Bytes memory(static_cast<std::size_t>(args.decoderMemorySize));
        args.compBuf = stream.data();
        args.compBufSize = std::ssize(stream);
        args.rawBuf = raw.data() + dictionary;
        args.decBufBase = raw.data();
        if (!memory.empty()) args.decoderMemory = memory.data();
        result = oo2::Decompress(args, oo2::DecodePath::Fast);
    }

    CapturedLog log;
    Bytes raw;
    std::ptrdiff_t result = 0;
};

TEST(Frame, a_call_that_cannot_be_done_gives_0_and_says_why) {
    constexpr std::ptrdiff_t kPhaseMemory = OodleLZ_ThreadPhased_BlockDecoderMemorySizeNeeded;
    const auto cancel = [](void*, const std::uint8_t*, std::ptrdiff_t, const std::uint8_t*, std::ptrdiff_t,
                           std::ptrdiff_t, std::ptrdiff_t) { return 1; };
    const Bytes checked = {kReset, kKraken | kCarriesCheck, 0, 0, 0, 1, 2, 3, 9};
    Bytes twoBlocks = Memset(7);
    twoBlocks.insert(twoBlocks.end(), {kNewHeader, kKraken, 0x07, 0xFF, 0xFF, 8});
    const struct {
        const char* line;
        Bytes stream;
        oo2::DecompressArgs args;
        std::size_t dictionary = 0;
    } cases[] = {
        {"dictionary backup distance must be a multiple of OODLELZ_BLOCK_LEN", Memset(7), {}, 1000},
        {"OodleLZ_Decompress failed (262144 != 300000)",
         twoBlocks,
         {.rawLen = 300'000, .fpCallback = cancel}},
        {"insufficient comp data in OodleLZ_GetAllChunksCompressor",
         {kReset, kKraken, 0, 0, 9},
         {.rawLen = OODLELZ_BLOCK_LEN + 1}},
        {"check value not verified : its hash is not known to this decoder", checked, {.checkCRC = true}},
        {"decoderMemory < OodleLZ_ThreadPhased_BlockDecoderMemorySizeNeeded",
         Memset(7),
         {.decoderMemorySize = kPhaseMemory - 1, .threadPhase = OodleLZ_Decode_ThreadPhase2}},
        {"asked for threaded decode of more than one block",
         twoBlocks,
         {.rawLen = OODLELZ_BLOCK_LEN + 1, .decoderMemorySize = kPhaseMemory, .threadPhase = 1}},
        {"!OodleLZ_Compressor_CanDecodeThreadPhased",
         Memset(7, kLzb16),
         {.decoderMemorySize = kPhaseMemory, .threadPhase = OodleLZ_Decode_ThreadPhase1}},
    };
    for (const auto& c : cases) {
        const Decoded decoded(c.stream, c.args, c.dictionary);
        EXPECT_EQ(decoded.result, 0) << c.line;
        EXPECT_THAT(decoded.log.Lines(oo2::kLogError), Contains(EndsWith(c.line + std::string("\n"))));
    }
}

TEST(Frame, null_buffers_and_no_length_are_refused) {
    const CapturedLog log;
    std::uint8_t byte = 0;
    const auto decode = [](const void* from, void* to, std::ptrdiff_t length) {
        return OodleLZ_Decompress(from, 1, to, length, 1, 0, 0, nullptr, 0, nullptr, nullptr, nullptr, 0, 3);
    };
    EXPECT_EQ(decode(&byte, nullptr, 1) + decode(nullptr, &byte, 1) + decode(&byte, &byte, 0), 0);
    EXPECT_THAT(log.Lines(oo2::kLogError),
                ElementsAre("OODLE ERROR : bad parameter : decodeTo != 0\n",
                            "OODLE ERROR : bad parameter : compBuf != 0\n",
                            "OODLE ERROR : OodleLZ_Decompress: asked for len 0\n"));
}

TEST(Frame, a_dictionary_is_within_reach_until_a_reset) {
    // A whole match at distance 3 in the first block after a dictionary of one block.
    Bytes stream = {kNewHeader, kKraken, 0x03, 0xFF, 0xFF, 0x80, 0x02};
    const Decoded decoded(stream, {}, OODLELZ_BLOCK_LEN);
    EXPECT_EQ(decoded.result, 100);
    EXPECT_EQ(decoded.raw, Bytes(OODLELZ_BLOCK_LEN + 100, 0xEE));
    stream[0] = kReset;
    EXPECT_EQ(Decoded(stream, {}, OODLELZ_BLOCK_LEN).result, 0);
}

TEST(Frame, settings_that_change_nothing) {
    Bytes stream = Memset(7, kKraken | kCarriesCheck);  // a memset quantum carries none
    stream.push_back(0x55);                             // and what follows is not looked at
    for (oo2::DecompressArgs args :
         {oo2::DecompressArgs{.checkCRC = true}, {.decBufSize = OODLELZ_BLOCK_LEN}, {.threadPhase = 0}}) {
        args.rawLen = OODLELZ_BLOCK_LEN;
        const Decoded decoded(stream, args);
        EXPECT_EQ(decoded.result, args.rawLen);
        EXPECT_EQ(decoded.raw, Bytes(OODLELZ_BLOCK_LEN, 7));
    }
}

TEST(Frame, stored_blocks_are_not_looked_into_for_the_next_header) {
    Bytes stream = {kMemcpy, kKraken};
    stream.resize(2 + OODLELZ_BLOCK_LEN, 7);
    const Bytes last = Memset(7);
    stream.insert(stream.end(), last.begin(), last.end());
    const Decoded decoded(stream, {.rawLen = OODLELZ_BLOCK_LEN + 100});
    EXPECT_EQ(decoded.raw, Bytes(OODLELZ_BLOCK_LEN + 100, 7));
}

TEST(Frame, verbosity_3_tells_of_each_block_and_quantum) {
    const Decoded decoded({kMemcpy, kKraken, 1, 2, 3}, {.rawLen = 3, .verbosity = 3});
    EXPECT_THAT(decoded.log.Lines(oo2::kLogInfo),
                ElementsAre("OodleLZ_Decompress about to DecodeSome, starting at comp 0 -> raw 0\n",
                            "CHUNK header @ 0  , compressor 8=Kraken reset memcpy\n", " decoder memcpy 3\n"));
    EXPECT_EQ(decoded.raw, (Bytes{1, 2, 3}));
}

// Single steps, from states that a whole call never reaches.
constexpr std::int64_t kRawLength = 100;

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

    bool Step(const Bytes& stream) { return oo2::DecodeSome(*state, stream, result); }
    oo2::DecodeContext& Context() { return state->context; }

    Bytes memory;
    Bytes window = Bytes(OODLELZ_BLOCK_LEN * 2);
    oo2::OodleLZDecoderState* state = nullptr;
    oo2::DecodeSomeResult result;
    CapturedLog log;
};

TEST(DecodeSome, tells_why_it_fails) {
    const Bytes memset = {kReset, 6, 0x07, 0xFF, 0xFF, 1};
    const struct {
        const char* line;
        Bytes stream;
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
        // In the middle of a block whose header was never read, or is invalid.
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
    EXPECT_TRUE(f.Step(Bytes(1, kReset)));
    for (int call = 2; call < 1000; ++call) {
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

TEST(QuantumHeader, distances_have_up_to_5_groups) {
    const struct {
        Bytes number;
        oo2::HeaderStatus status;
        std::uint64_t distance;
    } cases[] = {
        {{0x80, 0x01}, oo2::HeaderStatus::Ok, 2},
        {{0x00, 0x00, 0x80}, oo2::HeaderStatus::Ok, 0x8001},
        {{0x00, 0x05, 0x01, 0x82}, oo2::HeaderStatus::Ok, ((0x81 + (2 << 7)) << 15) + 5 + 0x8001},
        {{0x00, 0x00, 0, 0, 0, 0, 0x80},
         oo2::HeaderStatus::Ok,
         ((0x80ull + (0x80 << 7) + (0x80 << 14) + (0x80 << 21)) << 15) + 0x8001},
        {{0x00, 0x00, 0, 0, 0, 0, 0, 0x80}, oo2::HeaderStatus::NumberTooLarge, 0},
    };
    for (const auto& c : cases) {
        Bytes bytes = {0x03, 0xFF, 0xFF};
        bytes.insert(bytes.end(), c.number.begin(), c.number.end());
        oo2::QuantumHeader header;
        EXPECT_EQ(oo2::ReadQuantumHeader(bytes, {.decodeType = oo2::kDecodeKraken}, 100, header), c.status);
        if (c.status == oo2::HeaderStatus::Ok) {
            EXPECT_EQ(header.distance, c.distance);
        }
    }
}

}  // namespace
