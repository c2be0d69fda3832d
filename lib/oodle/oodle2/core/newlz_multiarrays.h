// Multiarrays: several arrays, joined, or cut into intervals that are taken from them in turn.
#pragma once

#include <cstdint>
#include <span>

#include "oodle/oodle2/core/newlz_arrays.h"

namespace oo2 {

// Decodes an array. Returns false unless it uses all of `comp` and fills all of `out`.
bool newLZ_decode_multi(std::span<const std::uint8_t> comp, std::span<std::uint8_t> out,
                        ArrayScratch& scratch);

}  // namespace oo2
