// Walks over the chunks of a quantum. All new compressors cut a quantum into chunks in the same way. The walk
// decodes stored chunks and single arrays itself. For an LZ chunk it calls two functions of the compressor:
// `unpack` (phase 1) makes streams of the payload, `write` (phase 2) makes raw bytes of the streams.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <type_traits>

#include "oodle/oodle2/core/quantum.h"

namespace oo2 {

// An LZ chunk.
struct Chunk {
    DecodeContext context;     // rawPos is where the chunk's output goes; scratch is the chunk's own
    std::size_t rawLen = 0;    // at most kMaxChunkLen
    unsigned literalMode = 0;  // 4 bits
    std::span<const std::uint8_t> payload;  // fewer bytes than rawLen

    bool StartsWindow() const { return context.BytesSinceReset() == 0; }
};

template <typename Streams>
using UnpackChunk = bool (*)(const Chunk& chunk, Streams& streams);
template <typename Streams>
using WriteChunk = bool (*)(const Chunk& chunk, const Streams& streams);

// Phase 1 of a threaded quantum leaves a record of each LZ chunk at the start of scratch: which chunk it was,
// and its streams. The streams point into the rest of scratch and into the payload.
inline constexpr std::size_t kMaxChunks = 2;
inline constexpr std::size_t kRecordArea = 1024;
inline constexpr std::size_t kRecordSize = kRecordArea / kMaxChunks;

struct ChunkId {
    std::int64_t rawPos = -1;  // -1: none
    std::span<const std::uint8_t> payload;

    bool operator==(const ChunkId& other) const {
        return rawPos == other.rawPos && payload.data() == other.payload.data() &&
               payload.size() == other.payload.size();
    }
};

class ChunkWalk {
  public:
    explicit ChunkWalk(const Quantum& quantum) : m_quantum(quantum), m_rest(quantum.payload) {}

    // Goes to the next LZ chunk; decodes the others on the way. Null at the quantum's end and after a
    // failure.
    const Chunk* NextLzChunk();

    // The number of bytes taken from the payload; -1 after a failure.
    std::ptrdiff_t BytesUsed() const;

    // Identifies the LZ chunk; its record in scratch.
    ChunkId Id() const { return {.rawPos = m_chunk.context.rawPos, .payload = m_chunk.payload}; }
    std::uint8_t* Record() const { return m_quantum.context.scratch.data() + m_index * kRecordSize; }

  private:
    enum class Outcome { Failed, Decoded, IsLz };

    Outcome DecodeChunk();
    Outcome DecodeArrayChunk();
    Outcome DecodeFramedChunk(std::uint32_t header);
    std::span<std::uint8_t> ChunkScratch() const;

    const Quantum& m_quantum;
    std::span<const std::uint8_t> m_rest;
    std::size_t m_index = 0;  // of the chunk in the quantum
    Chunk m_chunk;
    std::size_t m_done = 0;  // raw bytes, including the present chunk
    bool m_failed = false;
};

// Decodes a quantum with its compressor's two functions. The result is that of a QuantumDecoder.
template <typename Streams>
std::ptrdiff_t DecodeChunks(const Quantum& quantum, UnpackChunk<Streams> unpack, WriteChunk<Streams> write) {
    struct Record {
        ChunkId id;
        Streams streams;
    };
    static_assert(std::is_trivially_copyable_v<Record> && sizeof(Record) <= kRecordSize);
    const Phases phases = quantum.context.phases;
    ChunkWalk walk(quantum);
    while (const Chunk* const chunk = walk.NextLzChunk()) {
        Record record;
        if (phases.unpack) {
            const bool good = unpack(*chunk, record.streams);
            // After a failure phase 2 must not find an earlier block's record: its streams are gone.
            if (good) record.id = walk.Id();
            if (phases.Threaded()) std::memcpy(walk.Record(), &record, sizeof(record));
            if (!good) return -1;
        } else {
            std::memcpy(&record, walk.Record(), sizeof(record));
            if (!(record.id == walk.Id())) return -1;
        }
        if (phases.write && !write(*chunk, record.streams)) return -1;
    }
    return walk.BytesUsed();
}

}  // namespace oo2
