// The frame's state over one call of OodleLZ_Decompress, and the size of the memory it stands in.
#pragma once

#include <cstddef>
#include <cstdint>

#include "oodle/oodle2/core/decode_context.h"
#include "oodle/oodle2/core/rrlzh_lzhlw_shared.h"

namespace oo2 {

// Placed at the start of the decoder memory, rounded up to kDecoderMemoryAlignment; the scratch area follows
// it.
struct OodleLZDecoderState {
    DecodeContext context;
    BlockHeader block;                 // the last block header
    std::int64_t blockHeaderPos = -1;  // where it stood; -1: none was read
    std::int32_t callsWithoutProgress = 0;
    std::ptrdiff_t scratchSize = 0;  // bytes the memory holds from here on, this state included
    void* ownedMemory = nullptr;     // what to give back to the allocator hook at the end, if anything
};

// Bytes of the scratch size that are the state's, for every compressor.
inline constexpr std::ptrdiff_t kStateSize = 168;
static_assert(sizeof(OodleLZDecoderState) <= kStateSize);

// Decoder memory is this much larger than the scratch size, which leaves room to align its start.
inline constexpr std::ptrdiff_t kDecoderMemorySlack = 16;
inline constexpr std::size_t kDecoderMemoryAlignment = 16;

// The scratch size that a compressor needs for output that ends at rawEnd, kStateSize included.
std::ptrdiff_t ScratchSizeNeeded(OodleLZ_Compressor compressor, std::int64_t rawEnd);

// A state with that context at the start of `memory`, which has `size` bytes, kStateSize and
// kDecoderMemorySlack at least, and outlives it.
OodleLZDecoderState* PlaceDecoderState(void* memory, std::ptrdiff_t size, const DecodeContext& context);

}  // namespace oo2
