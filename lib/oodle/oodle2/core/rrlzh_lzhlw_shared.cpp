#include "oodle/oodle2/core/rrlzh_lzhlw_shared.h"

#include <algorithm>
#include <array>

namespace oo2 {
namespace {

constexpr std::size_t kMaxHeaderBytes = 16;
constexpr std::size_t kCheckValueSize = 3;
constexpr unsigned kMaxDistanceGroups = 5;

// The meaning of the three special codes of a quantum header.
enum SpecialQuantum : std::uint32_t { kSpecialWholeMatch = 0, kSpecialMemset = 1, kSpecialStored = 2 };

// Takes big-endian numbers from the front of a header. IsShort tells whether a number did not fit.
class HeaderBytes {
  public:
    explicit HeaderBytes(std::span<const std::uint8_t> in)
        : m_in(in.first(std::min(in.size(), kMaxHeaderBytes))) {}

    std::uint32_t Take(std::size_t count) {
        if (m_in.size() - m_used < count) {
            m_short = true;
            return 0;
        }
        std::uint32_t value = 0;
        for (; count > 0; --count) value = value << 8 | m_in[m_used++];
        return value;
    }

    bool IsShort() const { return m_short; }
    std::uint8_t Used() const { return static_cast<std::uint8_t>(m_used); }

  private:
    std::span<const std::uint8_t> m_in;
    std::size_t m_used = 0;
    bool m_short = false;
};

// The number of a whole match, which is its distance less 1:
//   2 bytes big-endian u   with bit 15 set: the number is u - 0x8000
//                          otherwise 7-bit groups follow, lowest first; bit 7 marks the last one. A group
//                          that is not the last counts 0x80 more than its bits, so no number has two
//                          forms. The number is (sum of the groups << 15) + u + 0x8000.
HeaderStatus TakeDistanceLessOne(HeaderBytes& bytes, std::uint64_t& number) {
    number = bytes.Take(2);
    if (number >= 0x8000) {
        number -= 0x8000;
        return HeaderStatus::Ok;
    }
    std::uint64_t sum = 0;
    for (unsigned group = 0; group < kMaxDistanceGroups; ++group) {
        const std::uint64_t byte = bytes.Take(1);
        if (bytes.IsShort()) return HeaderStatus::NeedMore;
        sum += (byte ^ 0x80) << (7 * group);
        if (byte >= 0x80) {
            number += (sum << 15) + 0x8000;
            return HeaderStatus::Ok;
        }
    }
    return HeaderStatus::NumberTooLarge;
}

HeaderStatus TakeSpecial(std::uint32_t code, HeaderBytes& bytes, std::size_t rawLen, QuantumHeader& header) {
    switch (code) {
        case kSpecialWholeMatch: {
            header.kind = QuantumKind::WholeMatch;
            const HeaderStatus status = TakeDistanceLessOne(bytes, header.distance);
            ++header.distance;
            return status;
        }
        case kSpecialMemset:
            header.kind = QuantumKind::Memset;
            header.fill = static_cast<std::uint8_t>(bytes.Take(1));
            return HeaderStatus::Ok;
        case kSpecialStored:
            header.kind = QuantumKind::Stored;
            header.compLen = rawLen;
            return HeaderStatus::Ok;
        default:
            return HeaderStatus::UnusedSpecial;
    }
}

// An older header, as far as needed: all compressors that it can name are refused. Its low two bits are the
// kind. Kinds 0 and 1 mean LZH. Kind 2 carries one of the first eight decode types, but not LZB16 or Kraken.
std::optional<BlockHeader> ReadOlderHeader(std::uint8_t byte) {
    const unsigned kind = byte & 3;
    BlockHeader header;
    header.decodeType = kDecodeLzh;
    if (kind == 2) {
        header.decodeType = byte >> 4;
        if (!Check(header.decodeType <= kDecodeLzh, "OODLE ERROR : invalid V3 decodetype\n"))
            return std::nullopt;
    }
    if (kind == 3 || header.decodeType == kDecodeLzb16 || header.decodeType == kDecodeKraken)
        return std::nullopt;
    return header;
}

}  // namespace

std::optional<BlockHeader> ReadBlockHeader(std::span<const std::uint8_t> in) {
    if ((in[0] & 0x0F) != 0x0C) return ReadOlderHeader(in[0]);
    if ((in[0] & 0x30) != 0) return std::nullopt;
    BlockHeader header;
    header.memcpy = (in[0] & 0x40) != 0;
    header.reset = (in[0] & 0x80) != 0;
    header.decodeType = in[1] & 0x7F;
    header.checks = (in[1] & 0x80) != 0;
    if (header.decodeType > kDecodeLeviathan) return std::nullopt;
    if (header.decodeType > kDecodeLzh && header.decodeType < kDecodeMermaid) header.decodeType = kDecodeLzh;
    return header;
}

OodleLZ_Compressor CompressorOf(const BlockHeader& header) {
    switch (header.decodeType) {
        case kDecodeLzhlw:
            return OodleLZ_Compressor_LZHLW;
        case kDecodeLznib:
            return OodleLZ_Compressor_LZNIB;
        case kDecodeLzb16:
            return OodleLZ_Compressor_LZB16;
        case kDecodeLzblw:
            return OodleLZ_Compressor_LZBLW;
        case kDecodeLza:
            return OodleLZ_Compressor_LZA;
        case kDecodeLzna:
            return OodleLZ_Compressor_LZNA;
        case kDecodeKraken:
            return OodleLZ_Compressor_Kraken;
        case kDecodeLzh:
            return OodleLZ_Compressor_LZH;
        case kDecodeMermaid:
            return OodleLZ_Compressor_Mermaid;
        case kDecodeBitKnit:
            return OodleLZ_Compressor_BitKnit;
        case kDecodeLeviathan:
            return OodleLZ_Compressor_Leviathan;
        default:
            return OodleLZ_Compressor_Invalid;
    }
}

// A quantum header, big-endian: a length and, in the bits above it, flags or a code. The long form has 3
// bytes and a length of 18 bits, the short form 2 bytes and 14 bits.
//   largest length    the code tells a special quantum: 0 whole match, its distance follows; 1 memset, its
//                     byte follows; 2 stored; there are no others
//   any other length  the payload's bytes less 1; the bits above are flags without meaning here
//   then              3 bytes, the check value: for coded and stored quanta of a block with check values
HeaderStatus ReadQuantumHeader(std::span<const std::uint8_t> in, const BlockHeader& block, std::size_t rawLen,
                               QuantumHeader& header) {
    header = {};
    const bool isLong = HasLongQuanta(block.decodeType);
    const unsigned lengthBits = isLong ? 18 : 14;
    const std::uint32_t lengthMask = (1u << lengthBits) - 1;
    HeaderBytes bytes(in);
    const std::uint32_t word = bytes.Take(isLong ? 3 : 2);
    if (bytes.IsShort()) return HeaderStatus::NeedMore;

    if ((word & lengthMask) != lengthMask) {
        header.compLen = (word & lengthMask) + 1;
    } else {
        const HeaderStatus status = TakeSpecial(word >> lengthBits, bytes, rawLen, header);
        if (status != HeaderStatus::Ok) return status;
    }
    if (header.compLen != 0 && block.checks) {
        header.checkValue = bytes.Take(kCheckValueSize);
        header.hasCheck = true;
    }
    header.size = bytes.Used();
    if (header.kind == QuantumKind::Coded && header.compLen == rawLen) header.kind = QuantumKind::Stored;
    return bytes.IsShort() ? HeaderStatus::NeedMore : HeaderStatus::Ok;
}

}  // namespace oo2
