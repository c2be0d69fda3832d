// Phase 1 of a Kraken LZ chunk: its arrays, unpacked into scratch.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "oodle/oodle2/core/chunk_walk.h"

namespace oo2 {

enum class LiteralMode : std::uint8_t {
    Sub = 0,  // each literal is the stored byte plus the output byte at the last offset
    Raw = 1,  // as stored
};

// The streams of a chunk. They point into scratch; the stream of a stored array points into the payload. Both
// must stay unchanged while the streams are used.
struct ChunkStreams {
    LiteralMode mode = LiteralMode::Raw;
    std::span<const std::uint8_t> head;  // at a window's start: its first kHeadLen raw bytes
    std::span<const std::uint8_t> literals;
    std::span<const std::uint8_t> commands;
    std::span<const std::uint32_t> offsets;   // kOffsetPadding more entries can be read
    std::span<const std::uint32_t> excesses;  // kExcessPadding more entries can be read
};

inline constexpr std::size_t kHeadLen = 8;  // raw bytes stored as they are at a window's start

// Entries behind the offsets and the excesses that can be read and mean nothing. The parse loop looks at the
// next entry before it knows whether the command takes it, and at offsets far ahead to fetch their sources.
// The format sets 64 bytes of scratch aside for this.
inline constexpr std::size_t kOffsetPadding = 15;
inline constexpr std::size_t kExcessPadding = 1;

// Unpacks the payload of an LZ chunk. Returns false if it is corrupt.
bool newLZ_unpack_chunk(const Chunk& chunk, ChunkStreams& streams);

}  // namespace oo2
