// Standard output.
#include "util/console.h"

#include <cstdio>

namespace orvel::util {

void WriteConsole(std::string_view text) { std::fwrite(text.data(), 1, text.size(), stdout); }

ConsoleFlush::~ConsoleFlush() { std::fflush(stdout); }

}  // namespace orvel::util
