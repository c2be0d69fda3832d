#include "oodle/oodle2/core/chunk_walk.h"

#include <algorithm>
#include <optional>

#include "oodle/oodle2/core/decoder_state.h"
#include "oodle/oodle2/core/newlz_arrays.h"
#include "oodle/oodle2/core/oodlebase.h"
#include "oodle/oodle2/core/oodlelzcompressors.h"

namespace oo2 {
namespace {

constexpr std::size_t kChunkHeaderSize = 3;
constexpr std::uint32_t kLzChunkFlag = 0x800000;
constexpr std::uint32_t kLzChunkLenMask = 0x7FFFF;
constexpr unsigned kLiteralModeShift = 19;

// Scratch of a threaded quantum: the records, then one area of the largest size per chunk.
constexpr std::size_t kThreadedChunkArea = KrakenChunkScratch(kMaxChunkLen);
static_assert(kStateSize + kRecordArea + kMaxChunks * kThreadedChunkArea + kDecoderMemorySlack ==
              OodleLZ_ThreadPhased_BlockDecoderMemorySizeNeeded);
static_assert(kMaxChunks * kMaxChunkLen == kLongQuantumRawLen);

}  // namespace

const Chunk* ChunkWalk::NextLzChunk() {
    while (!m_failed && m_done < m_quantum.rawLen) {
        m_index = m_done / kMaxChunkLen;
        m_chunk = {.context = m_quantum.context,
                   .rawLen = std::min(kMaxChunkLen, m_quantum.rawLen - m_done),
                   .payload = {}};
        m_chunk.context.rawPos += static_cast<std::int64_t>(m_done);
        m_chunk.context.scratch = ChunkScratch();
        m_done += m_chunk.rawLen;
        const Outcome outcome = DecodeChunk();
        if (outcome == Outcome::IsLz) return &m_chunk;
        m_failed = outcome == Outcome::Failed;
    }
    return nullptr;
}

std::ptrdiff_t ChunkWalk::BytesUsed() const {
    return m_failed ? -1 : static_cast<std::ptrdiff_t>(m_quantum.payload.size() - m_rest.size());
}

// In an unthreaded quantum all chunks use the same bytes, one after the other.
std::span<std::uint8_t> ChunkWalk::ChunkScratch() const {
    const DecodeContext& context = m_quantum.context;
    const std::size_t begin =
        context.phases.Threaded() ? kRecordArea + m_index * kThreadedChunkArea : std::size_t{0};
    return context.scratch.subspan(begin, context.chunkScratch);
}

// A chunk, by the big-endian number of its first 3 bytes:
//   bit 23 clear   an array: these bytes begin its header, and its bytes are the raw bytes
//   bit 23 set     bits 0-18: length of the payload, which follows; bits 19-22: literal mode.
//                  If the length is the raw length and the mode is 0, the payload is the raw bytes, stored.
ChunkWalk::Outcome ChunkWalk::DecodeChunk() {
    if (m_rest.size() < kChunkHeaderSize) return Outcome::Failed;
    const std::uint32_t header =
        static_cast<std::uint32_t>(m_rest[0]) << 16 | static_cast<std::uint32_t>(m_rest[1]) << 8 | m_rest[2];
    return (header & kLzChunkFlag) == 0 ? DecodeArrayChunk() : DecodeFramedChunk(header);
}

// An array chunk goes straight to the output, so a threaded quantum leaves it to phase 2.
ChunkWalk::Outcome ChunkWalk::DecodeArrayChunk() {
    const std::optional<ArrayHeader> header = newLZ_get_array_header(m_rest, m_chunk.rawLen);
    if (!header || header->rawLen != m_chunk.rawLen) return Outcome::Failed;
    const std::size_t compUsed = header->size + header->compLen;
    if (compUsed >= m_chunk.rawLen) return Outcome::Failed;
    Log(kLogDetail, "HCHUNK : %d : %d\n", static_cast<int>(m_chunk.rawLen), static_cast<int>(compUsed));
    if (m_chunk.context.phases.write) {
        ArrayScratch scratch = ScratchOf(m_chunk.context);
        // A stored array would take more bytes than rawLen, so this one is coded, and is decoded into the
        // output.
        if (!newLZ_get_array(m_rest, m_chunk.context.Out(), m_chunk.rawLen, scratch)) return Outcome::Failed;
    }
    m_rest = m_rest.subspan(compUsed);
    return Outcome::Decoded;
}

ChunkWalk::Outcome ChunkWalk::DecodeFramedChunk(std::uint32_t header) {
    const std::size_t compLen = header & kLzChunkLenMask;
    m_chunk.literalMode = header >> kLiteralModeShift & 15;
    m_rest = m_rest.subspan(kChunkHeaderSize);
    if (compLen > m_rest.size()) return Outcome::Failed;
    m_chunk.payload = m_rest.first(compLen);
    m_rest = m_rest.subspan(compLen);
    Log(kLogDetail, "CHUNK : %d : %d\n", static_cast<int>(m_chunk.rawLen), static_cast<int>(compLen));
    if (compLen < m_chunk.rawLen) return Outcome::IsLz;
    if (compLen > m_chunk.rawLen || m_chunk.literalMode != 0) return Outcome::Failed;
    if (m_chunk.context.phases.write) std::memcpy(m_chunk.context.Out(), m_chunk.payload.data(), compLen);
    return Outcome::Decoded;
}

}  // namespace oo2
