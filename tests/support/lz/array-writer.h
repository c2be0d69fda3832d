// Arrays: header and coding, chosen by size or forced.
#pragma once

#include "support/lz/huffman-writer.h"
#include "support/lz/tans-writer.h"

namespace lz {

// The numbers of the header's three type bits.
enum class ArrayType : uint8_t { stored, tans, huffman, run_length, huffman_split, multi };

enum class RunLengthPrefix { none, literals, all };  // what of a run-length buffer is itself an array

struct MultiOptions {
    enum class Layout {
        joined,         // the parts' bytes follow one another
        plain_indices,  // intervals; source numbers and lengths in arrays of their own
        packed_indices  // intervals; both in one array
    };
    Layout layout = Layout::joined;
    unsigned arrays = 3;      // 2 to 127 joined, 2 to 63 with plain indices, 2 to 15 with packed ones
    bool end_length = false;  // the end mark of packed indices carries a length, which means nothing
};

struct ArrayOptions {
    std::optional<ArrayType> type;  // none: the smallest
    bool long_header = false;       // never a short one
    bool allow_stored = true;       // a chunk that is one array cannot be stored
    HuffmanOptions huffman;
    TansOptions tans;
    RunLengthPrefix run_length_prefix = RunLengthPrefix::none;
    MultiOptions multi;
    const ArrayOptions* inner = nullptr;  // for arrays inside this one; none: the smallest. Not owned.
};

// Header and contents. An array that cannot have the forced type (or is no smaller coded) is stored instead;
// empty bytes mean that this was not allowed either.
Coded EncodeArray(ByteSpan raw, const ArrayOptions& options = {});

// Contents without header of types 3 and 5.
std::optional<Coded> EncodeRunLength(ByteSpan raw, const ArrayOptions& options);
std::optional<Coded> EncodeMulti(ByteSpan raw, const ArrayOptions& options);

}  // namespace lz
