// AES decryption (FIPS-197) in electronic codebook mode, with optional removal of PKCS#7 padding.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

#include "util/aes/aes-decryption-key.h"
#include "util/aes/aes-paths.h"

namespace orvel::util::data {

// What AesDecrypt returns.
enum AesResult : int {
    kAesSuccess = 0,
    kAesBadInputLength = 1,  // not a multiple of 16
    kAesBadKeyLength = 2,    // not 16, 24 or 32
    kAesOutputTooSmall = 3,
    kAesInvalidPadding = 4,
};

// A key, set up once for any number of calls. Its memory is wiped when the object ends.
class AesKey {
  public:
    // key: keyLength bytes, not needed afterwards. AesDecrypt refuses a key that has not 16, 24 or 32 bytes
    // (AES-128, -192, -256).
    AesKey(const std::uint8_t* key, std::size_t keyLength, AesPath path = AesPath::Automatic);

    // Null if the key's length is wrong.
    const AesDecryptionKey* Expanded() const { return m_expanded ? &*m_expanded : nullptr; }
    const AesImplementation& Implementation() const { return m_implementation; }

  private:
    const AesImplementation& m_implementation;
    std::optional<AesDecryptionKey> m_expanded;
};

// Decrypts inputLength bytes, each 16-byte block on its own. Returns an AesResult. All lengths are in bytes.
//
// With a null paddingLength the output gets inputLength bytes, padding included. Otherwise *paddingLength
// gets the value of the last plaintext byte, and the output gets that many bytes less. A value over 16, or
// padding bytes that differ from it, are kAesInvalidPadding. A value of 0 is accepted and removes nothing.
// outputCapacity may be as small as what remains. If the call ends with kAesInvalidPadding, or with a
// capacity that is too small for what remains, all blocks but the last have been written.
//
// The output may be the input itself; otherwise the two must not overlap. No pointer needs an alignment. An
// empty input has no last block: the call succeeds, touches no byte and sets the padding length to 0. Callers
// for whom that is no success must check first.
//
// Any thread. Not for secrets that others on the machine could find out by measuring time: without AES
// instructions the time depends on the data.
int AesDecrypt(const std::uint8_t* input, std::size_t inputLength, const AesKey& key, std::uint8_t* output,
               std::size_t outputCapacity, std::uint32_t* paddingLength);

// The same with a key of keyLength bytes, set up for this call.
int AesDecrypt(const std::uint8_t* input, std::size_t inputLength, const std::uint8_t* key,
               std::size_t keyLength, std::uint8_t* output, std::size_t outputCapacity,
               std::uint32_t* paddingLength);

}  // namespace orvel::util::data
