// The raw bits that end an LZ chunk's payload. They complete the offset codes and the excess codes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace oo2 {

struct OffsetCodes {
    std::span<const std::uint8_t> codes;
    std::span<const std::uint8_t> lowParts;  // one for each code if modulus > 1
    unsigned modulus = 0;                    // 0: the single form
};

// Stands for offsets over 32 bits; never valid, since it reaches before every window.
inline constexpr std::uint32_t kOffsetTooFar = 0xFFFFFFFF;

// Turns offset and excess codes with their raw bits into values. `excessBytes`: the length of the section for
// long excesses if it was sent, else negative. `offsets` and `excesses` have the lengths of their codes.
bool newLZ_get_offsets_excesses(std::span<const std::uint8_t> bits, std::ptrdiff_t excessBytes,
                                const OffsetCodes& codes, std::span<const std::uint8_t> excessCodes,
                                std::span<std::uint32_t> offsets, std::span<std::uint32_t> excesses);

}  // namespace oo2
