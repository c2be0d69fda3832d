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
    explicit QuantumDecoder(const Quantum& quantum) : quantum_(quantum), rest_(quantum.payload) {}

    std::ptrdiff_t Run();

  private:
    bool DecodeChunk();
    bool DecodeArrayChunk();
    bool DecodeLzChunk(std::uint32_t header);
    bool RunPhases(unsigned mode, std::span<const std::uint8_t> payload);
    std::uint8_t* Record() const { return quantum_.scratch.data() + chunkIndex_ * sizeof(ChunkRecord); }
    std::span<std::uint8_t> ChunkScratch() const;

    const Quantum& quantum_;
    std::span<const std::uint8_t> rest_;
    std::size_t done_ = 0;  // raw bytes
    std::size_t chunkIndex_ = 0;
    Chunk chunk_;
};

std::ptrdiff_t QuantumDecoder::Run() {
    for (; done_ < quantum_.rawLen; ++chunkIndex_) {
        chunk_ = {.raw = quantum_.raw + done_,
                  .rawLen = std::min(kMaxChunkLen, quantum_.rawLen - done_),
                  .bytesSinceReset = quantum_.bytesSinceReset + done_,
                  .scratch = ChunkScratch(),
                  .path = quantum_.path};
        if (!DecodeChunk()) return -1;
        done_ += chunk_.rawLen;
    }
    return static_cast<std::ptrdiff_t>(quantum_.payload.size() - rest_.size());
}

std::span<std::uint8_t> QuantumDecoder::ChunkScratch() const {
    if (!quantum_.phases.Threaded()) return quantum_.scratch;
    return quantum_.scratch.subspan(kRecordArea + chunkIndex_ * kThreadedChunkScratch, kThreadedChunkScratch);
}

// A chunk, by the big-endian number of its first 3 bytes:
//   bit 23 clear   an array, whose header these bytes begin: the raw bytes themselves
//   bit 23 set     bits 0-18 the length of the payload behind the 3 bytes; bits 19-22 the literal mode.
//                  With the raw length as length and mode 0 the payload is the raw bytes, stored.
bool QuantumDecoder::DecodeChunk() {
    if (rest_.size() < kChunkHeaderSize) return false;
    const std::uint32_t header =
        static_cast<std::uint32_t>(rest_[0]) << 16 | static_cast<std::uint32_t>(rest_[1]) << 8 | rest_[2];
    return (header & kLzChunkFlag) == 0 ? DecodeArrayChunk() : DecodeLzChunk(header);
}

// An array chunk is all output, so a threaded quantum leaves it to phase 2.
bool QuantumDecoder::DecodeArrayChunk() {
    const std::optional<ArrayHeader> header = newLZ_get_array_header(rest_, chunk_.rawLen);
    if (!header || header->rawLen != chunk_.rawLen) return false;
    const std::size_t compUsed = header->size + header->compLen;
    if (compUsed >= chunk_.rawLen) return false;
    Log(kLogDetail, "HCHUNK : %d : %d\n", static_cast<int>(chunk_.rawLen), static_cast<int>(compUsed));
    if (quantum_.phases.write) {
        ArrayScratch scratch{.next = chunk_.scratch.data(),
                             .end = chunk_.scratch.data() + chunk_.scratch.size(),
                             .path = chunk_.path};
        if (!newLZ_get_array_copy(rest_, chunk_.raw, chunk_.rawLen, scratch)) return false;
    }
    rest_ = rest_.subspan(compUsed);
    return true;
}

bool QuantumDecoder::DecodeLzChunk(std::uint32_t header) {
    const std::size_t compLen = header & kLzChunkLenMask;
    const unsigned mode = header >> kLiteralModeShift & 15;
    rest_ = rest_.subspan(kChunkHeaderSize);
    if (compLen > rest_.size()) return false;
    const std::span<const std::uint8_t> payload = rest_.first(compLen);
    rest_ = rest_.subspan(compLen);
    Log(kLogDetail, "CHUNK : %d : %d\n", static_cast<int>(chunk_.rawLen), static_cast<int>(compLen));
    if (compLen < chunk_.rawLen) return RunPhases(mode, payload);
    if (compLen > chunk_.rawLen || mode != 0) return false;
    if (quantum_.phases.write) std::memcpy(chunk_.raw, payload.data(), compLen);
    return true;
}

bool QuantumDecoder::RunPhases(unsigned mode, std::span<const std::uint8_t> payload) {
    ChunkRecord record{
        .rawPos = quantum_.rawPos + static_cast<std::int64_t>(done_), .payload = payload, .streams = {}};
    if (quantum_.phases.unpack) {
        const bool good = newLZ_unpack_chunk(chunk_, mode, payload, record.streams);
        if (quantum_.phases.write) return good && newLZ_decode_chunk_phase2(chunk_, record.streams);
        // After a failure no phase 2 must find the record of an earlier block, whose streams are overwritten.
        if (!good) record = {};
        std::memcpy(Record(), &record, sizeof(record));
        return good;
    }
    ChunkRecord unpacked;
    std::memcpy(&unpacked, Record(), sizeof(unpacked));
    return unpacked.IsOf(record.rawPos, payload) && newLZ_decode_chunk_phase2(chunk_, unpacked.streams);
}

}  // namespace

std::ptrdiff_t Kraken_DecodeOneQuantum(const Quantum& quantum) { return QuantumDecoder(quantum).Run(); }

}  // namespace oo2
