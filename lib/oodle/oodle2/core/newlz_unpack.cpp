// Phase 1 of an LZ chunk: its arrays into scratch.
#include <algorithm>
#include <iterator>

#include "oodle/oodle2/core/newlz_arrays.h"
#include "oodle/oodle2/core/newlz_arrays_huff.h"
#include "oodle/oodle2/core/newlz_chunk.h"
#include "oodle/oodle2/core/oodlebase.h"

namespace oo2 {
namespace {

using Bytes = std::span<const std::uint8_t>;

constexpr std::size_t kLeastLzChunk = 128;
constexpr std::size_t kStreamAlignment = 16;
constexpr unsigned kExcessCountFlag = 0x80;
constexpr unsigned kExcessReservedFlag = 0x40;

const char* LiteralModeName(unsigned mode) {
    constexpr const char* kNames[] = {"sub", "raw", "lamsub", "suband3", "subandf"};
    return mode < std::size(kNames) ? kNames[mode] : "invalid";
}

// The payload of an LZ chunk:
//   8 bytes           at a window's start only: the first raw bytes
//   1 or 2 bytes      optional, bit 7 of the first set: the count of excess bytes. Bit 6 is 0; bits 0-5
//                     are the count c; if that is 32 or more, a byte b follows and the count is c + 32 * b
//   array             literals
//   array             commands, one byte each
//   array             offset codes, if its first byte is below 0x80: the single form
//   or 1 byte, array  the byte is the offsets' modulus plus 0x7F; if the modulus is more than 1, an array
//                     with as many low parts follows the codes
//   array             excess codes
//   the rest          the raw bits of offsets and excesses
class Unpacker {
  public:
    Unpacker(const Chunk& chunk, Bytes payload, ChunkStreams& streams)
        : m_chunk(chunk), m_rest(payload), m_streams(streams) {
        m_scratch.next = chunk.scratch.data();
        m_scratch.end = chunk.scratch.data() + chunk.scratch.size();
        m_scratch.path = chunk.path;
        m_scratch.batch = &m_batch;
    }

    bool Run() {
        return TakeHead() && TakeExcessCount() && TakeArrays() && m_batch.Run(m_chunk.path) && TakeBits();
    }

  private:
    bool TakeHead();
    bool TakeExcessCount();
    bool TakeArrays();
    bool TakeOffsetCodes();
    bool TakeBits();
    bool TakeArray(std::size_t capacity, Bytes& bytes);
    std::span<std::uint32_t> Allocate(std::size_t count);

    const Chunk& m_chunk;
    Bytes m_rest;
    ChunkStreams& m_streams;
    ArrayScratch m_scratch;
    HuffBatch m_batch;
    std::ptrdiff_t m_excessBytes = -1;  // not sent
    OffsetCodes m_offsetCodes;
    Bytes m_excessCodes;
};

bool Unpacker::TakeHead() {
    if (!m_chunk.StartsWindow()) return true;
    if (m_rest.size() < kHeadLen) return false;
    m_streams.head = m_rest.first(kHeadLen);
    m_rest = m_rest.subspan(kHeadLen);
    return true;
}

bool Unpacker::TakeExcessCount() {
    if (m_rest.empty() || (m_rest[0] & kExcessCountFlag) == 0) return true;
    if (!Check((m_rest[0] & kExcessReservedFlag) == 0,
               "OODLE ERROR : corruption : excess reserved flag bit nonzero\n")) {
        return false;
    }
    m_excessBytes = m_rest[0] & 0x3F;
    m_rest = m_rest.subspan(1);
    if (m_excessBytes >= 32) {
        if (!Check(!m_rest.empty(), "OODLE ERROR : corruption : truncated excess byte count\n")) return false;
        m_excessBytes += 32 * m_rest[0];
        m_rest = m_rest.subspan(1);
    }
    return true;
}

bool Unpacker::TakeArray(std::size_t capacity, Bytes& bytes) {
    const auto array = newLZ_get_array(m_rest, nullptr, capacity, m_scratch);
    if (!array) return false;
    bytes = array->bytes;
    m_rest = m_rest.subspan(array->compUsed);
    return true;
}

bool Unpacker::TakeOffsetCodes() {
    if (m_rest.empty()) return false;
    if (m_rest[0] < 0x80) return TakeArray(m_streams.commands.size(), m_offsetCodes.codes);
    m_offsetCodes.modulus = m_rest[0] - 0x7Fu;
    m_rest = m_rest.subspan(1);
    if (!TakeArray(m_streams.commands.size(), m_offsetCodes.codes)) return false;
    if (m_offsetCodes.modulus == 1) return true;
    return TakeArray(m_streams.commands.size(), m_offsetCodes.lowParts) &&
           Check(m_offsetCodes.codes.size() == m_offsetCodes.lowParts.size(),
                 "OODLE ERROR : corruption : offsets_count == offsets_count_2\n");
}

bool Unpacker::TakeArrays() {
    return TakeArray(m_chunk.rawLen, m_streams.literals) && TakeArray(m_chunk.rawLen, m_streams.commands) &&
           TakeOffsetCodes() && TakeArray(m_chunk.rawLen / 4, m_excessCodes);
}

// 32-bit values in scratch, from its next multiple of 16 on; less of them if it is full.
std::span<std::uint32_t> Unpacker::Allocate(std::size_t count) {
    const std::size_t padding = (0 - reinterpret_cast<std::uintptr_t>(m_scratch.next)) % kStreamAlignment;
    if (padding > m_scratch.Left() || count > (m_scratch.Left() - padding) / sizeof(std::uint32_t)) return {};
    auto* const begin = reinterpret_cast<std::uint32_t*>(m_scratch.next + padding);
    m_scratch.next += padding + count * sizeof(std::uint32_t);
    return {begin, count};
}

bool Unpacker::TakeBits() {
    const std::span<std::uint32_t> offsets = Allocate(m_offsetCodes.codes.size());
    const std::span<std::uint32_t> excesses = Allocate(m_excessCodes.size() + kExcessPadding);
    if (!Check(offsets.size() == m_offsetCodes.codes.size() && !excesses.empty(),
               "OODLE ERROR : newlz scratch overflow\n")) {
        return false;
    }
    if (!newLZ_get_offsets_excesses(m_rest, m_excessBytes, m_offsetCodes, m_excessCodes, offsets,
                                    excesses.first(m_excessCodes.size()))) {
        Log(kLogDetail, "newlz newLZ_get_offsets_excesses error\n");
        return false;
    }
    const std::span<std::uint32_t> padding = excesses.last(kExcessPadding);
    std::fill(padding.begin(), padding.end(), 0);
    m_streams.offsets = offsets;
    m_streams.excesses = excesses.first(m_excessCodes.size());
    return true;
}

}  // namespace

bool newLZ_unpack_chunk(const Chunk& chunk, unsigned mode, Bytes payload, ChunkStreams& streams) {
    Log(kLogDetail, "newlz chunk type %d = %s [%d->%d]\n", static_cast<int>(mode), LiteralModeName(mode),
        static_cast<int>(payload.size()), static_cast<int>(chunk.rawLen));
    if (!Check(chunk.rawLen >= kLeastLzChunk, "OODLE ERROR : corruption : chunk_len >= 128\n")) return false;
    if (!Check(chunk.scratch.size() >= KrakenChunkScratch(chunk.rawLen),
               "OODLE ERROR : decoder scratch too small\n")) {
        return false;
    }
    if (mode > static_cast<unsigned>(LiteralMode::Raw)) return false;
    streams = {};
    streams.mode = static_cast<LiteralMode>(mode);
    return Unpacker(chunk, payload, streams).Run();
}

}  // namespace oo2
