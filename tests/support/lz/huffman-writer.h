// Huffman arrays (types 2 and 4): code description and data, without the array header.
#pragma once

#include <optional>

#include "support/lz/coded.h"

namespace lz {

struct HuffmanOptions {
    enum class Description { cheapest, dense, sparse, second };
    Description description = Description::cheapest;
    std::optional<unsigned> f;  // low bits of a length code, 0 to 3; none: cheapest
    bool split = false;         // type 4: two halves of three streams
    bool descending = false;    // a sparse description lists its symbols from the highest down
};

// Nothing when this array cannot be coded so (too short, too long, too many symbols for the description).
std::optional<Coded> EncodeHuffman(ByteSpan raw, const HuffmanOptions& options);

}  // namespace lz
