// The compressors' names, and sets of compressors for the frame's checks.
#pragma once

#include <cstdint>

#include "oodle/oodle2/core/oodlelzcompressors.h"

namespace oo2 {

// A set has bit 1 << id for each of its compressors.
inline constexpr std::uint32_t kLegacyCompressors = 0x4E7;     // LZH, LZHLW, LZNIB, LZBLW, LZA, LZNA, BitKnit
inline constexpr std::uint32_t kFuzzSafeCompressors = 0x3F10;  // LZB16 and everything from Kraken on
inline constexpr std::uint32_t kNewLzCompressors = 0x3B00;     // Kraken, Mermaid, Selkie, Hydra, Leviathan

constexpr bool IsIn(std::uint32_t set, OodleLZ_Compressor id) {
    return id >= 0 && id < 32 && (set >> id & 1) != 0;
}

constexpr const char* CompressorName(OodleLZ_Compressor id) {
    constexpr const char* kNames[] = {"LZH",  "LZHLW",  "LZNIB",   "None",    "LZB16",  "LZBLW", "LZA",
                                      "LZNA", "Kraken", "Mermaid", "BitKnit", "Selkie", "Hydra", "Leviathan"};
    return id >= 0 && id < OodleLZ_Compressor_Count ? kNames[id] : "invalid";
}

}  // namespace oo2
