// The readers of block and quantum headers. They look at 16 bytes at most, and at none past the stream's end.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

#include "oodle/oodle2/core/oodlelzcompressors.h"

namespace oo2 {

// Raw bytes that one quantum covers: a whole block for the new compressors, 16 KiB for the others.
inline constexpr std::size_t kLongQuantumRawLen = 0x40000;
inline constexpr std::size_t kShortQuantumRawLen = 0x4000;

// A block header, 2 bytes:
//   byte 0   bits 0-3  12 (anything else: an older, one-byte header)
//            bits 4-5  version, 0
//            bit  6    memcpy: the block's raw bytes follow as they are
//            bit  7    reset: no match reaches back before this block
//   byte 1   bits 0-6  decode type
//            bit  7    the block's quanta carry check values
struct BlockHeader {
    std::uint8_t decodeType = 0;  // a DecodeType, if there is one with this number
    bool memcpy = false;
    bool reset = false;
    bool checks = false;

    static constexpr std::size_t kSize = 2;
};

enum DecodeType : std::uint8_t {
    kDecodeLzhlw = 0,
    kDecodeLznib = 1,
    kDecodeLzb16 = 2,
    kDecodeLzblw = 3,
    kDecodeLza = 4,
    kDecodeLzna = 5,
    kDecodeKraken = 6,
    kDecodeLzh = 7,  // also sent as 8 or 9
    kDecodeMermaid = 10,
    kDecodeBitKnit = 11,
    kDecodeLeviathan = 12,
};

// Reads the header of a block from a stream that has at least BlockHeader::kSize bytes left; nothing if there
// is no such header.
std::optional<BlockHeader> ReadBlockHeader(std::span<const std::uint8_t> in);

// The compressor that a decode type stands for; OodleLZ_Compressor_Invalid if none.
OodleLZ_Compressor CompressorOf(const BlockHeader& header);

// Whether a decode type's quanta have the long header and cover a whole block.
constexpr bool HasLongQuanta(std::uint8_t decodeType) {
    return decodeType == kDecodeKraken || decodeType == kDecodeMermaid || decodeType == kDecodeLeviathan;
}

enum class QuantumKind : std::uint8_t { Coded, Stored, Memset, WholeMatch };

struct QuantumHeader {
    QuantumKind kind = QuantumKind::Coded;
    std::uint8_t size = 0;  // bytes of the header itself
    std::uint8_t fill = 0;  // Memset: the byte
    bool hasCheck = false;  // checkValue was sent
    std::uint32_t checkValue = 0;
    std::size_t compLen = 0;     // bytes of payload after the header; 0 for Memset and WholeMatch
    std::uint64_t distance = 0;  // WholeMatch: how far back it reaches, in bytes
};

enum class HeaderStatus { Ok, NeedMore, UnusedSpecial, NumberTooLarge };

// Reads the header of a quantum of rawLen bytes in a block of that header.
HeaderStatus ReadQuantumHeader(std::span<const std::uint8_t> in, const BlockHeader& block, std::size_t rawLen,
                               QuantumHeader& header);

}  // namespace oo2
