// AES decryption for any processor: a round is sixteen table look-ups.
#include <array>
#include <bit>

#include "util/aes/aes-field.h"
#include "util/aes/aes-paths.h"
#include "util/byte-order.h"

namespace orvel::util::data {
namespace {

using Columns = std::array<std::uint32_t, 4>;

// Entry b is what byte b in row 0 adds to its column: InvSubBytes and InvMixColumns in one. A byte in row r
// adds the same entry, rotated by r bytes. Four tables, rotated in advance, are no better: 13 % slower on
// x86-64 (GCC 12 spills a column in every round), 2 % faster on 32-bit x86.
constexpr auto kRow0Table = [] {
    std::array<std::uint32_t, 256> table{};
    for (std::size_t byte = 0; byte < 256; ++byte) table[byte] = AesInvMixColumn(kAesInverseSBox[byte]);
    return table;
}();

// One column after a round. InvShiftRows takes its rows 0 to 3 from the columns in the arguments.
inline std::uint32_t RoundColumn(std::uint32_t row0, std::uint32_t row1, std::uint32_t row2,
                                 std::uint32_t row3) {
    return kRow0Table[row0 & 0xff] ^ std::rotl(kRow0Table[(row1 >> 8) & 0xff], 8) ^
           std::rotl(kRow0Table[(row2 >> 16) & 0xff], 16) ^ std::rotl(kRow0Table[row3 >> 24], 24);
}

// The same for the last round, which leaves out InvMixColumns.
inline std::uint32_t LastRoundColumn(std::uint32_t row0, std::uint32_t row1, std::uint32_t row2,
                                     std::uint32_t row3) {
    return AesSubWord(kAesInverseSBox,
                      (row0 & 0xff) | (row1 & 0xff00) | (row2 & 0xff0000) | (row3 & 0xff000000));
}

// One round: InvShiftRows, what columnFunction does, AddRoundKey.
template <auto columnFunction>
Columns Round(const Columns& state, const std::uint32_t* roundKey) {
    return {columnFunction(state[0], state[3], state[2], state[1]) ^ roundKey[0],
            columnFunction(state[1], state[0], state[3], state[2]) ^ roundKey[1],
            columnFunction(state[2], state[1], state[0], state[3]) ^ roundKey[2],
            columnFunction(state[3], state[2], state[1], state[0]) ^ roundKey[3]};
}

void DecryptBlock(const AesDecryptionKey& key, const std::uint8_t* input, std::uint8_t* output) {
    Columns state;
    for (std::size_t i = 0; i < 4; ++i)
        state[i] = LoadLittleEndian<std::uint32_t>(input + 4 * i) ^ key.roundKey(0)[i];
    for (std::size_t round = 1; round < key.rounds(); ++round) {
        state = Round<RoundColumn>(state, key.roundKey(round));
    }
    state = Round<LastRoundColumn>(state, key.roundKey(key.rounds()));
    for (std::size_t i = 0; i < 4; ++i) AesStoreColumn(state[i], output + 4 * i);
}

void DecryptBlocks(const AesDecryptionKey& key, const std::uint8_t* input, std::size_t blockCount,
                   std::uint8_t* output) {
    for (; blockCount != 0; --blockCount, input += kAesBlockBytes, output += kAesBlockBytes) {
        DecryptBlock(key, input, output);
    }
}

void InvMixColumns(std::uint32_t* columns, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) columns[i] = AesInvMixColumn(columns[i]);
}

}  // namespace

constinit const AesImplementation kAesTableImplementation{InvMixColumns, DecryptBlocks};

}  // namespace orvel::util::data
