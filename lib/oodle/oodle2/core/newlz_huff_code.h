// A Huffman code as an array's description gives it, and the table that decodes it.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "oodle/oodle2/core/bit_readers.h"

namespace oo2 {

inline constexpr unsigned kMaxCodeLength = 11;
inline constexpr std::size_t kHuffTableSize = 1u << kMaxCodeLength;

// The symbols of a code in canonical order: by length, and within a length as they were added.
class HuffCode {
  public:
    // False if the length is not 1 to 11, or has as many symbols already as a code can have.
    bool Add(std::uint8_t symbol, int length);

    unsigned SymbolCount() const { return m_symbolCount; }
    std::uint8_t LastSymbol() const { return m_last; }
    std::span<const std::uint8_t> SymbolsOf(unsigned length) const {
        return {m_symbols.data() + kBegin[length], static_cast<std::size_t>(m_end[length] - kBegin[length])};
    }

  private:
    // Where the symbols of length 1, 2, ... begin. A code has at most 2 of length 1, 4 of length 2, and so
    // on; 256 of length 8 and more.
    static constexpr std::array<std::uint16_t, kMaxCodeLength + 2> kBegin = {
        0, 0, 2, 6, 14, 30, 62, 126, 254, 510, 766, 1022, 1278};
    std::array<std::uint16_t, kMaxCodeLength + 2> m_end = kBegin;
    std::array<std::uint8_t, kBegin.back()> m_symbols;
    std::uint8_t m_last = 0;
    unsigned m_symbolCount = 0;
};

// Reads the description of a code. False if it is corrupt. The reader may then be past its end, which is
// corrupt too.
bool ReadHuffCode(MsbReader<Direction::Forward>& in, HuffCode& code);

// The next 11 bits of the stream are the index of an entry: the length of the code that they begin with in
// the low byte, its symbol in the high one.
struct HuffTable {
    std::array<std::uint16_t, kHuffTableSize> entries;

    // False if the code is not complete: 11-bit strings that no code begins, or that two do.
    bool Build(const HuffCode& code);
};

}  // namespace oo2
