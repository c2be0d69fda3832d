// The log hook, the allocator hooks and the guard on 64-bit lengths, for all of the decoder.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>

// Receives every line of the decoder: the level (0 error, 1 information, 2 detail), the source file and line
// that it comes from, and a printf format with its arguments. The text has its own line feed. A failing call
// may log several lines.
using OodleLogHook = void (*)(int level, const char* file, int line, const char* format, ...);

// Gives memory that suits any scalar, or null; and takes it back.
using OodleMallocHook = void* (*)(std::ptrdiff_t bytes);
using OodleFreeHook = void (*)(void* memory);

// The hooks are process-wide: set them once, before the first call of the decoder. Null brings back the
// default. The default log passes levels 0 and 1 to the debugger, each text cut to 4,095 bytes; the default
// allocator is malloc and free.
void Oodle_SetLogHook(OodleLogHook hook);
void Oodle_SetAllocatorHooks(OodleMallocHook mallocHook, OodleFreeHook freeHook);

namespace oo2 {

enum LogLevel : int { kLogError = 0, kLogInfo = 1, kLogDetail = 2 };

// A format that remembers where it was written down.
struct LogText {
    // NOLINTNEXTLINE(google-explicit-constructor): so that a plain literal can be passed
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

// Returns `holds`; logs the error when it does not.
[[nodiscard]] inline bool Check(bool holds, LogText text) { return holds || Fail(text); }

// Memory from the allocator hook; null, with the line that says so, when there is none.
void* OodleMalloc(std::ptrdiff_t bytes);
void OodleFree(void* memory);

// Whether a 64-bit length fits the signed size of this machine; logs the error when it does not.
inline constexpr std::int64_t kSignedSizeLimit = std::numeric_limits<std::ptrdiff_t>::max();
[[nodiscard]] bool FitsSignedSize(std::int64_t length, std::int64_t limit = kSignedSizeLimit);

}  // namespace oo2
