// Byte histograms, and which of the 256 symbols an array uses, told as runs of used symbols: shared by the
// second Huffman description and the dense tANS table.
#pragma once

#include <array>

#include "lz-writer/bit-writers.h"

namespace lz {

using Histogram = std::array<uint32_t, 256>;

Histogram CountBytes(ByteSpan raw);

// Symbols with a count, ascending.
std::vector<uint8_t> UsedSymbols(const Histogram& histogram);

struct SymbolRuns {
    unsigned used = 0;                // symbols
    std::vector<unsigned> exponents;  // one unary number for each first gap, run and gap
    std::vector<Field> tails;         // their remaining bits

    explicit SymbolRuns(const std::vector<uint8_t>& symbols);

    // The number of exponents, in the code whose width depends on the number of used symbols.
    void PutExponentCount(MsbWriter& out) const;
};

}  // namespace lz
