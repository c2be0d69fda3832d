// tANS arrays: five states that take turns, with bits from both ends of the data.
#pragma once

#include <cstdint>
#include <span>

#include "oodle/oodle2/core/decode_context.h"

namespace oo2 {

// Decodes an array. Returns false unless it uses all of `comp` and fills all of `out`.
bool newLZ_decode_tans(std::span<const std::uint8_t> comp, std::span<std::uint8_t> out, DecodePath path);

}  // namespace oo2
