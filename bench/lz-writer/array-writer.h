// Arrays: header and coding, chosen by size.
#pragma once

#include <optional>

#include "lz-writer/coded.h"

namespace lz {

// The numbers of the header's three type bits.
enum class ArrayType : uint8_t { stored, tans, huffman, run_length, huffman_split };

struct ArrayOptions {
    bool only_stored = false;
    bool long_header = false;  // never a short one
    bool allow_stored = true;  // a chunk that is one array cannot be stored
};

// Header and contents. Empty bytes mean that the array is no smaller coded, and may not be stored.
Coded EncodeArray(ByteSpan raw, const ArrayOptions& options = {});

// The contents of run-length arrays, without header.
Coded EncodeRunLength(ByteSpan raw);

}  // namespace lz
