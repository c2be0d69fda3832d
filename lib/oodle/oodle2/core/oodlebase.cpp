#include "oodle/oodle2/core/oodlebase.h"

#include <atomic>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>

#include "util/platform/platform.h"

namespace {

constexpr std::size_t kLogLineSize = 4096;

void LogToDebugger(int level, const char* /*file*/, int /*line*/, const char* format, ...) {
    if (level > oo2::kLogInfo) return;
    char text[kLogLineSize];
    std::va_list args;
    va_start(args, format);
    std::vsnprintf(text, sizeof(text), format, args);
    va_end(args);
    orvel::util::platform::DebugOutput(text);
}

void* MallocBytes(std::ptrdiff_t bytes) { return std::malloc(static_cast<std::size_t>(bytes)); }
void FreeBytes(void* memory) { std::free(memory); }

constinit std::atomic<OodleLogHook> g_logHook{&LogToDebugger};
constinit std::atomic<OodleMallocHook> g_mallocHook{&MallocBytes};
constinit std::atomic<OodleFreeHook> g_freeHook{&FreeBytes};

}  // namespace

void Oodle_SetLogHook(OodleLogHook hook) { g_logHook = hook ? hook : &LogToDebugger; }

void Oodle_SetAllocatorHooks(OodleMallocHook mallocHook, OodleFreeHook freeHook) {
    g_mallocHook = mallocHook ? mallocHook : &MallocBytes;
    g_freeHook = freeHook ? freeHook : &FreeBytes;
}

namespace oo2 {

OodleLogHook CurrentLogHook() { return g_logHook.load(std::memory_order_acquire); }

void* OodleMalloc(std::ptrdiff_t bytes) {
    void* const memory = g_mallocHook.load(std::memory_order_acquire)(bytes);
    if (!memory) Fail("OODLE ERROR : Oodle_Core_Malloc_Failed ; %d bytes\n", static_cast<int>(bytes));
    return memory;
}

void OodleFree(void* memory) { g_freeHook.load(std::memory_order_acquire)(memory); }

bool FitsSignedSize(std::int64_t length, std::int64_t limit) {
    return Check(length <= limit, "OODLE ERROR : Over 2 GB buffer size on 32 bit OS!\n");
}

}  // namespace oo2
