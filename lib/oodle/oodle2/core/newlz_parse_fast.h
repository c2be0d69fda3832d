// The fast half of phase 2. It copies whole units, which may overshoot.
#pragma once

#include <cstddef>

#include "oodle/oodle2/core/newlz_parse_state.h"
#include "oodle/oodle2/core/newlz_unpack.h"

namespace oo2 {

// Each combination has its own loop.
struct ParseTraits {
    LiteralMode mode = LiteralMode::Raw;
    bool mostlyNewOffsets = false;  // hardly any command takes a recent offset
};

// Runs commands while their copies, rounded up to whole units, stay within the chunk and the literals.
// `literalSlack` bytes behind the last literal may be read. Stops before the first command that needs care.
// Returns false if the streams are corrupt.
bool ParseFast(ParseState& state, const ParseTraits& traits, std::size_t literalSlack);

// At most this many literals are left when ParseFast stops for lack of literals.
inline constexpr std::size_t kLiteralMargin = 32;

}  // namespace oo2
