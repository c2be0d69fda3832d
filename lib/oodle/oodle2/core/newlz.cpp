#include "oodle/oodle2/core/newlz.h"

#include <algorithm>
#include <cstring>
#include <optional>
#include <type_traits>

#include "oodle/oodle2/core/decoder_state.h"
#include "oodle/oodle2/core/newlz_arrays.h"
#include "oodle/oodle2/core/newlz_chunk.h"
#include "oodle/oodle2/core/oodlebase.h"
#include "oodle/oodle2/core/oodlelzcompressors.h"

namespace oo2 {
namespace {

constexpr std::uint32_t kLzChunkFlag = 0x800000;
constexpr std::uint32_t kLzChunkLenMask = 0x7FFFF;
constexpr unsigned kLiteralModeShift = 19;
constexpr std::size_t kMaxChunks = 2;

// What phase 1 of a threaded quantum leaves for phase 2 of one of its chunks, and how phase 2 knows that it
// is its own.
struct ChunkRecord {
    std::int64_t rawPos = -1;
    std::span<const std::uint8_t> payload;
    ChunkStreams streams;

    bool IsOf(std::int64_t pos, std::span<const std::uint8_t> of) const {
        return rawPos == pos && payload.data() == of.data() && payload.size() == of.size();
    }
};

// Scratch of a threaded quantum: the records, then an area of the largest size for each chunk.
constexpr std::size_t kRecordArea = 1024;
constexpr std::size_t kThreadedChunkScratch = KrakenChunkScratch(kMaxChunkLen);
static_assert(kMaxChunks * sizeof(ChunkRecord) <= kRecordArea);
static_assert(std::is_trivially_copyable_v<ChunkRecord>);
static_assert(kStateSize + kRecordArea + kMaxChunks * kThreadedChunkScratch + kDecoderMemorySlack ==
              OodleLZ_ThreadPhased_BlockDecoderMemorySizeNeeded);

class QuantumDecoder {
  public:
    explicit QuantumDecoder(const Quantum& quantum) : m_quantum(quantum), m_rest(quantum.payload) {}

    std::ptrdiff_t Run();

  private:
    bool DecodeChunk();
    bool DecodeArrayChunk();
    bool DecodeLzChunk(std::uint32_t header);
    bool RunPhases(unsigned mode, std::span<const std::uint8_t> payload);
    std::uint8_t* Record() const { return m_quantum.scratch.data() + m_chunkIndex * sizeof(ChunkRecord); }
    std::span<std::uint8_t> ChunkScratch() const;

    const Quantum& m_quantum;
    std::span<const std::uint8_t> m_rest;
    std::size_t m_done = 0;  // raw bytes
    std::size_t m_chunkIndex = 0;
    Chunk m_chunk;
};

std::ptrdiff_t QuantumDecoder::Run() {
    for (; m_done < m_quantum.rawLen; ++m_chunkIndex) {
        m_chunk = {.raw = m_quantum.raw + m_done,
                   .rawLen = std::min(kMaxChunkLen, m_quantum.rawLen - m_done),
                   .bytesSinceReset = m_quantum.bytesSinceReset + m_done,
                   .scratch = ChunkScratch(),
                   .path = m_quantum.path};
        if (!DecodeChunk()) return -1;
        m_done += m_chunk.rawLen;
    }
    return static_cast<std::ptrdiff_t>(m_quantum.payload.size() - m_rest.size());
}

std::span<std::uint8_t> QuantumDecoder::ChunkScratch() const {
    if (!m_quantum.phases.Threaded()) return m_quantum.scratch;
    return m_quantum.scratch.subspan(kRecordArea + m_chunkIndex * kThreadedChunkScratch,
                                     kThreadedChunkScratch);
}

// A chunk, by the big-endian number of its first 3 bytes:
//   bit 23 clear   an array, whose header these bytes begin: the raw bytes themselves
//   bit 23 set     bits 0-18 the length of the payload behind the 3 bytes; bits 19-22 the literal mode.
//                  With the raw length as length and mode 0 the payload is the raw bytes, stored.
bool QuantumDecoder::DecodeChunk() {
    if (m_rest.size() < kChunkHeaderSize) return false;
    const std::uint32_t header =
        static_cast<std::uint32_t>(m_rest[0]) << 16 | static_cast<std::uint32_t>(m_rest[1]) << 8 | m_rest[2];
    return (header & kLzChunkFlag) == 0 ? DecodeArrayChunk() : DecodeLzChunk(header);
}

// An array chunk is all output, so a threaded quantum leaves it to phase 2.
bool QuantumDecoder::DecodeArrayChunk() {
    const std::optional<ArrayHeader> header = newLZ_get_array_header(m_rest, m_chunk.rawLen);
    if (!header || header->rawLen != m_chunk.rawLen) return false;
    const std::size_t compUsed = header->size + header->compLen;
    if (compUsed >= m_chunk.rawLen) return false;
    Log(kLogDetail, "HCHUNK : %d : %d\n", static_cast<int>(m_chunk.rawLen), static_cast<int>(compUsed));
    if (m_quantum.phases.write) {
        ArrayScratch scratch{.next = m_chunk.scratch.data(),
                             .end = m_chunk.scratch.data() + m_chunk.scratch.size(),
                             .path = m_chunk.path};
        if (!newLZ_get_array_copy(m_rest, m_chunk.raw, m_chunk.rawLen, scratch)) return false;
    }
    m_rest = m_rest.subspan(compUsed);
    return true;
}

bool QuantumDecoder::DecodeLzChunk(std::uint32_t header) {
    const std::size_t compLen = header & kLzChunkLenMask;
    const unsigned mode = header >> kLiteralModeShift & 15;
    m_rest = m_rest.subspan(kChunkHeaderSize);
    if (compLen > m_rest.size()) return false;
    const std::span<const std::uint8_t> payload = m_rest.first(compLen);
    m_rest = m_rest.subspan(compLen);
    Log(kLogDetail, "CHUNK : %d : %d\n", static_cast<int>(m_chunk.rawLen), static_cast<int>(compLen));
    if (compLen < m_chunk.rawLen) return RunPhases(mode, payload);
    if (compLen > m_chunk.rawLen || mode != 0) return false;
    if (m_quantum.phases.write) std::memcpy(m_chunk.raw, payload.data(), compLen);
    return true;
}

bool QuantumDecoder::RunPhases(unsigned mode, std::span<const std::uint8_t> payload) {
    ChunkRecord record{
        .rawPos = m_quantum.rawPos + static_cast<std::int64_t>(m_done), .payload = payload, .streams = {}};
    if (m_quantum.phases.unpack) {
        const bool good = newLZ_unpack_chunk(m_chunk, mode, payload, record.streams);
        if (m_quantum.phases.write) return good && newLZ_decode_chunk_phase2(m_chunk, record.streams);
        // After a failure no phase 2 must find the record of an earlier block, whose streams are overwritten.
        if (!good) record = {};
        std::memcpy(Record(), &record, sizeof(record));
        return good;
    }
    ChunkRecord unpacked;
    std::memcpy(&unpacked, Record(), sizeof(unpacked));
    return unpacked.IsOf(record.rawPos, payload) && newLZ_decode_chunk_phase2(m_chunk, unpacked.streams);
}

}  // namespace

std::ptrdiff_t Kraken_DecodeOneQuantum(const Quantum& quantum) { return QuantumDecoder(quantum).Run(); }

}  // namespace oo2
