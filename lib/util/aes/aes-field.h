// AES arithmetic in GF(2^8) and the tables made from it, computed by the compiler.
//
// A column of the state is a 32-bit word with the byte of row r in bits 8r to 8r+7, on every processor.
#pragma once

#include <array>
#include <bit>
#include <cstdint>

namespace orvel::util::data {

// Each of the four bytes multiplied by x modulo x^8 + x^4 + x^3 + x + 1 (FIPS-197, 4.2.1).
constexpr std::uint32_t AesTimes2(std::uint32_t bytes) {
    const std::uint32_t carries = (bytes >> 7) & 0x01010101u;
    return ((bytes & 0x7f7f7f7fu) << 1) ^ (carries * 0x1bu);
}

// The column times {0b}x^3 + {0d}x^2 + {09}x + {0e} (FIPS-197, 5.3.3).
constexpr std::uint32_t AesInvMixColumn(std::uint32_t column) {
    const std::uint32_t times2 = AesTimes2(column);
    const std::uint32_t times4 = AesTimes2(times2);
    const std::uint32_t times8 = AesTimes2(times4);
    const std::uint32_t times9 = times8 ^ column;
    return (times8 ^ times4 ^ times2) ^ std::rotr(times9 ^ times2, 8) ^ std::rotr(times9 ^ times4, 16) ^
           std::rotr(times9, 24);
}

// FIPS-197, 5.1.1: the multiplicative inverse, then an affine map over the bits.
constexpr std::array<std::uint8_t, 256> MakeAesSBox() {
    // The powers of the generator 3 are all field elements but 0; the inverse of 3^i is 3^(255-i).
    std::array<std::uint8_t, 256> powers{};
    std::uint32_t power = 1;
    for (std::uint8_t& entry : powers) {
        entry = static_cast<std::uint8_t>(power);
        power ^= AesTimes2(power);
    }
    std::array<std::uint8_t, 256> sBox{0x63};
    for (std::size_t i = 0; i < 255; ++i) {
        const std::uint8_t inverse = powers[255 - i];
        sBox[powers[i]] = static_cast<std::uint8_t>(inverse ^ std::rotl(inverse, 1) ^ std::rotl(inverse, 2) ^
                                                    std::rotl(inverse, 3) ^ std::rotl(inverse, 4) ^ 0x63);
    }
    return sBox;
}

inline constexpr std::array<std::uint8_t, 256> kAesSBox = MakeAesSBox();

constexpr std::array<std::uint8_t, 256> MakeAesInverseSBox() {
    std::array<std::uint8_t, 256> inverse{};
    for (std::size_t i = 0; i < 256; ++i) inverse[kAesSBox[i]] = static_cast<std::uint8_t>(i);
    return inverse;
}

inline constexpr std::array<std::uint8_t, 256> kAesInverseSBox = MakeAesInverseSBox();

// Replaces each of the four bytes by its entry in the S-box.
constexpr std::uint32_t AesSubWord(const std::array<std::uint8_t, 256>& sBox, std::uint32_t word) {
    return sBox[word & 0xff] | std::uint32_t{sBox[(word >> 8) & 0xff]} << 8 |
           std::uint32_t{sBox[(word >> 16) & 0xff]} << 16 | std::uint32_t{sBox[word >> 24]} << 24;
}

// A column is loaded from memory as a little-endian word, and stored as one.
constexpr void AesStoreColumn(std::uint32_t column, std::uint8_t* bytes) {
    for (unsigned row = 0; row < 4; ++row) bytes[row] = static_cast<std::uint8_t>(column >> (8 * row));
}

}  // namespace orvel::util::data
