// Kraken chunks that are broken in one place, and what is refused between the two phases.
#include <cstdint>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "oodle/oodle2/core/decompress.h"
#include "support/captured-log.h"

namespace {

using Bytes = std::vector<std::uint8_t>;

// A stream of one LZ chunk, by default a good one: behind the first 8 bytes a match of 112 bytes and one of
// 8, both at the first recent offset.
struct LzChunk {
    std::size_t rawLen = 128;
    Bytes excessCount = {0x80};
    Bytes literals = {0x80, 0};
    Bytes commands = {0x80, 2, 0x3C, 0x18};
    Bytes offsets = {0, 0, 0};
    Bytes excesses = {0x80, 1, 112 - 14 - 3};
    Bytes bits = {};

    Bytes Stream() const {
        Bytes stream = {0x8C, 6, 0, 0, 0, 0x88, 0, 0, 1, 2, 3, 4, 5, 6, 7, 8};
        for (const Bytes* part : {&excessCount, &literals, &commands, &offsets, &excesses, &bits})
            stream.insert(stream.end(), part->begin(), part->end());
        stream[4] = static_cast<std::uint8_t>(stream.size() - 5 - 1);  // the quantum's bytes less 1
        stream[7] = static_cast<std::uint8_t>(stream.size() - 8);      // the chunk's
        return stream;
    }
};

class Chunks : public testing::Test {
  protected:
    // With so many blocks before the output, in memory that stays from call to call.
    std::ptrdiff_t Decode(const Bytes& stream, std::size_t rawLen, int phase = OodleLZ_Decode_Unthreaded,
                          std::ptrdiff_t blocksBefore = 0, std::ptrdiff_t memorySize = 894'200) {
        return oo2::Decompress({.compBuf = stream.data(),
                                .compBufSize = std::ssize(stream),
                                .rawBuf = raw_.data() + blocksBefore * OODLELZ_BLOCK_LEN,
                                .rawLen = static_cast<std::ptrdiff_t>(rawLen),
                                .decBufBase = raw_.data(),
                                .decoderMemory = memorySize > 0 ? memory_.data() : nullptr,
                                .decoderMemorySize = memorySize,
                                .threadPhase = phase},
                               oo2::DecodePath::Fast);
    }

    Bytes raw_ = Bytes(2 * OODLELZ_BLOCK_LEN);
    Bytes memory_ = Bytes(OodleLZ_ThreadPhased_BlockDecoderMemorySizeNeeded);
};

TEST_F(Chunks, broken_in_one_place_are_refused) {
    const Bytes shortMatches = {0x80, 8, 0x38, 0x38, 0x38, 0x38, 0x38, 0x38, 0x38, 0x18};
    const Bytes newOffset = {0x80, 2, 0x3C, 0xD8};
    Bytes excesses33 = LzChunk{}.excesses;
    excesses33[1] = 33;
    excesses33.resize(2 + 33);
    const struct {
        const char* what;
        LzChunk chunk;
        const char* line = "LZ corruption : DecodeOneQuantum fail!\n";
    } cases[] = {
        {"the reserved flag", {.excessCount = {0xC0}}, "corruption : excess reserved flag bit nonzero\n"},
        {"a low part too many",
         {.offsets = {0x7F + 2, 0x80, 0, 0x80, 1, 5}},
         "corruption : offsets_count == offsets_count_2\n"},
        {"127 bytes", {.rawLen = 127, .excesses = {0x80, 1, 94}}, "corruption : chunk_len >= 128\n"},
        {"a count of long excesses that are not there",
         {.excessCount = {}, .literals = {0, 0, 0}, .bits = {0x40}},
         "corruption : excesses_u32_ptr == excesses_u32_end\n"},
        {"a long excess of 13 zeros",
         {.excessCount = {0x80 + 5}, .excesses = {0x80, 1, 255}, .bits = {0, 4, 0, 0, 0}},
         "corruption : invalid excess stream\n"},
        // Phase 2 needs no offset and no excess, and once found all it needs.
        {"a byte too many for the long excesses",
         {.excessCount = {0x80 + 1}, .commands = shortMatches, .excesses = {0x80, 0}, .bits = {0}},
         "corruption : ptr_delta == 0\n"},
        {"more excesses than a quarter of the bytes", {.excesses = excesses33}},
        {"an excess too few", {.commands = {0x80, 2, 0x3C, 0x1B}}},
        {"an offset code of 216", {.commands = newOffset, .offsets = {0x7F + 2, 0x80, 1, 216, 0x80, 1, 9}}},
        // 128 times 1 << 25, and 9.
        {"an offset that is 9 in 32 bits",
         {.commands = newOffset, .offsets = {0x7F + 128, 0x80, 1, 176, 0x80, 1, 9}, .bits = {0, 0, 32}}},
        // The first two are taken by the fast loop before it counts what is left; then comes a run of
        // 123,074.
        {"literals that are not there",
         {.rawLen = 0x20000,
          .excessCount = {0x80 + 4},
          .commands = {0x80, 3, 0x18, 0x1A, 0x1B},
          .excesses = {0x80, 1, 255},
          .bits = {0, 0x3C, 0, 0}}},
    };
    EXPECT_EQ(Decode(LzChunk{}.Stream(), 128), 128);
    EXPECT_EQ(Decode(LzChunk{.commands = shortMatches, .excesses = {0x80, 0}}.Stream(), 128), 128);
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        const CapturedLog log;
        const Bytes stream = c.chunk.Stream();
        EXPECT_EQ(Decode(stream, c.chunk.rawLen), 0);
        EXPECT_EQ(log.Lines(oo2::kLogError).at(0), std::string("OODLE ERROR : ") + c.line);
        Decode(stream, c.chunk.rawLen, OodleLZ_Decode_ThreadPhase1);
        EXPECT_EQ(Decode(stream, c.chunk.rawLen, OodleLZ_Decode_ThreadPhase2), 0);
    }
}

TEST_F(Chunks, phase_2_takes_what_phase_1_left_of_the_same_block_only) {
    const CapturedLog log;
    const Bytes stream = LzChunk{}.Stream(), copy = stream;
    EXPECT_EQ(Decode(stream, 128, OodleLZ_Decode_ThreadPhase2), 0);
    EXPECT_EQ(Decode(stream, 128, OodleLZ_Decode_ThreadPhase1), 128);
    EXPECT_EQ(Decode(stream, 128, OodleLZ_Decode_ThreadPhase2, 1), 0);
    EXPECT_EQ(Decode(copy, 128, OodleLZ_Decode_ThreadPhase2), 0);
    EXPECT_EQ(Decode(stream, 128, OodleLZ_Decode_ThreadPhase2), 128);
}

// 15 literals from a run-length array. The array in front of its buffer is so many bytes of 1, commands that
// give nothing. It goes into scratch, of which a chunk of 128 bytes has 53,664.
TEST_F(Chunks, have_the_same_scratch_whoever_provides_it) {
    const CapturedLog log;
    constexpr std::ptrdiff_t kLeast = 168 + 53'664 + 16;
    for (const unsigned front : {50'000u, 60'000u}) {
        const unsigned long long header = 3ull << 36 | static_cast<unsigned long long>(front - 1) << 18 | 1;
        Bytes literals = {0xB0, 0x1C, 0x07};
        for (int shift = 32; shift >= 0; shift -= 8)
            literals.push_back(static_cast<std::uint8_t>(header >> shift));
        literals.insert(literals.end(), {1, 0xFF});
        const Bytes stream = LzChunk{.literals = literals, .excesses = {0x80, 1, 97 - 14 - 3}}.Stream();
        const std::ptrdiff_t expected = front == 50'000 ? 128 : 0;
        for (const std::ptrdiff_t memory : {std::ptrdiff_t{0}, kLeast, std::ssize(memory_)})
            EXPECT_EQ(Decode(stream, 128, OodleLZ_Decode_Unthreaded, 0, memory), expected) << memory;
        EXPECT_EQ(Decode(stream, 128, OodleLZ_Decode_ThreadPhase1), expected);
        EXPECT_EQ(Decode(stream, 128, OodleLZ_Decode_ThreadPhase2), expected);
    }
}

TEST_F(Chunks, stored_ones_have_mode_0) {
    const CapturedLog log;
    // 131,072 times 7 and, stored, a 9.
    Bytes stream = {0x8C, 6, 0, 0, 9, 0x37, 0xFF, 0xFC, 0, 1, 7, 0x80, 0, 1, 9};
    EXPECT_EQ(Decode(stream, 0x20001), 0x20001);
    stream[11] |= 1 << 3;
    EXPECT_EQ(Decode(stream, 0x20001), 0);
}

// A run-length array of commands that do nothing and one that fills the chunk, and a chunk of 100 bytes.
TEST_F(Chunks, an_array_is_shorter_than_its_output) {
    const CapturedLog log;
    for (const bool isShorter : {true, false}) {
        const std::uint8_t last = isShorter ? 0xF9 : 0xFB;  // of the header's 0x1FFFB compressed bytes
        Bytes stream = {0x8C, 6,    2,    0, static_cast<std::uint8_t>(isShorter ? 3 : 5), 0x37, 0xFF,
                        0xFD, 0xFF, last, 0};
        for (int i = isShorter ? 1 : 0; i < 65'532; ++i) stream.insert(stream.end(), {0, 0x10});
        stream.insert(stream.end(), {0xFF, 0x0C, 0x30, 1, 0x8C, 0, 1, 7});
        EXPECT_EQ(Decode(stream, 0x20000 + 100), isShorter ? 0x20000 + 100 : 0);
    }
}

}  // namespace
