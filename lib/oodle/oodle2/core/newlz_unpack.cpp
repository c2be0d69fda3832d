#include "oodle/oodle2/core/newlz_unpack.h"

#include <algorithm>
#include <iterator>

#include "oodle/oodle2/core/newlz_arrays.h"
#include "oodle/oodle2/core/newlz_arrays_huff.h"
#include "oodle/oodle2/core/newlz_offsets.h"
#include "oodle/oodle2/core/oodlebase.h"

namespace oo2 {
namespace {

using Bytes = std::span<const std::uint8_t>;

constexpr std::size_t kLeastLzChunk = 128;
constexpr std::size_t kStreamAlignment = 16;
constexpr std::size_t kPaddingBytes = 64;
constexpr std::size_t kValueSize = sizeof(std::uint32_t);
constexpr unsigned kExcessCountFlag = 0x80;
constexpr unsigned kExcessReservedFlag = 0x40;

const char* LiteralModeName(unsigned mode) {
    constexpr const char* kNames[] = {"sub", "raw", "lamsub", "suband3", "subandf"};
    return mode < std::size(kNames) ? kNames[mode] : "invalid";
}

// The payload of an LZ chunk:
//   8 bytes           only at a window's start: the first raw bytes
//   1 or 2 bytes      optional, if bit 7 of the first is set: the number of excess bytes. Bit 6 is 0;
//                     bits 0 to 5 are the number c; if c is 32 or more, a byte b follows, and the number
//                     is c + 32 * b
//   array             literals
//   array             commands, one byte each
//   array             if its first byte is below 0x80: offset codes in the single form
//   or 1 byte, array  the byte is the offsets' modulus plus 0x7F, the array their codes; if the modulus
//                     is more than 1, a second array has as many low parts
//   array             excess codes
//   the rest          the raw bits of offsets and excesses
class Unpacker {
  public:
    Unpacker(const Chunk& chunk, ChunkStreams& streams)
        : m_chunk(chunk), m_rest(chunk.payload), m_streams(streams), m_scratch(ScratchOf(chunk.context)) {
        m_scratch.batch = &m_batch;
    }

    bool Run() {
        return TakeHead() && TakeExcessCount() && TakeArrays() && m_batch.Run(m_chunk.context.path) &&
               TakeBits();
    }

  private:
    bool TakeHead();
    bool TakeExcessCount();
    bool TakeArrays();
    bool TakeOffsetCodes();
    bool TakeBits();
    bool TakeArray(std::size_t capacity, Bytes& bytes);
    std::uint32_t* RoomForValues(std::size_t offsets, std::size_t excesses) const;

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

// Finds room for the values in what is left of scratch. By the format's rule, offsets and excesses each begin
// at a multiple of 16, and kPaddingBytes follow; null if that does not fit. The real layout takes no more:
// the offsets, most of the padding, and at once the excesses.
std::uint32_t* Unpacker::RoomForValues(std::size_t offsets, std::size_t excesses) const {
    static_assert((kOffsetPadding + kExcessPadding) * kValueSize == kPaddingBytes);
    const auto next = reinterpret_cast<std::uintptr_t>(m_scratch.next);
    const std::size_t before = (0 - next) % kStreamAlignment;
    const std::size_t between = (0 - offsets * kValueSize) % kStreamAlignment;
    const std::size_t needed = before + (offsets + excesses) * kValueSize + between + kPaddingBytes;
    if (needed > m_scratch.Left()) return nullptr;
    return reinterpret_cast<std::uint32_t*>(m_scratch.next + before);
}

bool Unpacker::TakeBits() {
    const std::size_t offsetCount = m_offsetCodes.codes.size();
    const std::size_t excessCount = m_excessCodes.size();
    std::uint32_t* const room = RoomForValues(offsetCount, excessCount);
    if (!Check(room != nullptr, "OODLE ERROR : newlz scratch overflow\n")) return false;
    const std::span<std::uint32_t> offsets(room, offsetCount);
    const std::span<std::uint32_t> excesses(room + offsetCount + kOffsetPadding, excessCount);
    if (!newLZ_get_offsets_excesses(m_rest, m_excessBytes, m_offsetCodes, m_excessCodes, offsets, excesses)) {
        Log(kLogDetail, "newlz newLZ_get_offsets_excesses error\n");
        return false;
    }
    std::fill_n(offsets.data() + offsetCount, kOffsetPadding, 0);
    std::fill_n(excesses.data() + excessCount, kExcessPadding, 0);
    m_streams.offsets = offsets;
    m_streams.excesses = excesses;
    return true;
}

}  // namespace

bool newLZ_unpack_chunk(const Chunk& chunk, ChunkStreams& streams) {
    const unsigned mode = chunk.literalMode;
    Log(kLogDetail, "newlz chunk type %d = %s [%d->%d]\n", static_cast<int>(mode), LiteralModeName(mode),
        static_cast<int>(chunk.payload.size()), static_cast<int>(chunk.rawLen));
    if (!Check(chunk.rawLen >= kLeastLzChunk, "OODLE ERROR : corruption : chunk_len >= 128\n")) return false;
    if (!Check(chunk.context.scratch.size() >= KrakenChunkScratch(chunk.rawLen),
               "OODLE ERROR : decoder scratch too small\n")) {
        return false;
    }
    if (mode > static_cast<unsigned>(LiteralMode::Raw)) return false;
    streams = {};
    streams.mode = static_cast<LiteralMode>(mode);
    return Unpacker(chunk, streams).Run();
}

}  // namespace oo2
