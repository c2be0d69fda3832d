#include "oodle/oodle2/core/decoder_state.h"

#include <new>

#include "oodle/oodle2/core/compressor_sets.h"
#include "oodle/oodle2/core/quantum.h"

namespace oo2 {

std::ptrdiff_t ScratchSizeNeeded(OodleLZ_Compressor compressor, std::int64_t rawEnd) {
    if (!IsIn(kNewLzCompressors, compressor)) return kStateSize;
    constexpr std::int64_t kLargest = kMaxChunkLen;
    const std::int64_t chunk = rawEnd >= 1 && rawEnd < kLargest ? rawEnd : kLargest;
    const bool isMermaid =
        compressor == OodleLZ_Compressor_Mermaid || compressor == OodleLZ_Compressor_Selkie;
    const auto n = static_cast<std::size_t>(chunk);
    return kStateSize + static_cast<std::ptrdiff_t>(KrakenChunkScratch(n) - (isMermaid ? n : 0));
}

OodleLZDecoderState* PlaceDecoderState(void* memory, std::ptrdiff_t size, const DecodeContext& context) {
    const auto address = reinterpret_cast<std::uintptr_t>(memory);
    std::uint8_t* const begin = static_cast<std::uint8_t*>(memory) + (0 - address) % kDecoderMemoryAlignment;
    auto* const state = new (begin) OodleLZDecoderState;
    state->scratchSize = size - kDecoderMemorySlack;
    state->context = context;
    state->context.scratch = {begin + kStateSize, static_cast<std::size_t>(state->scratchSize - kStateSize)};
    return state;
}

}  // namespace oo2
