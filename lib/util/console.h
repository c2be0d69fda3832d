// Lines for the person who runs the host program.
#pragma once

#include <string_view>

namespace orvel::util {

// Writes the text to standard output and flushes it, so that nothing is lost when the process ends. Any
// thread; texts of several threads are not mixed.
void WriteConsole(std::string_view text);

}  // namespace orvel::util
