// AES decryption with the AES instructions of x86. Only the functions marked so are compiled for these
// instructions; the rest of the program runs without them.
#include "util/aes/aes-paths.h"

#if defined(__x86_64__) || defined(__i386__)

#include <immintrin.h>

namespace orvel::util::data {
namespace {

// An aesdec takes 4 to 8 cycles, and the processor starts one or two per cycle, so several blocks advance
// side by side. With 16 registers eight blocks are 4 to 7 % faster than four (1 to 16 KiB, AES-256). With the
// 8 registers of 32-bit x86, four to seven blocks are equal, and eight no longer fit: 20 % slower. (Zen 5,
// GCC 12)
constexpr std::size_t kGroupBlocks = sizeof(void*) == 8 ? 8 : 4;

[[gnu::target("aes,sse2")]] inline __m128i RoundKey(const AesDecryptionKey& key, std::size_t round) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(key.roundKey(round)));
}

template <std::size_t blocks>
[[gnu::target("aes,sse2")]] inline void DecryptGroup(const AesDecryptionKey& key, const std::uint8_t* input,
                                                     std::uint8_t* output) {
    const auto* in = reinterpret_cast<const __m128i*>(input);
    auto* out = reinterpret_cast<__m128i*>(output);
    __m128i state[blocks];
    __m128i roundKey = RoundKey(key, 0);
#pragma GCC unroll 8
    for (std::size_t i = 0; i < blocks; ++i) state[i] = _mm_xor_si128(_mm_loadu_si128(in + i), roundKey);
    for (std::size_t round = 1; round < key.rounds(); ++round) {
        roundKey = RoundKey(key, round);
#pragma GCC unroll 8
        for (std::size_t i = 0; i < blocks; ++i) state[i] = _mm_aesdec_si128(state[i], roundKey);
    }
    roundKey = RoundKey(key, key.rounds());
#pragma GCC unroll 8
    for (std::size_t i = 0; i < blocks; ++i) {
        _mm_storeu_si128(out + i, _mm_aesdeclast_si128(state[i], roundKey));
    }
}

// Decrypts groups of this size while there are enough blocks, then smaller groups.
template <std::size_t blocks>
[[gnu::target("aes,sse2")]] void DecryptGroups(const AesDecryptionKey& key, const std::uint8_t* input,
                                               std::size_t blockCount, std::uint8_t* output) {
    for (; blockCount >= blocks; blockCount -= blocks) {
        DecryptGroup<blocks>(key, input, output);
        input += blocks * kAesBlockBytes;
        output += blocks * kAesBlockBytes;
    }
    if constexpr (blocks > 1) DecryptGroups<blocks / 2>(key, input, blockCount, output);
}

[[gnu::target("aes,sse2")]] void InvMixColumns(std::uint32_t* columns, std::size_t count) {
    for (std::size_t i = 0; i < count; i += 4) {
        auto* const block = reinterpret_cast<__m128i*>(columns + i);
        _mm_storeu_si128(block, _mm_aesimc_si128(_mm_loadu_si128(block)));
    }
}

}  // namespace

bool AesNiAvailable() { return __builtin_cpu_supports("aes") && __builtin_cpu_supports("sse2"); }

constinit const AesImplementation kAesNiImplementation{InvMixColumns, DecryptGroups<kGroupBlocks>};

}  // namespace orvel::util::data

#else

namespace orvel::util::data {

bool AesNiAvailable() { return false; }

constinit const AesImplementation kAesNiImplementation{};

}  // namespace orvel::util::data

#endif
