#include "oodle/oodle2/core/newlz_huff_code.h"

#include <algorithm>
#include <utility>

#include "oodle/oodle2/core/newlz_symbol_runs.h"
#include "oodle/oodle2/core/oodlebase.h"

namespace oo2 {
namespace {

using DescriptionReader = MsbReader<Direction::Forward>;

constexpr unsigned kMaxGammaZeros = 7;
constexpr unsigned kMaxDenseUnary = 20;
constexpr unsigned kMaxSparseLengthBits = 4;

// Reads a run of 1 to 510 symbols: z zeros, then z + 2 bits that begin with a 1. These bits are the run plus
// 1. 0 means corrupt.
unsigned ReadGammaRun(DescriptionReader& in) {
    const auto zeros = static_cast<unsigned>(std::countl_zero(in.Window()));
    if (zeros > kMaxGammaZeros) return 0;
    in.Skip(zeros);
    return in.Read(zeros + 2) - 1;
}

// First form, dense: 2 bits f; 1 bit, set if symbol 0 is used. Then a gamma run of unused symbols and one of
// used symbols, in turn. Each used symbol has its code length, as a difference from a running average: a
// unary number and f low bits.
bool ReadDense(DescriptionReader& in, HuffCode& code) {
    const unsigned lowBits = in.Read(2);
    bool skipUnused = in.Read(1) != 0;
    int average = 32;  // of the lengths, in quarters
    unsigned symbol = 0;
    while (symbol < kSymbols) {
        if (!skipUnused) {
            const unsigned unused = ReadGammaRun(in);
            if (unused == 0) return false;
            symbol += unused;
            if (symbol >= kSymbols) break;
        }
        skipUnused = false;
        const unsigned used = ReadGammaRun(in);
        if (used == 0 || used > kSymbols - symbol) return false;
        for (const unsigned end = symbol + used; symbol < end; ++symbol) {
            const unsigned high = in.ReadUnary();
            if (high > kMaxDenseUnary >> lowBits) return false;
            const int length = ZigZag(high << lowBits | in.Read(lowBits)) + ((average + 2) >> 2);
            if (!code.Add(static_cast<std::uint8_t>(symbol), length)) return false;
            average = length + ((3 * average + 2) >> 2);
        }
    }
    return symbol == kSymbols && code.SymbolCount() >= 2;
}

// First form, sparse: 8 bits n. With n = 1: 8 bits, the only symbol. Otherwise 3 bits w, then n times 8 bits
// symbol and w bits length less 1. The symbols stand in the order of their codes, which need not be
// ascending.
bool ReadSparse(DescriptionReader& in, HuffCode& code) {
    const unsigned count = in.Read(8);
    if (count == 0) return false;
    if (count == 1) return code.Add(static_cast<std::uint8_t>(in.Read(8)), 1);
    const unsigned lengthBits = in.Read(3);
    if (lengthBits > kMaxSparseLengthBits) return false;
    std::array<bool, kSymbols> seen{};
    for (unsigned i = 0; i < count; ++i) {
        const auto symbol = static_cast<std::uint8_t>(in.Read(8));
        if (std::exchange(seen[symbol], true)) return false;
        if (!code.Add(symbol, static_cast<int>(in.Read(lengthBits)) + 1)) return false;
    }
    return true;
}

// Second form: 2 bits f; 8 bits n - 1; the unary numbers of the n symbols and of the runs; f low bits for
// each symbol; the bits of the runs. Here too a length is a difference from a running average.
bool ReadSecondForm(DescriptionReader& in, HuffCode& code) {
    const unsigned lowBits = in.Read(2);
    UsedSymbols used;
    used.count = in.Read(8) + 1;
    if (!ReadUnaryNumbers(in, used)) return false;
    std::array<std::uint8_t, kSymbols> lengths;
    int sum = 30;  // of the average length, in quarters
    for (unsigned i = 0; i < used.count; ++i) {
        const int difference = ZigZag(static_cast<unsigned>(used.numbers[i]) << lowBits | in.Read(lowBits));
        const int length = difference + (sum >> 2) + 1;
        if (length < 1 || length > static_cast<int>(kMaxCodeLength)) return false;
        lengths[i] = static_cast<std::uint8_t>(length);
        sum += difference;
    }
    if (!ReadSymbolRuns(in, used)) return false;
    for (unsigned i = 0; i < used.count; ++i) {
        if (!code.Add(used.symbols[i], lengths[i])) return false;
    }
    return true;
}

// The next code, bits reversed: adds 1 at the top and carries downwards.
std::uint32_t NextMirrored(std::uint32_t code, unsigned length) {
    const std::uint32_t zero = std::bit_floor(code ^ ((1u << length) - 1));
    return (code & (zero - 1)) | zero;
}

}  // namespace

bool HuffCode::Add(std::uint8_t symbol, int length) {
    if (length < 1 || length > static_cast<int>(kMaxCodeLength)) return false;
    const auto bucket = static_cast<std::size_t>(length);
    if (m_end[bucket] == kBegin[bucket + 1]) return false;
    m_symbols[m_end[bucket]++] = symbol;
    m_last = symbol;
    ++m_symbolCount;
    return true;
}

// 1 bit: the form. Then 1 bit: in the first form dense or sparse, in the second form 0.
bool ReadHuffCode(DescriptionReader& in, HuffCode& code) {
    if (in.Read(1) == 0) return in.Read(1) != 0 ? ReadDense(in, code) : ReadSparse(in, code);
    if (in.Read(1) != 0) {
        Log(kLogDetail, "corruption : huff_type_flag\n");
        return false;
    }
    return ReadSecondForm(in, code);
}

// The table grows with the code length: 2 entries for codes of 1 bit, 4 for codes of 2 bits, and so on. At
// each step the second half becomes a copy of the first, since the halves differ in a bit that shorter codes
// do not have. Then the codes of that length are entered.
bool HuffTable::Build(const HuffCode& code) {
    std::size_t space = 0;
    for (unsigned length = 1; length <= kMaxCodeLength; ++length) {
        space += code.SymbolsOf(length).size() << (kMaxCodeLength - length);
    }
    if (space != kHuffTableSize) return false;

    entries[0] = 0;
    std::uint32_t mirrored = 0;
    for (unsigned length = 1; length <= kMaxCodeLength; ++length) {
        const auto size = std::ptrdiff_t{1} << (length - 1);
        std::copy(entries.begin(), entries.begin() + size, entries.begin() + size);
        for (const std::uint8_t symbol : code.SymbolsOf(length)) {
            entries[mirrored] = static_cast<std::uint16_t>(std::uint32_t{symbol} << 8 | length);
            mirrored = NextMirrored(mirrored, length);
        }
    }
    return true;
}

}  // namespace oo2
