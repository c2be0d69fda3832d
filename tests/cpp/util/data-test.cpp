// Decryption and decompression of whole payloads.
#include "util/data.h"

#include <gtest/gtest.h>

namespace {

using Bytes = std::vector<std::uint8_t>;

template <typename Operation>
std::string OutputOf(Operation operation) {
    testing::internal::CaptureStdout();
    operation();
    return testing::internal::GetCapturedStdout();
}

TEST(Decrypt, takes_whole_blocks_and_keeps_the_padding) {
    const Bytes key = {0x2b, 0x7e, 0x15, 0x16, 0x28, 0xae, 0xd2, 0xa6,
                       0xab, 0xf7, 0x15, 0x88, 0x09, 0xcf, 0x4f, 0x3c};
    struct Case {
        std::size_t length, keyLength;
        bool good;
    };
    for (const Case& c : {Case{48, 16, true},
                          {16, 24, true},
                          {16, 32, true},
                          {20, 16, false},
                          {16, 20, false},
                          {16, 0, false}}) {
        Bytes cipher(c.length, 0x11), keyBytes = key, plain;
        keyBytes.resize(c.keyLength);
        const std::string output = OutputOf([&] { plain = orvel::util::data::decrypt(cipher, keyBytes); });
        EXPECT_EQ(plain.size(), c.good ? c.length : 0U);
        EXPECT_EQ(output, c.good ? "" : "[ orvel::util::data::decrypt ] Decryption failed.\n");
    }
    // FIPS-197, appendix B.
    const Bytes cipher = {0x39, 0x25, 0x84, 0x1d, 0x02, 0xdc, 0x09, 0xfb,
                          0xdc, 0x11, 0x85, 0x97, 0x19, 0x6a, 0x0b, 0x32};
    const Bytes plain = {0x32, 0x43, 0xf6, 0xa8, 0x88, 0x5a, 0x30, 0x8d,
                         0x31, 0x31, 0x98, 0xa2, 0xe0, 0x37, 0x07, 0x34};
    EXPECT_EQ(orvel::util::data::decrypt(cipher, key), plain);
}

TEST(Decrypt, nothing_is_decrypted_to_nothing_in_silence) {
    EXPECT_EQ(OutputOf([] { EXPECT_TRUE(orvel::util::data::decrypt({}, Bytes(16)).empty()); }), "");
}

TEST(Decompress, reports_a_stream_that_cannot_be_decoded) {
    // One block of the new form, stored.
    const Bytes stream = {0xCC, 0x06, 'a', 'b', 'c'};
    Bytes out(3);
    EXPECT_TRUE(orvel::util::data::decompress(stream.data(), 5, out));
    EXPECT_EQ(out, (Bytes{'a', 'b', 'c'}));
    Bytes none;
    for (Bytes* target : {&out, &none}) {
        EXPECT_EQ(OutputOf([&] { EXPECT_FALSE(orvel::util::data::decompress(stream.data(), 1, *target)); }),
                  "[ orvel::util::data::decompress ] Failed to decompress data.\n");
    }
}

}  // namespace
