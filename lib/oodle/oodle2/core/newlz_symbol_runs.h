// The runs of used symbols that the second Huffman form and the dense tANS form share.
#pragma once

#include <array>
#include <cstdint>

#include "oodle/oodle2/core/bit_readers.h"

namespace oo2 {

inline constexpr unsigned kSymbols = 256;

// Up to 256 symbols in ascending order, with one number each.
struct UsedSymbols {
    unsigned count = 0;
    std::array<std::uint8_t, kSymbols> symbols;
    std::array<std::uint8_t, kSymbols> numbers;  // one unary number each; the caller knows its meaning

    // The unary numbers that describe the runs; `runNumberCount` of them.
    unsigned runNumberCount = 0;
    std::array<std::uint8_t, kSymbols> runNumbers;
};

// Reads the number of run numbers, the numbers of the symbols, then those of the runs. `used.count` must be
// set.
bool ReadUnaryNumbers(MsbReader<Direction::Forward>& in, UsedSymbols& used);

// Reads the runs that the run numbers describe, and lists the symbols.
bool ReadSymbolRuns(MsbReader<Direction::Forward>& in, UsedSymbols& used);

}  // namespace oo2
