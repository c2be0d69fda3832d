// What a compressor's quantum decoder is given.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace oo2 {

// Fast copies and reads in wide units wherever a margin allows it; Careful goes byte by byte. Both give the
// same bytes and the same failures: tests compare them.
enum class DecodePath : std::uint8_t { Fast, Careful };

// The phases of OodleLZ_Decode_ThreadPhase as a set.
struct Phases {
    bool unpack = true;  // phase 1: arrays from the payload into scratch
    bool write = true;   // phase 2: from scratch into the output
    bool Threaded() const { return !(unpack && write); }
};

// A quantum is cut into chunks of so many raw bytes, the last of them shorter.
inline constexpr std::size_t kMaxChunkLen = 0x20000;

// Scratch that an LZ chunk of n raw bytes must be given. Mermaid's takes n less.
inline constexpr std::size_t kChunkScratchBase = 32 + 53'248;
constexpr std::size_t KrakenChunkScratch(std::size_t n) { return 3 * n + kChunkScratchBase; }

struct Quantum {
    std::uint8_t* raw = nullptr;  // where the output goes
    std::size_t rawLen = 0;       // at most 262,144
    std::span<const std::uint8_t> payload;
    std::size_t bytesSinceReset = 0;  // how far before `raw` matches may reach
    std::int64_t rawPos = 0;          // of `raw` in the window
    std::span<std::uint8_t> scratch;
    Phases phases;
    DecodePath path = DecodePath::Fast;
};

}  // namespace oo2
