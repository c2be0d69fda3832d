// The expanded AES key in the form that decryption uses.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace orvel::util::data {

inline constexpr std::size_t kAesBlockBytes = 16;

// Applies InvMixColumns to count columns, a multiple of four, in place.
using AesInvMixColumns = void (*)(std::uint32_t* columns, std::size_t count);

// The round keys of the equivalent inverse cipher (FIPS-197, 5.3.5) in the order of their use: those of the
// key expansion from last to first, the inner ones passed through InvMixColumns. The memory is wiped when the
// object ends.
class AesDecryptionKey {
  public:
    static bool IsKeyLength(std::size_t bytes) { return bytes == 16 || bytes == 24 || bytes == 32; }

    // key: keyLength bytes; IsKeyLength(keyLength) must hold.
    AesDecryptionKey(const std::uint8_t* key, std::size_t keyLength, AesInvMixColumns invMixColumns);
    ~AesDecryptionKey();
    AesDecryptionKey(const AesDecryptionKey&) = delete;
    AesDecryptionKey& operator=(const AesDecryptionKey&) = delete;

    // 10, 12 or 14. There is one round key more.
    std::size_t rounds() const { return m_rounds; }
    // Four columns of the state. The byte of row r is in bits 8r to 8r+7 of its column.
    const std::uint32_t* roundKey(std::size_t round) const { return &m_words[4 * round]; }

  private:
    static constexpr std::size_t kMostWords = 4 * (14 + 1);

    void expand(const std::uint8_t* key, std::size_t keyWords);

    std::size_t m_rounds;
    // Aligned so that no round key lies across two cache lines.
    alignas(16) std::array<std::uint32_t, kMostWords> m_words;
};

}  // namespace orvel::util::data
