// For the whole decoder: the log hook, the allocator hooks, and the check of 64-bit lengths.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>

// Receives every log line: the level (0 error, 1 information, 2 detail), its source file and line, and a
// printf format with arguments. The text ends with its own line feed. A failing call may log several lines.
using OodleLogHook = void (*)(int level, const char* file, int line, const char* format, ...);

// The first gives memory aligned for any scalar, or null; the second frees it.
using OodleMallocHook = void* (*)(std::ptrdiff_t bytes);
using OodleFreeHook = void (*)(void* memory);

// The hooks are process-wide: set them once, before the first call of the decoder. Null brings back the
// default. The default log passes levels 0 and 1 to the debugger and cuts each text to 4,095 bytes. The
// default allocator is malloc and free.
void Oodle_SetLogHook(OodleLogHook hook);
void Oodle_SetAllocatorHooks(OodleMallocHook mallocHook, OodleFreeHook freeHook);

namespace oo2 {

enum LogLevel : int { kLogError = 0, kLogInfo = 1, kLogDetail = 2 };

// A format that remembers its source file and line.
struct LogText {
    // NOLINTNEXTLINE(google-explicit-constructor): a plain literal must convert
    constexpr LogText(const char* text, const char* from = __builtin_FILE(), int at = __builtin_LINE())
        : format(text), file(from), line(at) {}

    const char* format;
    const char* file;
    int line;
};

OodleLogHook CurrentLogHook();

template <typename... Args>
void Log(LogLevel level, LogText text, Args... args) {
    CurrentLogHook()(level, text.file, text.line, text.format, args...);
}

// Logs an error and returns false, so that a check can end with `return Fail(...)`.
template <typename... Args>
[[gnu::cold]] bool Fail(LogText text, Args... args) {
    Log(kLogError, text, args...);
    return false;
}

// Returns `holds`, and logs the error if it is false.
[[nodiscard]] inline bool Check(bool holds, LogText text) { return holds || Fail(text); }

// Memory from the allocator hook; null, after a log line, if there is none.
void* OodleMalloc(std::ptrdiff_t bytes);
void OodleFree(void* memory);

// Whether a 64-bit length fits the signed size of this machine; logs the error if not.
inline constexpr std::int64_t kSignedSizeLimit = std::numeric_limits<std::ptrdiff_t>::max();
[[nodiscard]] bool FitsSignedSize(std::int64_t length, std::int64_t limit = kSignedSizeLimit);

}  // namespace oo2
