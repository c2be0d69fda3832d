// What a compressor's quantum decoder is given.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "oodle/oodle2/core/decode_context.h"

namespace oo2 {

struct Quantum {
    DecodeContext context;   // its rawPos is where the quantum's output goes
    std::size_t rawLen = 0;  // at most 262,144
    std::span<const std::uint8_t> payload;
};

// Decodes one quantum. Returns the bytes of its payload that it took, or -1 if it is corrupt or does not fit
// the scratch. Of a threaded quantum, each phase returns that.
using QuantumDecoder = std::ptrdiff_t (*)(const Quantum& quantum);

// A quantum is cut into chunks of this many raw bytes; the last may be shorter.
inline constexpr std::size_t kMaxChunkLen = 0x20000;

// Scratch that an LZ chunk of n raw bytes must be given. Mermaid's takes n less.
inline constexpr std::size_t kChunkScratchBase = 32 + 53'248;
constexpr std::size_t KrakenChunkScratch(std::size_t n) { return 3 * n + kChunkScratchBase; }

}  // namespace oo2
