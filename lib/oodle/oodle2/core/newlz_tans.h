// The tANS table: the meaning of each state.
#pragma once

#include <array>
#include <cstdint>

#include "oodle/oodle2/core/bit_readers.h"
#include "oodle/oodle2/core/newlz_symbol_runs.h"

namespace oo2 {

inline constexpr unsigned kMinTansBits = 8;
inline constexpr unsigned kMaxTansBits = 11;

// How often each symbol stands in the table. The counts sum to 1 << tableBits.
struct TansCounts {
    unsigned tableBits = 0;
    unsigned used = 0;
    std::array<std::uint8_t, kSymbols> symbols;  // ascending
    std::array<std::uint16_t, kSymbols> counts;

    std::uint32_t TableSize() const { return 1u << tableBits; }
};

// Reads the description of a table. Returns false, after a log line with the reason, if it is corrupt. It is
// corrupt too if the reader is then past its end; the caller checks that.
bool ReadTansCounts(MsbReader<Direction::Forward>& in, TansCounts& counts);

// A state yields its symbol. The next state is base plus the next `bits` bits.
struct TansState {
    std::uint16_t base;
    std::uint8_t bits;
    std::uint8_t symbol;
};

struct TansTable {
    std::array<TansState, 1u << kMaxTansBits> states;

    void Build(const TansCounts& counts);
};

}  // namespace oo2
