// Calls the decoder on guarded copies.
#include "decode.h"

#include <gtest/gtest.h>

#include "oodle/oodle2/core/decompress.h"

#if defined(__SANITIZE_ADDRESS__)
#define LZ_EXACT_BUFFERS 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define LZ_EXACT_BUFFERS 1
#endif
#endif

namespace lz {
namespace {

// The sanitizer watches the ends of an exact buffer itself.
#ifdef LZ_EXACT_BUFFERS
constexpr size_t kGuard = 0;
#else
constexpr size_t kGuard = 64;
#endif
constexpr uint8_t kGuardByte = 0xA7;

class GuardedBuffer {
  public:
    explicit GuardedBuffer(size_t size) : size_(size), memory_(new uint8_t[size + 2 * kGuard]) {
        std::fill_n(memory_.get(), size + 2 * kGuard, kGuardByte);
    }
    explicit GuardedBuffer(ByteSpan bytes) : GuardedBuffer(bytes.size()) {
        std::copy(bytes.begin(), bytes.end(), data());
    }
    uint8_t* data() { return memory_.get() + kGuard; }
    ptrdiff_t ssize() const { return static_cast<ptrdiff_t>(size_); }
    Bytes ToBytes() { return {data(), data() + size_}; }
    bool IsIntact() const {
        const auto guards = [](const uint8_t* guard) {
            return std::all_of(guard, guard + kGuard, [](uint8_t byte) { return byte == kGuardByte; });
        };
        return guards(memory_.get()) && guards(memory_.get() + kGuard + size_);
    }

  private:
    size_t size_;
    std::unique_ptr<uint8_t[]> memory_;
};

void Discard(int, const char*, int, const char*, ...) {}

// The decoder reports every broken stream; there are tens of thousands here.
void UseSilentLog() { Oodle_SetLogHook(Discard); }

}  // namespace

std::optional<Bytes> Decode(ByteSpan stream, size_t raw_size, Path path) {
    UseSilentLog();
    GuardedBuffer in(stream);
    GuardedBuffer out(raw_size);
    oo2::DecompressArgs args;
    args.compBuf = in.data();
    args.compBufSize = in.ssize();
    args.rawBuf = out.data();
    args.rawLen = out.ssize();
    const ptrdiff_t result =
        oo2::Decompress(args, path == Path::fast ? oo2::DecodePath::Fast : oo2::DecodePath::Careful);
    EXPECT_TRUE(result == 0 || result == out.ssize()) << result;
    EXPECT_TRUE(out.IsIntact()) << "written outside the output";
    if (result == 0) return std::nullopt;
    return out.ToBytes();
}

std::optional<Bytes> DecodeInPhases(const Case& example) {
    UseSilentLog();
    GuardedBuffer in(example.stream);
    GuardedBuffer out(example.raw.size());
    GuardedBuffer memory(static_cast<size_t>(OodleLZ_ThreadPhased_BlockDecoderMemorySizeNeeded));
    for (size_t i = 0; i < example.blocks.size(); ++i) {
        const size_t comp_end = i + 1 < example.blocks.size() ? example.blocks[i + 1] : example.stream.size();
        const size_t raw_start = i * kBlockSize;
        const size_t raw_size = std::min(kBlockSize, example.raw.size() - raw_start);
        oo2::DecompressArgs args;
        args.compBuf = in.data() + example.blocks[i];
        args.compBufSize = static_cast<ptrdiff_t>(comp_end - example.blocks[i]);
        args.rawBuf = out.data() + raw_start;
        args.rawLen = static_cast<ptrdiff_t>(raw_size);
        args.decBufBase = out.data();
        args.decoderMemory = memory.data();
        args.decoderMemorySize = memory.ssize();
        for (const int phase : {OodleLZ_Decode_ThreadPhase1, OodleLZ_Decode_ThreadPhase2}) {
            args.threadPhase = phase;
            if (oo2::Decompress(args, oo2::DecodePath::Fast) != args.rawLen) return std::nullopt;
        }
    }
    EXPECT_TRUE(out.IsIntact() && memory.IsIntact()) << "written outside the output or the decoder memory";
    return out.ToBytes();
}

}  // namespace lz
