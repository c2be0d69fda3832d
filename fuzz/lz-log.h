// The LZ decoder's log in the fuzz targets.
#pragma once

#include <cstdarg>
#include <cstdio>

#include "oodle/oodle2/core/oodlebase.h"

namespace fuzz {

inline void FormatLine(int, const char*, int, const char* format, ...) {
    char text[512];
    std::va_list args;
    va_start(args, format);
    std::vsnprintf(text, sizeof(text), format, args);
    va_end(args);
}

// Every line is formatted, so that a format that does not fit its arguments is found, and goes nowhere.
inline void FormatLzLog() { Oodle_SetLogHook(&FormatLine); }

}  // namespace fuzz
