// The frame's state over one call of OodleLZ_Decompress, and the step that decodes one quantum.
#pragma once

#include <cstddef>
#include <cstdint>

#include "oodle/oodle2/core/quantum.h"
#include "oodle/oodle2/core/rrlzh_lzhlw_shared.h"

namespace oo2 {

// Placed at the start of the decoder memory, rounded up to kDecoderMemoryAlignment; the scratch area follows
// it. Positions are raw bytes from the window's begin.
struct OodleLZDecoderState {
    std::int64_t rawPos = 0;           // decoded so far
    std::int64_t windowEnd = 0;        // where the window ends
    std::int64_t blockHeaderPos = -1;  // of the last block header
    std::int64_t resetPos = 0;         // of the last reset: matches do not reach before it
    std::int32_t callsWithoutProgress = 0;
    BlockHeader block;               // the last block header
    std::ptrdiff_t scratchSize = 0;  // bytes the memory holds from here on, this state included
    void* ownedMemory = nullptr;     // what to give back to the allocator hook at the end, if anything
};

// What the state takes of the scratch size, whichever the compressor.
inline constexpr std::ptrdiff_t kStateSize = 168;
static_assert(sizeof(OodleLZDecoderState) <= kStateSize);

// Decoder memory is this much larger than the scratch size, which leaves room to align its start.
inline constexpr std::ptrdiff_t kDecoderMemorySlack = 16;
inline constexpr std::size_t kDecoderMemoryAlignment = 16;

// The scratch size that a compressor needs for output that ends at rawEnd, kStateSize included.
std::ptrdiff_t ScratchSizeNeeded(OodleLZ_Compressor compressor, std::int64_t rawEnd);

// A state at the start of `memory`, which has `size` bytes and outlives it.
OodleLZDecoderState* PlaceDecoderState(void* memory, std::ptrdiff_t size);

struct DecodeSomeArgs {
    std::uint8_t* windowBase = nullptr;
    std::int64_t rawPos = 0;
    std::int64_t windowEnd = 0;
    std::int64_t rawAvail = 0;  // bytes of output wanted from rawPos on
    const std::uint8_t* comp = nullptr;
    std::ptrdiff_t compAvail = 0;
    bool fuzzSafe = false;
    bool checkCRC = false;
    int verbosity = 0;
    int threadPhase = OodleLZ_Decode_Unthreaded;
    DecodePath path = DecodePath::Fast;
};

// Both 0: more compressed bytes are needed, and none were used.
struct DecodeSomeResult {
    std::ptrdiff_t rawDecoded = 0;
    std::ptrdiff_t compUsed = 0;
};

// Decodes at most one quantum, or one stored block, at rawPos; reads the block header first at a block's
// start. Returns false after a failure, which it has logged.
bool DecodeSome(OodleLZDecoderState& state, DecodeSomeResult& result, const DecodeSomeArgs& args);

}  // namespace oo2
