// lz_decode: decodes an LZ stream from a file, or measures how fast it decodes. For people who study streams.
#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <limits>
#include <memory>
#include <new>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "oodle/oodle2/core/oodlelzcompressors.h"

namespace {

constexpr int kExitFailed = 1;
constexpr int kExitUsage = 2;
constexpr int kMaxRepeats = 1'000'000;

// Bytes that are not zeroed first: their number is the user's, and the decoder fills them all or fails.
struct Buffer {
    std::unique_ptr<std::uint8_t[]> bytes;
    std::ptrdiff_t size = 0;
};

void LogToStandardError(int level, const char* /*file*/, int /*line*/, const char* format, ...) {
    if (level > 1) return;
    std::va_list args;
    va_start(args, format);
    std::vfprintf(stderr, format, args);
    va_end(args);
}

std::nullopt_t Complain(const char* what, const std::string& name) {
    std::fprintf(stderr, "lz_decode: %s: %s\n", what, name.c_str());
    return std::nullopt;
}

std::optional<std::ptrdiff_t> ParseNumber(std::string_view text, std::int64_t largest) {
    std::int64_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size() || number < 0 || number > largest)
        return std::nullopt;
    return static_cast<std::ptrdiff_t>(number);
}

std::optional<Buffer> Allocate(std::int64_t size, const std::string& what) {
    if (size > std::numeric_limits<std::ptrdiff_t>::max()) return Complain("too long for this machine", what);
    const auto bytes = static_cast<std::size_t>(size);
    Buffer buffer{std::unique_ptr<std::uint8_t[]>(new (std::nothrow) std::uint8_t[bytes]),
                  static_cast<std::ptrdiff_t>(size)};
    if (!buffer.bytes) return Complain("not enough memory", what);
    return buffer;
}

std::optional<Buffer> ReadFile(const std::string& path) {
    std::error_code error;
    const std::uintmax_t size = std::filesystem::file_size(path, error);
    if (error || size > std::numeric_limits<std::int64_t>::max()) return Complain("cannot read", path);
    std::optional<Buffer> buffer = Allocate(static_cast<std::int64_t>(size), path);
    if (!buffer) return std::nullopt;
    std::ifstream file(path, std::ios::binary);
    file.read(reinterpret_cast<char*>(buffer->bytes.get()), buffer->size);
    if (!file) return Complain("cannot read", path);
    return buffer;
}

bool WriteFile(const std::string& path, const Buffer& buffer) {
    std::ofstream file(path, std::ios::binary);
    file.write(reinterpret_cast<const char*>(buffer.bytes.get()), buffer.size);
    file.close();
    if (file) return true;
    std::remove(path.c_str());
    Complain("cannot write", path);
    return false;
}

// With memory of its own, so that repeated calls do not measure the system's allocator.
bool Decode(const Buffer& comp, Buffer& raw) {
    static std::array<std::uint8_t, OodleLZ_ThreadPhased_BlockDecoderMemorySizeNeeded> memory;
    return OodleLZ_Decompress(comp.bytes.get(), comp.size, raw.bytes.get(), raw.size, 1, 0, 0, nullptr, 0,
                              nullptr, nullptr, memory.data(), memory.size(), OodleLZ_Decode_Unthreaded) != 0;
}

int DecodeFile(std::ptrdiff_t rawLen, const std::string& in, const std::string& out) {
    const std::optional<Buffer> comp = ReadFile(in);
    std::optional<Buffer> raw = comp ? Allocate(rawLen, "RAWLEN") : std::nullopt;
    if (!raw || !Decode(*comp, *raw) || !WriteFile(out, *raw)) return kExitFailed;
    return 0;
}

int MeasureFile(std::ptrdiff_t repeats, std::ptrdiff_t rawLen, const std::string& in) {
    using Clock = std::chrono::steady_clock;
    const std::optional<Buffer> comp = ReadFile(in);
    std::optional<Buffer> raw = comp ? Allocate(rawLen, "RAWLEN") : std::nullopt;
    if (!raw) return kExitFailed;
    std::vector<double> seconds;
    for (std::ptrdiff_t i = 0; i < repeats; ++i) {
        const Clock::time_point start = Clock::now();
        if (!Decode(*comp, *raw)) return kExitFailed;
        seconds.push_back(std::chrono::duration<double>(Clock::now() - start).count());
    }
    const auto middle = seconds.begin() + repeats / 2;
    std::nth_element(seconds.begin(), middle, seconds.end());
    std::printf("%.1f MB/s\n", static_cast<double>(rawLen) / 1e6 / std::max(*middle, 1e-9));
    return 0;
}

int Usage() {
    std::fputs(
        "usage: lz_decode RAWLEN IN OUT         decodes the file IN, which gives RAWLEN bytes, to the file "
        "OUT\n"
        "       lz_decode --repeat N RAWLEN IN  prints the median decode speed of N runs in MB/s (10^6 "
        "bytes)\n",
        stderr);
    return kExitUsage;
}

}  // namespace

int main(int argc, char** argv) {
    constexpr std::int64_t kLargest = std::numeric_limits<std::ptrdiff_t>::max();
    const std::vector<std::string> args(argv + 1, argv + argc);
    Oodle_SetLogHook(LogToStandardError);
    if (args.size() == 4 && args[0] == "--repeat") {
        const auto repeats = ParseNumber(args[1], kMaxRepeats);
        const auto rawLen = ParseNumber(args[2], kLargest);
        if (repeats && *repeats > 0 && rawLen) return MeasureFile(*repeats, *rawLen, args[3]);
    } else if (args.size() == 3) {
        const auto rawLen = ParseNumber(args[0], kLargest);
        if (rawLen) return DecodeFile(*rawLen, args[1], args[2]);
    }
    return Usage();
}
