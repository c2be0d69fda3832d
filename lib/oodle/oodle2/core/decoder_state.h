// The frame's state during one call of OodleLZ_Decompress, and the size of its memory.
#pragma once

#include <cstddef>
#include <cstdint>

#include "oodle/oodle2/core/decode_context.h"
#include "oodle/oodle2/core/rrlzh_lzhlw_shared.h"

namespace oo2 {

// Stands at the start of decoder memory, aligned to kDecoderMemoryAlignment. Scratch follows it.
struct OodleLZDecoderState {
    DecodeContext context;
    BlockHeader block;                 // the last block header
    std::int64_t blockHeaderPos = -1;  // where that header stood; -1: none was read
    std::int32_t callsWithoutProgress = 0;
    std::ptrdiff_t scratchSize = 0;  // bytes of memory from here on, this state included
    void* ownedMemory = nullptr;     // to be freed by the allocator hook at the end; may be null
};

// Bytes of the scratch size that belong to the state, for every compressor.
inline constexpr std::ptrdiff_t kStateSize = 168;
static_assert(sizeof(OodleLZDecoderState) <= kStateSize);

// Decoder memory is larger than the scratch size by this, so that its start can be aligned.
inline constexpr std::ptrdiff_t kDecoderMemorySlack = 16;
inline constexpr std::size_t kDecoderMemoryAlignment = 16;

// The scratch size, kStateSize included, that a compressor needs for output that ends at rawEnd.
std::ptrdiff_t ScratchSizeNeeded(OodleLZ_Compressor compressor, std::int64_t rawEnd);

// Makes a state with this context at the start of `memory`. size: at least kStateSize plus
// kDecoderMemorySlack. The memory must outlive the state.
OodleLZDecoderState* PlaceDecoderState(void* memory, std::ptrdiff_t size, const DecodeContext& context);

}  // namespace oo2
