// One step of the frame: a block header if one is due, then one quantum.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "oodle/oodle2/core/decoder_state.h"

namespace oo2 {

// Both 0: the step needs more compressed bytes, and has used none.
struct DecodeSomeResult {
    std::ptrdiff_t rawDecoded = 0;
    std::ptrdiff_t compUsed = 0;
};

// Decodes at most one quantum, or one stored block, from `comp`, where the stream goes on, and advances the
// state's rawPos. At a block's start it reads the block header first. Returns false after a failure, which it
// has logged.
bool DecodeSome(OodleLZDecoderState& state, std::span<const std::uint8_t> comp, DecodeSomeResult& result);

}  // namespace oo2
