// The LZ frame where it fails, each failure with its line, and what it does besides decoding.
#include <cstdint>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "oodle/oodle2/core/decompress.h"
#include "support/captured-log.h"

namespace {

using testing::Contains;
using testing::ElementsAre;
using Bytes = std::vector<std::uint8_t>;

// First bytes of block headers, and second ones: decode types.
constexpr std::uint8_t kNewHeader = 0x0C;
constexpr std::uint8_t kReset = 0x8C;
constexpr std::uint8_t kMemcpy = 0xCC;
constexpr std::uint8_t kLzb16 = 2;
constexpr std::uint8_t kKraken = 6;
constexpr std::uint8_t kMermaid = 10;
constexpr std::uint8_t kBitKnit = 11;
constexpr std::uint8_t kLeviathan = 12;
constexpr std::uint8_t kCarriesCheck = 0x80;

Bytes Memset(std::uint8_t fill, std::uint8_t type = kKraken) {
    return {kReset, type, 0x07, 0xFF, 0xFF, fill};
}

// A whole block, and a byte of another one.
Bytes TwoTypes(std::uint8_t first, std::uint8_t second) {
    Bytes stream = Memset(1, first);
    if (first == kLzb16) {
        // It has short quantum headers: 16 memset quanta of 16,384 bytes fill its block.
        stream.resize(2);
        for (int i = 0; i < 16; ++i) stream.insert(stream.end(), {0x7F, 0xFF, 1});
    }
    stream.insert(stream.end(), {kNewHeader, second, 0x7F, 0xFF, 0xFF, 1});
    return stream;
}

// Decodes the stream with these settings, in `memorySize` bytes of the caller's and behind `dictionary` bytes
// of 0xEE.
struct Decoded {
    explicit Decoded(const Bytes& stream, oo2::DecompressArgs args = {}, std::size_t memorySize = 0,
                     std::size_t dictionary = 0) {
        if (args.rawLen == 0) args.rawLen = 100;
        raw.assign(dictionary + static_cast<std::size_t>(args.rawLen), 0xEE);
        Bytes memory(memorySize);
        args.compBuf = stream.data();
        args.compBufSize = std::ssize(stream);
        args.rawBuf = raw.data() + dictionary;
        args.decBufBase = raw.data();
        args.decoderMemory = memorySize > 0 ? memory.data() : nullptr;
        args.decoderMemorySize = std::ssize(memory);
        result = oo2::Decompress(args, oo2::DecodePath::Fast);
    }

    CapturedLog log;
    Bytes raw;
    std::ptrdiff_t result = 0;
};

TEST(Frame, a_broken_stream_gives_0_and_says_why) {
    const struct {
        Bytes stream;
        const char* line;
    } cases[] = {
        {{kReset}, "Invalid chunk compressor in OodleLZ_GetAllChunksCompressor\n"},
        {{0x9C, kKraken, 0, 0, 0}, "Invalid chunk compressor in OodleLZ_GetAllChunksCompressor\n"},
        {{kReset, 13, 0, 0, 0}, "Invalid chunk compressor in OodleLZ_GetAllChunksCompressor\n"},
        {Memset(7, kBitKnit), "OodleLZ_Decompress: asked to decode Legacy compressor; not supported!\n"},
        {{kReset, kMermaid, 0, 0, 0, 9}, "LZ corruption : DecodeOneQuantum fail!\n"},
        {{kReset, kLeviathan, 0, 0, 0, 9}, "LZ corruption : DecodeOneQuantum fail!\n"},
        {{kReset, kLzb16, 0, 0, 9}, "LZ corruption : DecodeOneQuantum fail!\n"},
        {{kReset, kLzb16, 0, 0, 9}, "LZ corruption : OodleLZ_Decompress failed (0 != 100)\n"},
        {{kReset, kKraken, 0x0F, 0xFF, 0xFF}, "invalid QH ; unused special value\n"},
        {{kReset, kKraken, 0, 0, 100}, "LZ corruption : qh.compLen > qh_rawLen!\n"},
        {{kReset, kKraken, 0, 0, 50, 1, 2},
         "LZ corruption : OodleLZ_Decompress : DecodeSome wanted more comp data\n"},
        {{kMemcpy, kKraken, 1, 2}, "LZ corruption : OodleLZ_Decompress : DecodeSome wanted more comp data\n"},
        {{kReset, kKraken, 0x03, 0xFF, 0xFF, 0x80, 0x05}, "LZ corruption : wholematch offset too large!\n"},
    };
    for (const auto& c : cases) {
        const Decoded decoded(c.stream);
        EXPECT_EQ(decoded.result, 0) << c.line;
        EXPECT_THAT(decoded.log.Lines(oo2::kLogError), Contains(std::string("OODLE ERROR : ") + c.line));
    }
}

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
        std::size_t memorySize = 0;
        std::size_t dictionary = 0;
    } cases[] = {
        {"OodleLZ_Decompress: dictionary backup distance must be a multiple of OODLELZ_BLOCK_LEN\n",
         Memset(7),
         {},
         0,
         1000},
        {"OodleLZ_Decompress: Requested Fuzz Safety, saw a compressor that can't decode Safe\n",
         TwoTypes(kLzb16, kKraken),
         {.rawLen = OODLELZ_BLOCK_LEN + 1}},
        {"LZ corruption : OodleLZ_Decompress not enough comp buf\n", Memset(7), {.rawLen = 300'000}},
        {"LZ corruption : OodleLZ_Decompress failed (262144 != 300000)\n",
         twoBlocks,
         {.rawLen = 300'000, .fpCallback = cancel}},
        {"check value not verified : its hash is not known to this decoder\n", checked, {.checkCRC = true}},
        {"OodleLZ_Decompress : decoder memory given, but too small!\n", Memset(7), {}, 1000},
        {"OodleLZ_Decompress: asked for threaded decode but decoderMemory < "
         "OodleLZ_ThreadPhased_BlockDecoderMemorySizeNeeded\n",
         Memset(7),
         {.threadPhase = OodleLZ_Decode_ThreadPhase2},
         kPhaseMemory - 1},
        {"OodleLZ_Decompress: asked for threaded decode of more than one block\n",
         twoBlocks,
         {.rawLen = OODLELZ_BLOCK_LEN + 1, .threadPhase = OodleLZ_Decode_ThreadPhase1},
         kPhaseMemory},
        {"OodleLZ_Decompress: asked for threaded decode but !OodleLZ_Compressor_CanDecodeThreadPhased\n",
         Memset(7, kLzb16),
         {.threadPhase = OodleLZ_Decode_ThreadPhase1},
         kPhaseMemory},
    };
    for (const auto& c : cases) {
        const Decoded decoded(c.stream, c.args, c.memorySize, c.dictionary);
        EXPECT_EQ(decoded.result, 0) << c.line;
        EXPECT_THAT(decoded.log.Lines(oo2::kLogError), Contains(std::string("OODLE ERROR : ") + c.line));
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

TEST(Frame, a_memset_block_ignores_its_check_flag_and_what_follows) {
    Bytes stream = Memset(7, kKraken | kCarriesCheck);
    stream.push_back(0x55);
    const Decoded decoded(stream, {.checkCRC = true});
    EXPECT_EQ(decoded.result, 100);
    EXPECT_EQ(decoded.raw, Bytes(100, 7));
}

TEST(Frame, a_dictionary_is_within_reach_until_a_reset) {
    // A whole match at distance 3 in the first block after a dictionary of one block.
    Bytes stream = {kNewHeader, kKraken, 0x03, 0xFF, 0xFF, 0x80, 0x02};
    const Decoded decoded(stream, {}, 0, OODLELZ_BLOCK_LEN);
    EXPECT_EQ(decoded.result, 100);
    EXPECT_EQ(decoded.raw, Bytes(OODLELZ_BLOCK_LEN + 100, 0xEE));
    stream[0] = kReset;
    EXPECT_EQ(Decoded(stream, {}, 0, OODLELZ_BLOCK_LEN).result, 0);
}

// The scratch was once measured by the output and then compared with what the window would need.
TEST(Frame, a_window_may_reach_beyond_the_output) {
    EXPECT_EQ(Decoded(Memset(7), {.decBufSize = OODLELZ_BLOCK_LEN}).result, 100);
}

TEST(Frame, phase_0_is_taken_as_unthreaded) {
    const Decoded decoded(Memset(7), {.threadPhase = 0});
    EXPECT_EQ(decoded.result, 100);
    EXPECT_THAT(decoded.log.Lines(oo2::kLogDetail),
                Contains("OodleLZ_Decompress: threadPhase 0! fixing it to OodleLZ_Decode_Unthreaded\n"));
}

TEST(Frame, verbosity_3_tells_of_each_block_and_quantum) {
    const Decoded decoded({kMemcpy, kKraken, 1, 2, 3}, {.rawLen = 3, .verbosity = 3});
    EXPECT_THAT(decoded.log.Lines(oo2::kLogInfo),
                ElementsAre("OodleLZ_Decompress about to DecodeSome, starting at comp 0 -> raw 0\n",
                            "CHUNK header @ 0  , compressor 8=Kraken reset memcpy\n", " decoder memcpy 3\n"));
    EXPECT_EQ(decoded.raw, (Bytes{1, 2, 3}));
}

TEST(GetAllChunksCompressor, names_mixes) {
    const struct {
        std::uint8_t first, second;
        int answer;
    } cases[] = {{kKraken, kKraken, 8},     {kLzb16, kLzb16, 4},   {kKraken, kMermaid, 12},
                 {kLeviathan, kKraken, 12}, {kKraken, kLzb16, 14}, {kLzb16, kKraken, 14}};
    for (const auto& c : cases) {
        const Bytes stream = TwoTypes(c.first, c.second);
        EXPECT_EQ(OodleLZ_GetAllChunksCompressor(stream.data(), std::ssize(stream), OODLELZ_BLOCK_LEN + 1),
                  c.answer);
    }
}

}  // namespace
