// Offsets in the single form and long excesses: the codes that go into arrays and the raw bits that end an LZ
// chunk.
#pragma once

#include "lz-writer/bit-writers.h"

namespace lz {

struct OffsetCodes {
    Bytes codes;
    std::vector<std::vector<Field>> bits;  // for each offset
};

// No distance may be below 8.
OffsetCodes CodeOffsets(const std::vector<uint32_t>& distances);

// The section of raw bits. Without a count byte it begins with the number of long excesses; with one the long
// excesses are left out of it.
Bytes OffsetBits(const OffsetCodes& offsets, const std::vector<uint32_t>& long_excesses, bool count_byte);
Bytes LongExcessBits(const std::vector<uint32_t>& long_excesses);

}  // namespace lz
