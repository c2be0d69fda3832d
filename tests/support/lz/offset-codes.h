// Offsets and long excesses: the codes that go into arrays and the raw bits that end an LZ chunk.
#pragma once

#include "support/lz/bit-writers.h"

namespace lz {

struct OffsetCodes {
    unsigned modulus = 0;  // 0: the single form
    Bytes codes;
    Bytes remainders;                      // when the modulus is above 1
    std::vector<std::vector<Field>> bits;  // for each offset
    Forms forms;

    // Estimate, by entropy, of what codes, remainders and bits take.
    double EstimatedBits() const;
};

// The single form has no distance below 8.
bool CanCode(const std::vector<uint32_t>& distances, unsigned modulus);
OffsetCodes CodeOffsets(const std::vector<uint32_t>& distances, unsigned modulus);

// The section of raw bits. Without a count byte it begins with the number of long excesses; with one the long
// excesses are left out of it.
Bytes OffsetBits(const OffsetCodes& offsets, const std::vector<uint32_t>& long_excesses, bool count_byte);
Bytes LongExcessBits(const std::vector<uint32_t>& long_excesses);

}  // namespace lz
