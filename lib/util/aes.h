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

// A key that is set up once for any number of calls. Its memory is wiped when the object ends.
class AesKey {
  public:
    // key: keyLength bytes, which are not needed afterwards. Unless there are 16, 24 or 32 of them (AES-128,
    // -192, -256), AesDecrypt refuses the key.
    AesKey(const std::uint8_t* key, std::size_t keyLength, AesPath path = AesPath::Automatic);

    // Null if the length is wrong.
    const AesDecryptionKey* Expanded() const { return m_expanded ? &*m_expanded : nullptr; }
    const AesImplementation& Implementation() const { return m_implementation; }

  private:
    const AesImplementation& m_implementation;
    std::optional<AesDecryptionKey> m_expanded;
};

// Decrypts inputLength bytes, every 16-byte block on its own. Returns an AesResult; all lengths are in bytes.
//
// Without paddingLength (null) the output gets inputLength bytes, padding included. With it, the value of the
// last plaintext byte is stored there as soon as that is known, and so many bytes less are written; a value
// over 16, or padding bytes that differ from it, are kAesInvalidPadding. A value of 0 is accepted and removes
// nothing. outputCapacity may then be as small as what is left. When kAesInvalidPadding or a capacity that
// turns out too small ends the call, all blocks but the last have been written.
//
// The output may be the input itself; otherwise the two must not overlap. No pointer needs an alignment. An
// empty input has no last block: it succeeds with no byte read or written and a padding length of 0, and
// callers for which that is no success must check first.
//
// Any thread. Not meant for secrets that others on the machine may not time: on a processor without AES
// instructions the time depends on the data.
int AesDecrypt(const std::uint8_t* input, std::size_t inputLength, const AesKey& key, std::uint8_t* output,
               std::size_t outputCapacity, std::uint32_t* paddingLength);

// The same with a key of keyLength bytes that is set up for this call.
int AesDecrypt(const std::uint8_t* input, std::size_t inputLength, const std::uint8_t* key,
               std::size_t keyLength, std::uint8_t* output, std::size_t outputCapacity,
               std::uint32_t* paddingLength);

}  // namespace orvel::util::data
