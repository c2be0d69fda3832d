// Run-length arrays: one buffer. Literals run from its front, commands from its end; they meet in between.
#pragma once

#include <cstdint>
#include <span>

#include "oodle/oodle2/core/newlz_arrays.h"

namespace oo2 {

// Decodes an array. Returns false unless it uses all of `comp` and fills all of `out`.
bool newLZ_decode_rle(std::span<const std::uint8_t> comp, std::span<std::uint8_t> out, ArrayScratch& scratch);

}  // namespace oo2
