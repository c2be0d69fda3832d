// Decryption and decompression of payload bytes.
#include "util/data.h"

#include "oodle/oodle2/core/oodlelzcompressors.h"
#include "util/console.h"

namespace orvel::util::data {

bool decrypt(std::vector<std::uint8_t>& data, const AesKey& key) {
    // The cipher has no last block to look at in empty data.
    if (data.empty()) return false;
    if (AesDecrypt(data.data(), data.size(), key, data.data(), data.size(), nullptr) == kAesSuccess)
        return true;
    WriteConsole("[ orvel::util::data::decrypt ] Decryption failed.\n");
    data.clear();
    return false;
}

bool decompress(const std::uint8_t* compressed, std::int32_t compressedSize, std::vector<std::uint8_t>& out) {
    constexpr int kFuzzSafe = 1;
    constexpr int kNoCheckValues = 0;
    constexpr int kQuiet = 0;
    const std::ptrdiff_t decoded = OodleLZ_Decompress(
        compressed, compressedSize, out.data(), static_cast<std::ptrdiff_t>(out.size()), kFuzzSafe,
        kNoCheckValues, kQuiet, nullptr, 0, nullptr, nullptr, nullptr, 0, OodleLZ_Decode_Unthreaded);
    if (decoded != 0) return true;
    WriteConsole("[ orvel::util::data::decompress ] Failed to decompress data.\n");
    return false;
}

std::uint64_t largestDecompressedSize(std::uint64_t compressedSize) {
    // A whole block takes at least its header (2 bytes) and one quantum (3 bytes of header and 1 more). The
    // last block is shorter and may take less.
    constexpr std::uint64_t kSmallestBlockBytes = 6;
    return (compressedSize / kSmallestBlockBytes + 1) * OODLELZ_BLOCK_LEN;
}

}  // namespace orvel::util::data
