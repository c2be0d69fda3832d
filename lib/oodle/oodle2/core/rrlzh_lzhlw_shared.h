// Reads block and quantum headers. A reader looks at 16 bytes at most, and never past the stream's end.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

#include "oodle/oodle2/core/oodlelzcompressors.h"

namespace oo2 {

// The raw bytes of one quantum: a whole block for the new compressors, 16 KiB for the others.
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
    std::uint8_t decodeType = 0;  // a DecodeType, or a number that has none
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

// Reads the header of a block. The stream must have at least BlockHeader::kSize bytes left. Nothing if there
// is no such header.
std::optional<BlockHeader> ReadBlockHeader(std::span<const std::uint8_t> in);

// The compressor of a decode type; OodleLZ_Compressor_Invalid if there is none.
OodleLZ_Compressor CompressorOf(const BlockHeader& header);

// Whether the quanta of a decode type have long headers and cover a whole block.
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
    std::size_t compLen = 0;     // bytes of payload behind the header; 0 for Memset and WholeMatch
    std::uint64_t distance = 0;  // WholeMatch: how far back it reaches, in bytes
};

enum class HeaderStatus { Ok, NeedMore, UnusedSpecial, NumberTooLarge };

// Reads the header of a quantum of rawLen bytes in this block.
HeaderStatus ReadQuantumHeader(std::span<const std::uint8_t> in, const BlockHeader& block, std::size_t rawLen,
                               QuantumHeader& header);

}  // namespace oo2
