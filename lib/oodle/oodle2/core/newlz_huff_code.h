// A Huffman code as an array describes it, and its decoding table.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "oodle/oodle2/core/bit_readers.h"

namespace oo2 {

inline constexpr unsigned kMaxCodeLength = 11;
inline constexpr std::size_t kHuffTableSize = 1u << kMaxCodeLength;

// The symbols of a code in canonical order: by length; within a length, in the order of Add.
class HuffCode {
  public:
    // Returns false if the length is not 1 to 11, or if a code cannot have another symbol of that length.
    bool Add(std::uint8_t symbol, int length);

    unsigned SymbolCount() const { return m_symbolCount; }
    std::uint8_t LastSymbol() const { return m_last; }
    std::span<const std::uint8_t> SymbolsOf(unsigned length) const {
        return {m_symbols.data() + kBegin[length], static_cast<std::size_t>(m_end[length] - kBegin[length])};
    }

  private:
    // Where the symbols of each length begin. A code has at most 2 symbols of length 1, 4 of length 2, and so
    // on; 256 of length 8 and more.
    static constexpr std::array<std::uint16_t, kMaxCodeLength + 2> kBegin = {
        0, 0, 2, 6, 14, 30, 62, 126, 254, 510, 766, 1022, 1278};
    std::array<std::uint16_t, kMaxCodeLength + 2> m_end = kBegin;
    std::array<std::uint8_t, kBegin.back()> m_symbols;
    std::uint8_t m_last = 0;
    unsigned m_symbolCount = 0;
};

// Reads the description of a code. Returns false if it is corrupt. It is corrupt too if the reader is then
// past its end; the caller checks that.
bool ReadHuffCode(MsbReader<Direction::Forward>& in, HuffCode& code);

// The next 11 bits of the stream are the index of an entry. Its low byte is the length of the code at their
// start, its high byte the symbol.
struct HuffTable {
    std::array<std::uint16_t, kHuffTableSize> entries;

    // Returns false if the code is not complete: if some 11-bit string begins with no code, or with two.
    bool Build(const HuffCode& code);
};

}  // namespace oo2
