// The input of a compressor's quantum decoder.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "oodle/oodle2/core/decode_context.h"

namespace oo2 {

struct Quantum {
    DecodeContext context;   // rawPos: where the quantum's output goes
    std::size_t rawLen = 0;  // at most 262,144
    std::span<const std::uint8_t> payload;
};

// Decodes one quantum. Returns the number of payload bytes that it took, or -1 if the quantum is corrupt or
// does not fit into scratch. Each phase of a threaded quantum returns the same.
using QuantumDecoder = std::ptrdiff_t (*)(const Quantum& quantum);

// A quantum is cut into chunks of this many raw bytes; the last may be shorter.
inline constexpr std::size_t kMaxChunkLen = 0x20000;

// The scratch of an LZ chunk of n raw bytes. A Mermaid chunk needs n bytes less.
inline constexpr std::size_t kChunkScratchBase = 32 + 53'248;
constexpr std::size_t KrakenChunkScratch(std::size_t n) { return 3 * n + kChunkScratchBase; }

}  // namespace oo2
