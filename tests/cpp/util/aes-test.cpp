// AES decryption: both implementations against the standards' examples and against each other.
#include "util/aes.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <new>
#include <numeric>
#include <random>
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

Bytes RandomBytes(std::mt19937& random, std::size_t size) {
    Bytes bytes(size);
    std::generate(bytes.begin(), bytes.end(), [&] { return static_cast<std::uint8_t>(random()); });
    return bytes;
}

std::vector<AesPath> Paths() {
    std::vector<AesPath> paths{AesPath::Automatic, AesPath::Table};
    if (AesNiAvailable()) paths.push_back(AesPath::AesNi);
    return paths;
}

TEST(AesDecrypt, agrees_with_the_examples_of_the_standard) {
    const Bytes plain = Hex("00112233445566778899aabbccddeeff");
    const struct {
        const char *name, *cipher;
        std::size_t keyLength;  // of 00 01 02 ...
    } cases[] = {{"FIPS-197 C.1", "69c4e0d86a7b0430d8cdb78070b4c55a", 16},
                 {"FIPS-197 C.2", "dda97ca4864cdfe06eaf70a0ec0d7191", 24},
                 {"FIPS-197 C.3", "8ea2b7ca516745bfeafc49904b496089", 32}};
    for (const auto& c : cases) {
        Bytes key(c.keyLength);
        std::iota(key.begin(), key.end(), std::uint8_t{0});
        const Bytes cipher = Hex(c.cipher);
        for (const AesPath path : Paths()) {
            Bytes output(16);
            EXPECT_EQ(AesDecrypt(cipher.data(), 16, AesKey(key.data(), key.size(), path), output.data(), 16,
                                 nullptr),
                      kAesSuccess);
            EXPECT_EQ(output, plain) << c.name << ", path " << static_cast<int>(path);
        }
    }
}

// Every number of blocks up to 256, and thereby every mix of block groups, at addresses of every alignment.
TEST(AesDecrypt, both_paths_agree_on_every_length_apart_and_in_place) {
    if (!AesNiAvailable()) GTEST_SKIP() << "this processor has no AES instructions";
    std::mt19937 random(20240229);
    for (const std::size_t keyLength : {16u, 24u, 32u}) {
        for (std::size_t length = 16; length <= 4096; length += 16) {
            const Bytes key = RandomBytes(random, keyLength), cipher = RandomBytes(random, length);
            Bytes fromTable(length);
            const AesKey tableKey(key.data(), keyLength, AesPath::Table);
            ASSERT_EQ(AesDecrypt(cipher.data(), length, tableKey, fromTable.data(), length, nullptr),
                      kAesSuccess);
            const std::size_t offset = length / 16 % 16;
            for (const AesPath path : {AesPath::Table, AesPath::AesNi}) {
                // Exactly as long as it may be touched, for the address sanitizer.
                const auto memory = std::make_unique<std::uint8_t[]>(offset + length);
                std::uint8_t* const text = memory.get() + offset;
                std::copy(cipher.begin(), cipher.end(), text);
                const AesKey pathKey(key.data(), keyLength, path);
                ASSERT_EQ(AesDecrypt(text, length, pathKey, text, length, nullptr), kAesSuccess);
                ASSERT_TRUE(std::equal(fromTable.begin(), fromTable.end(), text))
                    << length << " bytes, key of " << keyLength << ", path " << static_cast<int>(path);
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
        {20, 20, 0, false, kAesBadInputLength}, {32, 20, 0, false, kAesBadKeyLength},
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
