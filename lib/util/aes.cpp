// Checks the arguments, chooses the path and removes the padding. The cipher itself is in aes/.
#include "util/aes.h"

#include <algorithm>
#include <array>

namespace orvel::util::data {
namespace {

const AesImplementation& ImplementationOf(AesPath path) {
    const bool useNi = path == AesPath::AesNi || (path == AesPath::Automatic && AesNiAvailable());
    return useNi ? kAesNiImplementation : kAesTableImplementation;
}

// Writes the last block without its padding. The output has room for capacity bytes.
int WriteWithoutPadding(const std::array<std::uint8_t, kAesBlockBytes>& block, std::uint8_t* output,
                        std::size_t capacity, std::uint32_t* paddingLength) {
    const std::size_t padding = block.back();
    *paddingLength = block.back();
    if (padding > kAesBlockBytes) return kAesInvalidPadding;
    const std::size_t kept = kAesBlockBytes - padding;
    const auto paddingBegin = block.begin() + static_cast<std::ptrdiff_t>(kept);
    if (std::any_of(paddingBegin, block.end(), [=](std::uint8_t byte) { return byte != padding; })) {
        return kAesInvalidPadding;
    }
    if (capacity < kept) return kAesOutputTooSmall;
    std::copy(block.begin(), paddingBegin, output);
    return kAesSuccess;
}

}  // namespace

AesKey::AesKey(const std::uint8_t* key, std::size_t keyLength, AesPath path)
    : m_implementation(ImplementationOf(path)) {
    if (AesDecryptionKey::IsKeyLength(keyLength))
        m_expanded.emplace(key, keyLength, m_implementation.invMixColumns);
}

int AesDecrypt(const std::uint8_t* input, std::size_t inputLength, const AesKey& key, std::uint8_t* output,
               std::size_t outputCapacity, std::uint32_t* paddingLength) {
    if (inputLength % kAesBlockBytes != 0) return kAesBadInputLength;
    const AesDecryptionKey* const expanded = key.Expanded();
    if (expanded == nullptr) return kAesBadKeyLength;
    if (inputLength == 0) {
        if (paddingLength != nullptr) *paddingLength = 0;
        return kAesSuccess;
    }
    const std::size_t lastBlock = inputLength - kAesBlockBytes;
    if (outputCapacity < (paddingLength != nullptr ? lastBlock : inputLength)) return kAesOutputTooSmall;

    const auto decryptBlocks = key.Implementation().decryptBlocks;
    if (paddingLength == nullptr) {
        decryptBlocks(*expanded, input, inputLength / kAesBlockBytes, output);
        return kAesSuccess;
    }
    decryptBlocks(*expanded, input, lastBlock / kAesBlockBytes, output);
    std::array<std::uint8_t, kAesBlockBytes> scratch;
    decryptBlocks(*expanded, input + lastBlock, 1, scratch.data());
    return WriteWithoutPadding(scratch, output + lastBlock, outputCapacity - lastBlock, paddingLength);
}

int AesDecrypt(const std::uint8_t* input, std::size_t inputLength, const std::uint8_t* key,
               std::size_t keyLength, std::uint8_t* output, std::size_t outputCapacity,
               std::uint32_t* paddingLength) {
    return AesDecrypt(input, inputLength, AesKey(key, keyLength), output, outputCapacity, paddingLength);
}

}  // namespace orvel::util::data
