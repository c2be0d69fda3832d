// The end of the process for a failure that no caller may survive, with its reason on standard error.
#pragma once

namespace orvel::corvane {

// Writes text as a line to standard error and calls std::terminate. Meant for a catch block, so that the
// runtime names the exception's type as well. Any thread.
[[noreturn]] void EndProcess(const char* text) noexcept;

// The same with the text of the exception that is being handled: what() of a std::exception, a thrown C
// string as it stands. Only inside a catch block.
[[noreturn]] void EndProcessWithCurrentException() noexcept;

}  // namespace orvel::corvane
