// The fast half of phase 2.
#include "oodle/oodle2/core/copy_units.h"
#include "oodle/oodle2/core/newlz_parse.h"

namespace oo2 {
bool ParseFast(ParseState&, LiteralMode, std::size_t) { return true; }
}  // namespace oo2
