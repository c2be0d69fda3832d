// Lines for the person who runs the host program.
#pragma once

#include <string_view>

namespace orvel::util {

// Writes the text to the C library's standard output, whose buffer may keep it until a ConsoleFlush ends: a
// damaged replay can have a million lines. Any thread; texts of several threads are not mixed.
void WriteConsole(std::string_view text);

// Stands in an operation that writes lines, such as a parse: they are out when the operation ends, whichever
// way it does.
struct ConsoleFlush {
    ConsoleFlush() = default;
    ~ConsoleFlush();
    ConsoleFlush(const ConsoleFlush&) = delete;
    ConsoleFlush& operator=(const ConsoleFlush&) = delete;
};

}  // namespace orvel::util
