// What is done to the bytes of a chunk payload after they are read: decryption and decompression.
#pragma once

#include <cstdint>
#include <vector>

#include "util/aes.h"

namespace orvel::util::data {

// AES in ECB mode (FIPS-197, SP 800-38A) over all of data in place; padding stays as it is. False, and data
// is empty, if there was nothing to decrypt or, after a line on standard output, if the length of data is no
// multiple of 16 or that of the key not 16, 24 or 32. Any thread.
bool decrypt(std::vector<std::uint8_t>& data, const AesKey& key);

// Decodes compressedSize bytes into out, whose size the caller has set to the decompressed length. False,
// after a line on standard output, if that fails; out then holds anything. Any thread.
bool decompress(const std::uint8_t* compressed, std::int32_t compressedSize, std::vector<std::uint8_t>& out);

// No stream of so many bytes decodes to more than this: what is checked before memory is taken for a claimed
// size.
std::uint64_t largestDecompressedSize(std::uint64_t compressedSize);

}  // namespace orvel::util::data
