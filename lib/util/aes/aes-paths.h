// The two implementations behind AesDecrypt. AesDecrypt chooses one; tests and benchmarks name one.
#pragma once

#include <cstddef>
#include <cstdint>

#include "util/aes/aes-decryption-key.h"

namespace orvel::util::data {

enum class AesPath {
    Automatic,  // AesNi where the processor has it
    Table,      // plain C++, for any processor
    AesNi,      // x86's AES instructions; only if AesNiAvailable()
};

// Whether this processor has the AES instructions. Any thread; costs one load from memory.
bool AesNiAvailable();

// The functions of one path. decryptBlocks decrypts blockCount 16-byte blocks from input to output, which are
// the same or do not overlap.
struct AesImplementation {
    AesInvMixColumns invMixColumns;
    void (*decryptBlocks)(const AesDecryptionKey& key, const std::uint8_t* input, std::size_t blockCount,
                          std::uint8_t* output);
};

extern const AesImplementation kAesTableImplementation;
extern const AesImplementation kAesNiImplementation;

}  // namespace orvel::util::data
