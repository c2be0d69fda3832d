// Loads numbers from bytes. All code uses these functions, but the LZ decoder, which stands alone.
#pragma once

#include <bit>
#include <concepts>
#include <cstring>

namespace orvel::util {

// The number with its bytes in the other order.
template <std::unsigned_integral Word>
constexpr Word ReverseBytes(Word word) {
    if constexpr (sizeof(Word) == 8) return __builtin_bswap64(word);
    if constexpr (sizeof(Word) == 4) return __builtin_bswap32(word);
    if constexpr (sizeof(Word) == 2) return __builtin_bswap16(word);
    return word;
}

// Loads sizeof(Word) bytes from any address.
template <std::unsigned_integral Word>
Word LoadLittleEndian(const void* bytes) {
    Word word;
    std::memcpy(&word, bytes, sizeof word);
    return std::endian::native == std::endian::little ? word : ReverseBytes(word);
}

template <std::unsigned_integral Word>
Word LoadBigEndian(const void* bytes) {
    return ReverseBytes(LoadLittleEndian<Word>(bytes));
}

}  // namespace orvel::util
