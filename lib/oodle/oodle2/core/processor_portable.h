// The portable forms of processor.h.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace oo2 {

template <std::size_t kBytes>
std::array<std::uint8_t, kBytes> LoadUnit(const std::uint8_t* from) {
    std::array<std::uint8_t, kBytes> unit;
    std::memcpy(unit.data(), from, kBytes);
    return unit;
}

template <std::size_t kBytes>
void CopyUnit(std::uint8_t* to, const std::uint8_t* from) {
    const auto unit = LoadUnit<kBytes>(from);
    std::memcpy(to, unit.data(), kBytes);
}

inline void Copy8(std::uint8_t* to, const std::uint8_t* from) { CopyUnit<8>(to, from); }
inline void Copy16(std::uint8_t* to, const std::uint8_t* from) { CopyUnit<16>(to, from); }

// Each byte becomes the sum of two bytes, modulo 256.
inline void Add16(std::uint8_t* to, const std::uint8_t* from, const std::uint8_t* base) {
    auto sum = LoadUnit<16>(from);
    const auto addend = LoadUnit<16>(base);
    for (std::size_t i = 0; i < sum.size(); ++i) sum[i] = static_cast<std::uint8_t>(sum[i] + addend[i]);
    std::memcpy(to, sum.data(), sum.size());
}

// Conditional moves with a mask of ones or zeros: no compiler makes branches of them.
template <std::uint32_t kLimit>
void MoveIfAtLeast(std::uint32_t value, std::uint32_t& to, std::uint32_t from) {
    const std::uint32_t mask = 0u - static_cast<std::uint32_t>(value >= kLimit);
    to ^= (to ^ from) & mask;
}
template <std::uint32_t kLimit>
void SwapIfAtLeast(std::uint32_t value, std::uint32_t& a, std::uint32_t& b) {
    const std::uint32_t mask = 0u - static_cast<std::uint32_t>(value >= kLimit);
    const std::uint32_t difference = (a ^ b) & mask;
    a ^= difference;
    b ^= difference;
}

}  // namespace oo2
