// Lines for the person who runs the host.
#pragma once

#include <string_view>

namespace orvel::util {

// Writes text to the C library's standard output. The lines may stay in its buffer until a ConsoleFlush ends:
// a damaged replay can have a million lines. Any thread; the texts of several threads do not mix.
void WriteConsole(std::string_view text);

// Put one into each operation that writes lines, such as a parse. When it ends, the lines are written out.
struct ConsoleFlush {
    ConsoleFlush() = default;
    ~ConsoleFlush();
    ConsoleFlush(const ConsoleFlush&) = delete;
    ConsoleFlush& operator=(const ConsoleFlush&) = delete;
};

}  // namespace orvel::util
