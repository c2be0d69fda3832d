// Run-length arrays: one buffer with literal bytes at its front and commands at its end, meeting in between.
#pragma once

#include <cstdint>
#include <span>

#include "oodle/oodle2/core/newlz_arrays.h"

namespace oo2 {

// Decodes an array: takes all of `comp` and fills all of `out`, or returns false.
bool newLZ_decode_rle(std::span<const std::uint8_t> comp, std::span<std::uint8_t> out, ArrayScratch& scratch);

}  // namespace oo2
