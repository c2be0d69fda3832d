// An LZ chunk between the two phases: what its payload unpacks to, and what the parse loop takes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "oodle/oodle2/core/quantum.h"

namespace oo2 {

inline constexpr std::size_t kChunkHeaderSize = 3;
inline constexpr std::size_t kHeadLen = 8;  // raw bytes stored verbatim at a window's start

enum class LiteralMode : std::uint8_t {
    Sub = 0,  // each literal is its stored byte plus the output byte at the last offset
    Raw = 1,  // as stored
};

// One chunk of a quantum, in the terms of Quantum.
struct Chunk {
    std::uint8_t* raw = nullptr;
    std::size_t rawLen = 0;  // at most kMaxChunkLen
    std::size_t bytesSinceReset = 0;
    std::span<std::uint8_t> scratch;
    DecodePath path = DecodePath::Fast;

    bool StartsWindow() const { return bytesSinceReset == 0; }
};

// The streams of a chunk. They point into scratch, or into the payload where an array was stored: as long as
// they are used, both must stay as they are.
struct ChunkStreams {
    LiteralMode mode = LiteralMode::Raw;
    std::span<const std::uint8_t> head;  // the first kHeadLen raw bytes of a window, else none
    std::span<const std::uint8_t> literals;
    std::span<const std::uint8_t> commands;
    std::span<const std::uint32_t> offsets;
    std::span<const std::uint32_t> excesses;
};

// An offset that reaches before every window: what offsets become that do not fit.
inline constexpr std::uint32_t kOffsetTooFar = 0xFFFFFFFF;

// Readable entries after the excesses, so that the parse loop can look at the next excess before it knows
// whether it takes one.
inline constexpr std::size_t kExcessPadding = 16;

// Phase 1: unpacks the payload of an LZ chunk. False if it is corrupt.
bool newLZ_unpack_chunk(const Chunk& chunk, unsigned mode, std::span<const std::uint8_t> payload,
                        ChunkStreams& streams);

// Phase 2: writes the chunk's raw bytes. False if the streams do not give exactly these.
bool newLZ_decode_chunk_phase2(const Chunk& chunk, const ChunkStreams& streams);

// What newLZ_get_offsets_excesses unpacks.
struct OffsetCodes {
    std::span<const std::uint8_t> codes;
    std::span<const std::uint8_t> lowParts;  // one for each code if modulus > 1
    unsigned modulus = 0;                    // 0: the single form
};

// Unpacks offset and excess codes with the raw bits that end an LZ chunk's payload. `excessBytes` is the
// length of the section for long excesses if it was sent, else negative. `offsets` and `excesses` are as long
// as their codes.
bool newLZ_get_offsets_excesses(std::span<const std::uint8_t> bits, std::ptrdiff_t excessBytes,
                                const OffsetCodes& codes, std::span<const std::uint8_t> excessCodes,
                                std::span<std::uint32_t> offsets, std::span<std::uint32_t> excesses);

}  // namespace oo2
