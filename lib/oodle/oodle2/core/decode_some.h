// One step of the frame: a block header where one is due, then one quantum.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "oodle/oodle2/core/decoder_state.h"

namespace oo2 {

// Both 0: more compressed bytes are needed, and none were used.
struct DecodeSomeResult {
    std::ptrdiff_t rawDecoded = 0;
    std::ptrdiff_t compUsed = 0;
};

// Decodes at most one quantum, or one stored block, of the stream that goes on with `comp`, and moves the
// state's rawPos past it; reads the block header first at a block's start. Returns false after a failure,
// which it has logged.
bool DecodeSome(OodleLZDecoderState& state, std::span<const std::uint8_t> comp, DecodeSomeResult& result);

}  // namespace oo2
