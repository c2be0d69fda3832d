// AES decryption: both implementations, the checks of the arguments, padding.
#include "util/aes.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <new>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

namespace orvel::util::data {
namespace {

using Bytes = std::vector<std::uint8_t>;

Bytes Hex(std::string_view text) {
    Bytes bytes;
    for (std::size_t i = 0; i + 1 < text.size(); i += 2) {
        bytes.push_back(static_cast<std::uint8_t>(std::stoi(std::string(text.substr(i, 2)), nullptr, 16)));
    }
    return bytes;
}

// Pseudo-random bytes, the same with every standard library.
Bytes Noise(std::uint32_t seed, std::size_t size) {
    Bytes bytes(size);
    for (std::uint8_t& byte : bytes)
        byte = static_cast<std::uint8_t>((seed = seed * 1664525 + 1013904223) >> 24);
    return bytes;
}

std::uint32_t Fnv(const Bytes& bytes) {
    std::uint32_t hash = 2166136261;
    for (const std::uint8_t byte : bytes) hash = (hash ^ byte) * 16777619;
    return hash;
}

std::vector<AesPath> Paths() {
    std::vector<AesPath> paths{AesPath::Table, AesPath::Automatic};
    if (AesNiAvailable()) paths.push_back(AesPath::AesNi);
    return paths;
}

// The checksums are of the output of "openssl enc -d -aes-128-ecb -nopad" for the same noise (-192, -256).
// All numbers of blocks up to 256, so every mix of block groups, at addresses of every alignment.
TEST(AesDecrypt, gives_on_every_path_at_every_length_what_openssl_gives) {
    const Bytes cipher = Noise(1, 4096);
    for (const auto& [keyLength, checksum] :
         {std::pair(16U, 0x22c7a817U), std::pair(24U, 0x64a04d80U), std::pair(32U, 0xde38d2f8U)}) {
        const Bytes rawKey = Noise(keyLength, keyLength);
        for (const AesPath path : Paths()) {
            SCOPED_TRACE(testing::Message() << "key of " << keyLength << ", path " << static_cast<int>(path));
            const AesKey key(rawKey.data(), keyLength, path);
            Bytes plain(4096);
            ASSERT_EQ(AesDecrypt(cipher.data(), 4096, key, plain.data(), 4096, nullptr), kAesSuccess);
            EXPECT_EQ(Fnv(plain), checksum);
            for (std::size_t length = 16; length < 4096; length += 16) {
                const std::size_t offset = length / 16 % 16;
                // No longer than AesDecrypt may touch, so that the address sanitizer sees any access beyond.
                const auto memory = std::make_unique<std::uint8_t[]>(offset + length);
                std::uint8_t* const text = memory.get() + offset;
                std::copy_n(cipher.begin(), length, text);
                ASSERT_EQ(AesDecrypt(text, length, key, text, length, nullptr), kAesSuccess);
                ASSERT_TRUE(std::equal(text, text + length, plain.begin())) << length << " bytes";
            }
        }
    }
}

TEST(AesDecrypt, the_result_says_which_argument_is_wrong_and_lengths_are_judged_before_capacity) {
    const struct {
        std::size_t inputLength, keyLength, capacity;
        bool removePadding;
        int result;
    } cases[] = {
        {24, 20, 0, false, kAesBadInputLength}, {32, 20, 0, false, kAesBadKeyLength},
        {0, 15, 0, false, kAesBadKeyLength},    {32, 16, 31, false, kAesOutputTooSmall},
        {32, 24, 15, true, kAesOutputTooSmall}, {32, 32, 33, false, kAesSuccess},
        {0, 32, 0, true, kAesSuccess},
    };
    for (const auto& c : cases) {
        const Bytes input(c.inputLength), key(c.keyLength);
        Bytes output(c.capacity, 0xEE);
        std::uint32_t padding = 99;
        EXPECT_EQ(AesDecrypt(input.data(), c.inputLength, key.data(), c.keyLength, output.data(), c.capacity,
                             c.removePadding ? &padding : nullptr),
                  c.result)
            << c.inputLength << ' ' << c.keyLength << ' ' << c.capacity << ' ' << c.removePadding;
        EXPECT_EQ(padding, c.removePadding && c.result == kAesSuccess ? 0u : 99u);
        if (c.result != kAesSuccess) {
            EXPECT_EQ(output, Bytes(c.capacity, 0xEE));
        }
    }
}

// The last blocks were encrypted with another implementation (openssl enc -aes-128-ecb -nopad).
TEST(AesDecrypt, padding_is_judged_by_the_last_byte_and_removed) {
    const Bytes key = Hex("2b7e151628aed2a6abf7158809cf4f3c");
    const Bytes firstPlain = Hex("3243f6a8885a308d313198a2e0370734");
    const struct {
        const char *lastPlain, *lastCipher;
        std::uint32_t padding;
        int result;
    } cases[] = {
        {"6162636465666768696a6b6c04040404", "437f75e9e16d1f671a43483c764a2ffc", 4, kAesSuccess},
        {"6162636465666768696a6b6c03040404", "838ea97916517fe2ee407039348845e1", 4, kAesInvalidPadding},
        {"10101010101010101010101010101010", "a254be88e037ddd9d79fb6411c3f9df8", 16, kAesSuccess},
        {"6162636465666768696a6b6c6d6e6f00", "bb451dbcfcc4e0cc67108b02fbff6364", 0, kAesSuccess},
        {"11111111111111111111111111111111", "98ac21a7ef171716bfcbb68eb85e7fc8", 17, kAesInvalidPadding},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.lastPlain);
        const Bytes input = Hex(std::string("3925841d02dc09fbdc118597196a0b32") + c.lastCipher);
        const bool valid = c.result == kAesSuccess;
        const std::size_t kept = valid ? 16 - c.padding : 0;
        Bytes expected = firstPlain;
        const Bytes lastPlain = Hex(c.lastPlain);
        expected.insert(expected.end(), lastPlain.begin(),
                        lastPlain.begin() + static_cast<std::ptrdiff_t>(kept));

        Bytes output(16 + kept);  // all that is needed, and no more
        std::uint32_t padding = 99;
        EXPECT_EQ(AesDecrypt(input.data(), 32, key.data(), 16, output.data(), output.size(), &padding),
                  c.result);
        EXPECT_EQ(padding, c.padding);
        EXPECT_EQ(output, expected);

        if (kept == 0) continue;
        Bytes tooSmall(15 + kept);
        EXPECT_EQ(AesDecrypt(input.data(), 32, key.data(), 16, tooSmall.data(), tooSmall.size(), &padding),
                  kAesOutputTooSmall);
    }
}

TEST(AesDecryptionKey, nothing_of_the_key_is_left_in_memory) {
    const Bytes key = Hex("603deb1015ca71be2b73aef0857d77811f352c073b6108d72d9810a30914dff4");
    alignas(AesDecryptionKey) std::array<std::uint8_t, sizeof(AesDecryptionKey)> memory;
    auto* const expanded =
        new (memory.data()) AesDecryptionKey(key.data(), key.size(), kAesTableImplementation.invMixColumns);
    const auto* const roundKeys = reinterpret_cast<const std::uint8_t*>(expanded->roundKey(0));
    const std::size_t size = 16 * (expanded->rounds() + 1);
    // The last of the round keys is the key's first half as it is.
    ASSERT_EQ(std::memcmp(roundKeys + size - 16, key.data(), 16), 0);
    expanded->~AesDecryptionKey();
    EXPECT_TRUE(std::all_of(roundKeys, roundKeys + size, [](std::uint8_t byte) { return byte == 0; }));
}

}  // namespace
}  // namespace orvel::util::data
