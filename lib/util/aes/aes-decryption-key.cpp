// FIPS-197 key expansion, and the wiping of its result.
#include "util/aes/aes-decryption-key.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include "util/aes/aes-field.h"
#include "util/byte-order.h"

namespace orvel::util::data {

AesDecryptionKey::AesDecryptionKey(const std::uint8_t* key, std::size_t keyLength,
                                   AesInvMixColumns invMixColumns)
    : m_rounds(keyLength / 4 + 6) {
    expand(key, keyLength / 4);
    for (std::size_t first = 0, last = 4 * m_rounds; first < last; first += 4, last -= 4) {
        std::swap_ranges(&m_words[first], &m_words[first] + 4, &m_words[last]);
    }
    invMixColumns(&m_words[4], 4 * (m_rounds - 1));
}

AesDecryptionKey::~AesDecryptionKey() {
    std::memset(m_words.data(), 0, sizeof m_words);
    // For the compiler this line may read the words, so it cannot leave the line above out.
    __asm__ __volatile__("" : : "r"(m_words.data()) : "memory");
}

// FIPS-197, 5.2.
void AesDecryptionKey::expand(const std::uint8_t* key, std::size_t keyWords) {
    for (std::size_t i = 0; i < keyWords; ++i) m_words[i] = LoadLittleEndian<std::uint32_t>(key + 4 * i);
    std::uint32_t roundConstant = 1;
    std::size_t inPeriod = 0;  // the word's index modulo keyWords
    std::uint32_t word = m_words[keyWords - 1];
    for (std::size_t i = keyWords; i < 4 * (m_rounds + 1); ++i) {
        if (inPeriod == 0) {
            word = AesSubWord(kAesSBox, std::rotr(word, 8)) ^ roundConstant;
            roundConstant = AesTimes2(roundConstant);
        } else if (keyWords == 8 && inPeriod == 4) {
            word = AesSubWord(kAesSBox, word);
        }
        word ^= m_words[i - keyWords];
        m_words[i] = word;
        if (++inPeriod == keyWords) inPeriod = 0;
    }
}

}  // namespace orvel::util::data
