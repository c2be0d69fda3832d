// The fast half of phase 2: copies in whole units, which may overshoot what they are to copy.
#pragma once

#include <cstddef>

#include "oodle/oodle2/core/newlz_parse_state.h"
#include "oodle/oodle2/core/newlz_unpack.h"

namespace oo2 {

// There is a loop of its own for each of these.
struct ParseTraits {
    LiteralMode mode = LiteralMode::Raw;
    bool mostlyNewOffsets = false;  // hardly any command takes a recent offset
};

// Runs commands as long as their copies, rounded up to whole units, stay within the chunk and the literals.
// `literalSlack` bytes behind the last literal may be read. Stops before the first command that needs care.
// False if the streams are corrupt.
bool ParseFast(ParseState& state, const ParseTraits& traits, std::size_t literalSlack);

// The literals that may be left when ParseFast stops for want of them.
inline constexpr std::size_t kLiteralMargin = 32;

}  // namespace oo2
