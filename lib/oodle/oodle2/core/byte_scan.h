// Counts and searches in byte arrays, in rounds of fixed length, which the compiler turns into vector code.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>

namespace oo2 {

inline constexpr std::size_t kScanRound = 128;

// Counts the bytes for which `is` is true. A round's count fits into a byte, so the compiler can count 16 at
// once.
template <typename Predicate>
std::size_t CountBytes(std::span<const std::uint8_t> bytes, Predicate is) {
    static_assert(kScanRound <= 255);
    std::size_t count = 0;
    for (; bytes.size() >= kScanRound; bytes = bytes.subspan(kScanRound)) {
        std::uint8_t inRound = 0;
        for (std::size_t i = 0; i < kScanRound; ++i)
            inRound = static_cast<std::uint8_t>(inRound + is(bytes[i]));
        count += inRound;
    }
    for (const std::uint8_t byte : bytes) count += is(byte);
    return count;
}

// 0 if there are no bytes.
inline std::uint8_t HighestByte(std::span<const std::uint8_t> bytes) {
    std::uint8_t highest = 0;
    for (; bytes.size() >= kScanRound; bytes = bytes.subspan(kScanRound)) {
        for (std::size_t i = 0; i < kScanRound; ++i) highest = std::max(highest, bytes[i]);
    }
    for (const std::uint8_t byte : bytes) highest = std::max(highest, byte);
    return highest;
}

}  // namespace oo2
