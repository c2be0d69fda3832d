// Decryption and decompression of payloads.
#pragma once

#include <cstdint>
#include <vector>

#include "util/aes.h"

namespace orvel::util::data {

// Decrypts all of data in place: AES in ECB mode (FIPS-197, SP 800-38A); padding stays. Any thread.
// Returns false and empties data:
// - if data is empty;
// - if its length is no multiple of 16, or the key has not 16, 24 or 32 bytes. This is told on standard
// output.
bool decrypt(std::vector<std::uint8_t>& data, const AesKey& key);

// Decodes compressedSize bytes into out, which already has the decompressed size. Returns false, after a line
// on standard output, if that fails; the content of out is then unspecified. Any thread.
bool decompress(const std::uint8_t* compressed, std::int32_t compressedSize, std::vector<std::uint8_t>& out);

// The most bytes that a stream of this size can decode to. Checked before memory is taken for a size that a
// file claims.
std::uint64_t largestDecompressedSize(std::uint64_t compressedSize);

}  // namespace orvel::util::data
