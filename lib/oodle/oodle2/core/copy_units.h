// Copies in whole units, of which the caller may want only the front. SSE2 is there on every target.
#pragma once

#include <cstddef>
#include <cstdint>
#include <emmintrin.h>

namespace oo2 {

inline __m128i Load8(const std::uint8_t* from) {
    return _mm_loadl_epi64(reinterpret_cast<const __m128i*>(from));
}
inline void Store8(std::uint8_t* to, __m128i unit) { _mm_storel_epi64(reinterpret_cast<__m128i*>(to), unit); }

inline void Copy8(std::uint8_t* to, const std::uint8_t* from) { Store8(to, Load8(from)); }

inline void Copy16(std::uint8_t* to, const std::uint8_t* from) {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(to), _mm_loadu_si128(reinterpret_cast<const __m128i*>(from)));
}

// Each byte the sum of two, modulo 256.
inline void Add16(std::uint8_t* to, const std::uint8_t* from, const std::uint8_t* base) {
    const __m128i sum = _mm_add_epi8(_mm_loadu_si128(reinterpret_cast<const __m128i*>(from)),
                                     _mm_loadu_si128(reinterpret_cast<const __m128i*>(base)));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(to), sum);
}

}  // namespace oo2
