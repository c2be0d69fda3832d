// Ends the process for failures that no caller may survive, with the reason on standard error.
#pragma once

namespace orvel::corvane {

// Writes text as a line to standard error and calls std::terminate. Call it in a catch block: the runtime
// then names the exception's type too. Any thread.
[[noreturn]] void EndProcess(const char* text) noexcept;

// The same with the text of the current exception: what() of a std::exception, or the thrown C string. Only
// in a catch block.
[[noreturn]] void EndProcessWithCurrentException() noexcept;

}  // namespace orvel::corvane
