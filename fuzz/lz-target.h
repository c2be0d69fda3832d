// What the LZ decoder's targets share: both of its paths must give the same.
#pragma once

#include <cstdarg>
#include <cstdio>
#include <vector>

#include "fuzz-target.h"
#include "oodle/oodle2/core/decompress.h"

namespace fuzz {

// Formats every line, to find formats that do not fit their arguments, and drops it.
inline void FormatLine(int, const char*, int, const char* format, ...) {
    char text[512];
    std::va_list args;
    va_start(args, format);
    std::vsnprintf(text, sizeof(text), format, args);
    va_end(args);
}

struct LzOutcome {
    std::ptrdiff_t result = 0;
    std::vector<std::uint8_t> raw;  // empty after a failure, which leaves unspecified bytes
    bool operator==(const LzOutcome&) const = default;
};

// run(path) returns the outcome of that path.
template <typename Run>
LzOutcome OnBothPaths(const Run& run) {
    Oodle_SetLogHook(&FormatLine);
    const LzOutcome fast = run(oo2::DecodePath::Fast);
    const LzOutcome careful = run(oo2::DecodePath::Careful);
    Require(fast.result == careful.result, "both paths take the same bytes, or fail");
    Require(fast == careful, "both paths give the same bytes");
    return fast;
}

}  // namespace fuzz
