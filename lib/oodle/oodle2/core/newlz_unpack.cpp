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
        : chunk_(chunk), rest_(payload), streams_(streams) {
        scratch_.next = chunk.scratch.data();
        scratch_.end = chunk.scratch.data() + chunk.scratch.size();
        scratch_.path = chunk.path;
        scratch_.batch = &batch_;
    }

    bool Run() {
        return TakeHead() && TakeExcessCount() && TakeArrays() && batch_.Run(chunk_.path) && TakeBits();
    }

  private:
    bool TakeHead();
    bool TakeExcessCount();
    bool TakeArrays();
    bool TakeOffsetCodes();
    bool TakeBits();
    bool TakeArray(std::size_t capacity, Bytes& bytes);
    std::span<std::uint32_t> Allocate(std::size_t count);

    const Chunk& chunk_;
    Bytes rest_;
    ChunkStreams& streams_;
    ArrayScratch scratch_;
    HuffBatch batch_;
    std::ptrdiff_t excessBytes_ = -1;  // not sent
    OffsetCodes offsetCodes_;
    Bytes excessCodes_;
};

bool Unpacker::TakeHead() {
    if (!chunk_.StartsWindow()) return true;
    if (rest_.size() < kHeadLen) return false;
    streams_.head = rest_.first(kHeadLen);
    rest_ = rest_.subspan(kHeadLen);
    return true;
}

bool Unpacker::TakeExcessCount() {
    if (rest_.empty() || (rest_[0] & kExcessCountFlag) == 0) return true;
    if (!Check((rest_[0] & kExcessReservedFlag) == 0,
               "OODLE ERROR : corruption : excess reserved flag bit nonzero\n")) {
        return false;
    }
    excessBytes_ = rest_[0] & 0x3F;
    rest_ = rest_.subspan(1);
    if (excessBytes_ >= 32) {
        if (!Check(!rest_.empty(), "OODLE ERROR : corruption : truncated excess byte count\n")) return false;
        excessBytes_ += 32 * rest_[0];
        rest_ = rest_.subspan(1);
    }
    return true;
}

bool Unpacker::TakeArray(std::size_t capacity, Bytes& bytes) {
    const auto array = newLZ_get_array(rest_, nullptr, capacity, scratch_);
    if (!array) return false;
    bytes = array->bytes;
    rest_ = rest_.subspan(array->compUsed);
    return true;
}

bool Unpacker::TakeOffsetCodes() {
    if (rest_.empty()) return false;
    if (rest_[0] < 0x80) return TakeArray(streams_.commands.size(), offsetCodes_.codes);
    offsetCodes_.modulus = rest_[0] - 0x7Fu;
    rest_ = rest_.subspan(1);
    if (!TakeArray(streams_.commands.size(), offsetCodes_.codes)) return false;
    if (offsetCodes_.modulus == 1) return true;
    return TakeArray(streams_.commands.size(), offsetCodes_.lowParts) &&
           Check(offsetCodes_.codes.size() == offsetCodes_.lowParts.size(),
                 "OODLE ERROR : corruption : offsets_count == offsets_count_2\n");
}

bool Unpacker::TakeArrays() {
    return TakeArray(chunk_.rawLen, streams_.literals) && TakeArray(chunk_.rawLen, streams_.commands) &&
           TakeOffsetCodes() && TakeArray(chunk_.rawLen / 4, excessCodes_);
}

// 32-bit values in scratch, from its next multiple of 16 on; less of them if it is full.
std::span<std::uint32_t> Unpacker::Allocate(std::size_t count) {
    const std::size_t padding = (0 - reinterpret_cast<std::uintptr_t>(scratch_.next)) % kStreamAlignment;
    if (padding > scratch_.Left() || count > (scratch_.Left() - padding) / sizeof(std::uint32_t)) return {};
    auto* const begin = reinterpret_cast<std::uint32_t*>(scratch_.next + padding);
    scratch_.next += padding + count * sizeof(std::uint32_t);
    return {begin, count};
}

bool Unpacker::TakeBits() {
    const std::span<std::uint32_t> offsets = Allocate(offsetCodes_.codes.size());
    const std::span<std::uint32_t> excesses = Allocate(excessCodes_.size() + kExcessPadding);
    if (!Check(offsets.size() == offsetCodes_.codes.size() && !excesses.empty(),
               "OODLE ERROR : newlz scratch overflow\n")) {
        return false;
    }
    if (!newLZ_get_offsets_excesses(rest_, excessBytes_, offsetCodes_, excessCodes_, offsets,
                                    excesses.first(excessCodes_.size()))) {
        Log(kLogDetail, "newlz newLZ_get_offsets_excesses error\n");
        return false;
    }
    const std::span<std::uint32_t> padding = excesses.last(kExcessPadding);
    std::fill(padding.begin(), padding.end(), 0);
    streams_.offsets = offsets;
    streams_.excesses = excesses.first(excessCodes_.size());
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
