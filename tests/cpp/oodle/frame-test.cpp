// The frame of the LZ decoder: its arguments, its headers, and the lines it logs for each failure.
#include <cstdint>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "oodle/oodle2/core/oodlelzcompressors.h"
#include "support/captured-log.h"

namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;

using Bytes = std::vector<std::uint8_t>;

// Second bytes of block headers: decode types.
constexpr std::uint8_t kLzb16 = 2;
constexpr std::uint8_t kKraken = 6;
constexpr std::uint8_t kMermaid = 10;
constexpr std::uint8_t kBitKnit = 11;
constexpr std::uint8_t kLeviathan = 12;
constexpr std::uint8_t kCarriesCheck = 0x80;

constexpr std::uint8_t kNewHeader = 0x0C;
constexpr std::uint8_t kReset = 0x80;
constexpr std::uint8_t kMemcpy = 0x40;

constexpr char kInvalidChunkCompressor[] =
    "OODLE ERROR : Invalid chunk compressor in OodleLZ_GetAllChunksCompressor\n";
constexpr char kQuantumFail[] = "OODLE ERROR : LZ corruption : DecodeOneQuantum fail!\n";
constexpr char kWantedMore[] =
    "OODLE ERROR : LZ corruption : OodleLZ_Decompress : DecodeSome wanted more comp data\n";
constexpr char kNotEnough[] = "OODLE ERROR : LZ corruption : OodleLZ_Decompress not enough comp buf\n";

std::string Unfinished(int reached, int wanted) {
    return "OODLE ERROR : LZ corruption : OodleLZ_Decompress failed (" + std::to_string(reached) +
           " != " + std::to_string(wanted) + ")\n";
}

// The arguments that calls differ in; the others are as a plain caller has them.
struct Call {
    Bytes stream;
    std::ptrdiff_t rawLength = 100;
    int checkCRC = 0;
    int threadPhase = OodleLZ_Decode_Unthreaded;
    std::ptrdiff_t memorySize = 0;
    OodleLZ_DecodeCallback callback = nullptr;
    std::ptrdiff_t dictionary = 0;
    std::ptrdiff_t window = 0;
    int verbosity = 0;
};

struct Outcome {
    std::ptrdiff_t result = 0;
    Bytes raw;
    CapturedLog log;
};

void Decode(const Call& call, Outcome& outcome) {
    outcome.raw.reserve(1);  // so that an empty one has an address
    outcome.raw.assign(static_cast<std::size_t>(call.dictionary + call.rawLength), 0xEE);
    std::vector<std::uint8_t> memory(static_cast<std::size_t>(call.memorySize));
    outcome.result = OodleLZ_Decompress(
        call.stream.data(), static_cast<std::ptrdiff_t>(call.stream.size()),
        outcome.raw.data() + call.dictionary, call.rawLength, 1, call.checkCRC, call.verbosity,
        call.dictionary ? outcome.raw.data() : nullptr, call.window, call.callback, nullptr,
        memory.empty() ? nullptr : memory.data(), call.memorySize, call.threadPhase);
}

int Cancel(void*, const std::uint8_t*, std::ptrdiff_t, const std::uint8_t*, std::ptrdiff_t, std::ptrdiff_t,
           std::ptrdiff_t) {
    return 1;
}

Bytes Memset(std::uint8_t fill, std::uint8_t type = kKraken) {
    return {kNewHeader | kReset, type, 0x07, 0xFF, 0xFF, fill};
}

struct Failure {
    const char* name;
    Call call;
    std::vector<std::string> lines;
};

std::vector<Failure> Failures() {
    const Bytes memset = Memset(7);
    return {
        {"no_length", {memset, 0}, {"OODLE ERROR : OodleLZ_Decompress: asked for len 0\n"}},
        {"dictionary_of_no_whole_blocks",
         {.stream = memset, .dictionary = 1000},
         {"OODLE ERROR : OodleLZ_Decompress: dictionary backup distance must be a multiple of "
          "OODLELZ_BLOCK_LEN\n"}},
        {"half_a_block_header", {{0x8C}}, {kInvalidChunkCompressor}},
        {"header_version", {{0x9C, kKraken, 0, 0, 0}}, {kInvalidChunkCompressor}},
        {"decode_type_13", {{0x8C, 13, 0, 0, 0}}, {kInvalidChunkCompressor}},
        {"legacy",
         {Memset(7, kBitKnit)},
         {"OODLE ERROR : OodleLZ_Decompress: asked to decode Legacy compressor; not supported!\n"}},
        {"mermaid_quantum", {{0x8C, kMermaid, 0, 0, 0, 9}}, {kQuantumFail, Unfinished(0, 100)}},
        {"leviathan_quantum", {{0x8C, kLeviathan, 0, 0, 0, 9}}, {kQuantumFail, Unfinished(0, 100)}},
        {"lzb16_quantum", {{0x8C, kLzb16, 0, 0, 9}}, {kQuantumFail, Unfinished(0, 100)}},
        {"unused_special",
         {{0x8C, kKraken, 0x0F, 0xFF, 0xFF}},
         {"OODLE ERROR : invalid QH ; unused special value\n", Unfinished(0, 100)}},
        {"longer_than_raw",
         {{0x8C, kKraken, 0, 0, 100}},
         {"OODLE ERROR : LZ corruption : qh.compLen > qh_rawLen!\n", Unfinished(0, 100)}},
        {"quantum_cut", {{0x8C, kKraken, 0, 0, 50, 1, 2}}, {kWantedMore, Unfinished(0, 100)}},
        {"memcpy_cut", {{0xCC, kKraken, 1, 2}}, {kWantedMore, Unfinished(0, 100)}},
        {"nothing_after_the_header", {{0x8C, kKraken}}, {kWantedMore, Unfinished(0, 100)}},
        {"one_block_of_two", {memset, 300000}, {kNotEnough, Unfinished(262144, 300000)}},
        {"whole_match_at_the_start",
         {{0x8C, kKraken, 0x03, 0xFF, 0xFF, 0x80, 0x05}},
         {"OODLE ERROR : LZ corruption : wholematch offset too large!\n", Unfinished(0, 100)}},
        {"check_value_asked_for",
         {.stream = {0x8C, kKraken | kCarriesCheck, 0, 0, 0, 1, 2, 3, 9}, .checkCRC = 1},
         {"OODLE ERROR : check value not verified : its hash is not known to this decoder\n",
          Unfinished(0, 100)}},
        {"cancelled",
         {.stream = memset, .rawLength = 300000, .callback = Cancel},
         {Unfinished(262144, 300000)}},
        {"little_memory",
         {.stream = memset, .memorySize = 1000},
         {"OODLE ERROR : OodleLZ_Decompress : decoder memory given, but too small!\n"}},
        {"phase_without_memory",
         {.stream = memset, .threadPhase = 1},
         {"OODLE ERROR : OodleLZ_Decompress: asked for threaded decode but decoderMemory < "
          "OodleLZ_ThreadPhased_BlockDecoderMemorySizeNeeded\n"}},
        {"phase_with_a_byte_too_little",
         {.stream = memset, .threadPhase = 2, .memorySize = 894'199},
         {"OODLE ERROR : OodleLZ_Decompress: asked for threaded decode but decoderMemory < "
          "OodleLZ_ThreadPhased_BlockDecoderMemorySizeNeeded\n"}},
        {"phase_of_lzb16",
         {.stream = Memset(7, kLzb16), .threadPhase = 1, .memorySize = 894'200},
         {"OODLE ERROR : OodleLZ_Decompress: asked for threaded decode but "
          "!OodleLZ_Compressor_CanDecodeThreadPhased\n"}},
    };
}

class FrameFailure : public testing::TestWithParam<Failure> {};

TEST_P(FrameFailure, gives_0_and_its_lines) {
    Call call = GetParam().call;
    if (call.callback) {  // the first block of two
        const Bytes second = Memset(8);
        call.stream.insert(call.stream.end(), second.begin(), second.end());
    }
    Outcome outcome;
    Decode(call, outcome);
    EXPECT_EQ(outcome.result, 0);
    const std::vector<std::string> lines = outcome.log.Lines(oo2::kLogError);
    const auto& wanted = GetParam().lines;
    ASSERT_GE(lines.size(), wanted.size());
    // A stream whose headers cannot be read may have been told of once more, before.
    EXPECT_THAT(
        std::vector<std::string>(lines.end() - static_cast<std::ptrdiff_t>(wanted.size()), lines.end()),
        ElementsAreArray(wanted));
    if (wanted.front() != kInvalidChunkCompressor) {
        EXPECT_EQ(lines.size(), wanted.size());
    }
}

INSTANTIATE_TEST_SUITE_P(Lz, FrameFailure, testing::ValuesIn(Failures()),
                         [](const auto& failure) { return std::string(failure.param.name); });

TEST(Frame, null_buffers_are_refused) {
    const CapturedLog log;
    std::uint8_t byte = 0;
    EXPECT_EQ(OodleLZ_Decompress(&byte, 1, nullptr, 1, 1, 0, 0, nullptr, 0, nullptr, nullptr, nullptr, 0, 3),
              0);
    EXPECT_EQ(OodleLZ_Decompress(nullptr, 1, &byte, 1, 1, 0, 0, nullptr, 0, nullptr, nullptr, nullptr, 0, 3),
              0);
    EXPECT_THAT(log.Lines(oo2::kLogError), ElementsAre("OODLE ERROR : bad parameter : decodeTo != 0\n",
                                                       "OODLE ERROR : bad parameter : compBuf != 0\n"));
}

TEST(Frame, a_memset_block_ignores_its_check_flag_and_what_follows) {
    Call call{Memset(7, kKraken | kCarriesCheck)};
    call.stream.push_back(0x55);
    Outcome outcome;
    Decode(call, outcome);
    EXPECT_EQ(outcome.result, 100);
    EXPECT_EQ(outcome.raw, Bytes(100, 7));
}

TEST(Frame, a_dictionary_is_within_reach_until_a_reset) {
    // A whole match at distance 3 in the first block after a dictionary of one block.
    for (const bool reset : {false, true}) {
        Call call{.stream = {kNewHeader, kKraken, 0x03, 0xFF, 0xFF, 0x80, 0x02},
                  .dictionary = OODLELZ_BLOCK_LEN};
        if (reset) call.stream[0] |= kReset;
        Outcome outcome;
        Decode(call, outcome);
        EXPECT_EQ(outcome.result, reset ? 0 : 100);
        if (!reset) {
            EXPECT_EQ(outcome.raw, Bytes(OODLELZ_BLOCK_LEN + 100, 0xEE));
        }
    }
}

// The scratch was once measured by the output and then compared with what the window would need.
TEST(Frame, a_window_may_reach_beyond_the_output) {
    Outcome outcome;
    Decode({.stream = Memset(7), .window = OODLELZ_BLOCK_LEN}, outcome);
    EXPECT_EQ(outcome.result, 100);
}

TEST(Frame, phase_0_is_taken_as_unthreaded) {
    Outcome outcome;
    Decode({.stream = Memset(7), .threadPhase = 0}, outcome);
    EXPECT_EQ(outcome.result, 100);
    EXPECT_THAT(
        outcome.log.Lines(oo2::kLogDetail),
        testing::Contains("OodleLZ_Decompress: threadPhase 0! fixing it to OodleLZ_Decode_Unthreaded\n"));
}

TEST(Frame, verbosity_3_tells_of_each_block_and_quantum) {
    Outcome outcome;
    Call call{.stream = {kNewHeader | kReset | kMemcpy, kKraken}, .rawLength = 3, .verbosity = 3};
    call.stream.insert(call.stream.end(), {1, 2, 3});
    Decode(call, outcome);
    EXPECT_THAT(outcome.log.Lines(oo2::kLogInfo),
                ElementsAre("OodleLZ_Decompress about to DecodeSome, starting at comp 0 -> raw 0\n",
                            "CHUNK header @ 0  , compressor 8=Kraken reset memcpy\n", " decoder memcpy 3\n"));
    EXPECT_EQ(outcome.raw, (Bytes{1, 2, 3}));
}

TEST(GetAllChunksCompressor, names_mixes) {
    const struct {
        std::uint8_t first, second;
        int answer;
    } cases[] = {{kKraken, kKraken, 8},     {kLzb16, kLzb16, 4},   {kKraken, kMermaid, 12},
                 {kLeviathan, kKraken, 12}, {kKraken, kLzb16, 14}, {kLzb16, kKraken, 14}};
    for (const auto& c : cases) {
        // LZB16 has short quantum headers: 16 memset quanta of 16,384 bytes fill its block.
        Bytes stream = {kNewHeader | kReset, c.first};
        if (c.first == kLzb16) {
            for (int i = 0; i < 16; ++i) stream.insert(stream.end(), {0x7F, 0xFF, 1});
        } else {
            stream.insert(stream.end(), {0x07, 0xFF, 0xFF, 1});
        }
        stream.insert(stream.end(), {kNewHeader, c.second, 0x7F, 0xFF, 0xFF, 1});
        EXPECT_EQ(OodleLZ_GetAllChunksCompressor(stream.data(), static_cast<std::ptrdiff_t>(stream.size()),
                                                 262'145),
                  c.answer);
    }
}

}  // namespace
