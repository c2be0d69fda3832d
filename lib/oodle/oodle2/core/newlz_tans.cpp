#include "oodle/oodle2/core/newlz_tans.h"

#include <algorithm>

#include "oodle/oodle2/core/oodlebase.h"

namespace oo2 {
namespace {

using DescriptionReader = MsbReader<Direction::Forward>;

constexpr unsigned kMaxExtraBits = 15;
constexpr std::size_t kQuarters = 4;

// Dense: 3 bits Q; 8 bits n - 1; the unary numbers of the n symbols and of the runs; the bits of the runs;
// then for each symbol the bits of its count. Q and the unary number tell how many bits. Their value, from 0
// on, is the count less 1; but up to twice the running average it is a difference from the average.
bool ReadDense(DescriptionReader& in, TansCounts& counts) {
    const unsigned fewestBits = in.Read(3);
    UsedSymbols used;
    used.count = in.Read(8) + 1;
    if (used.count < 2 || !ReadUnaryNumbers(in, used) || !ReadSymbolRuns(in, used)) return false;

    std::uint32_t sum = 0;
    int average4 = 6;  // in quarters
    for (unsigned i = 0; i < used.count; ++i) {
        const unsigned bits = fewestBits + used.numbers[i];
        if (!Check(bits <= kMaxExtraBits, "OODLE ERROR : corruption : nextra <= 15\n")) return false;
        int value = static_cast<int>(in.Read(bits) + (1u << bits) - (1u << fewestBits));
        const int average = average4 >> 2;
        const int limit = 2 * average;
        if (value <= limit) value = average + ZigZag(static_cast<unsigned>(value));
        average4 += std::min(limit, value) - average;
        counts.symbols[i] = used.symbols[i];
        counts.counts[i] = static_cast<std::uint16_t>(value + 1);
        sum += static_cast<std::uint32_t>(value) + 1;
    }
    counts.used = used.count;
    return Check(sum == counts.TableSize(), "OODLE ERROR : corruption : count_sum == L\n");
}

// Sparse: 3 bits m - 1; 4 bits d; m times 8 bits symbol and d bits by which its count exceeds the one before;
// then 8 bits, the symbol that has the rest of the states. No symbol has more states than that one.
bool ReadSparse(DescriptionReader& in, TansCounts& counts) {
    const unsigned listed = in.Read(3) + 1;
    const unsigned deltaBits = in.Read(4);
    if (!Check(deltaBits != 0, "OODLE ERROR : max_delta_bits == 0\n") ||
        !Check(deltaBits <= counts.tableBits, "OODLE ERROR : max_delta_bits > L_bits\n")) {
        return false;
    }
    std::array<std::uint16_t, kSymbols> countOf{};
    std::uint32_t sum = 0;
    std::uint32_t count = 0;
    for (unsigned i = 0; i < listed; ++i) {
        const std::uint32_t symbol = in.Read(8);
        if (!Check(countOf[symbol] == 0, "OODLE ERROR : corruption : ! seen[sym]\n")) return false;
        count += in.Read(deltaBits);
        if (!Check(count > 0, "OODLE ERROR : corruption : cur > 0\n")) return false;
        sum += count;
        if (!Check(sum < counts.TableSize(), "OODLE ERROR : corruption : sum < L\n")) return false;
        countOf[symbol] = static_cast<std::uint16_t>(count);
    }
    const std::uint32_t symbol = in.Read(8);
    if (!Check(countOf[symbol] == 0, "OODLE ERROR : corruption : ! seen[mps]\n")) return false;
    const std::uint32_t rest = counts.TableSize() - sum;
    if (!Check(rest >= count && rest > 1, "OODLE ERROR : last too small\n")) return false;
    countOf[symbol] = static_cast<std::uint16_t>(rest);

    for (unsigned i = 0; i < kSymbols; ++i) {
        if (countOf[i] == 0) continue;
        counts.symbols[counts.used] = static_cast<std::uint8_t>(i);
        counts.counts[counts.used++] = countOf[i];
    }
    return true;
}

}  // namespace

// 1 bit, 0; 2 bits, log2 of the table's size less 8; 1 bit, dense or sparse.
bool ReadTansCounts(DescriptionReader& in, TansCounts& counts) {
    if (!Check(in.Read(1) == 0, "OODLE ERROR : corruption : flag == 0\n")) return false;
    counts.tableBits = in.Read(2) + kMinTansBits;
    return in.Read(1) != 0 ? ReadDense(in, counts) : ReadSparse(in, counts);
}

// The states of symbols with a count of 1 come last, in order. All others go to four quarters in turn: state
// k goes to quarter k % 4. A symbol of count c numbers its states c, c + 1, ..., 2c - 1, first those in
// quarter 0, then those in quarter 1, and so on. The state with number t reads as many bits as make t a
// number from L to 2L - 1, where L is the table's size.
void TansTable::Build(const TansCounts& counts) {
    const std::uint32_t size = counts.TableSize();
    const auto begin = counts.counts.begin();
    const auto single = static_cast<std::uint32_t>(std::count(begin, begin + counts.used, 1));
    const std::uint32_t shared = size - single;
    std::array<std::uint32_t, kQuarters> next;
    std::uint32_t at = 0;
    for (std::uint32_t quarter = 0; quarter < kQuarters; ++quarter) {
        next[quarter] = at;
        at += (shared >> 2) + (quarter < (shared & 3) ? 1 : 0);
    }
    std::uint32_t nextSingle = shared;
    std::uint32_t before = 0;  // states given out so far
    for (unsigned i = 0; i < counts.used; ++i) {
        const std::uint32_t count = counts.counts[i];
        const std::uint8_t symbol = counts.symbols[i];
        if (count == 1) {
            states[nextSingle++] = {0, static_cast<std::uint8_t>(counts.tableBits), symbol};
            continue;
        }
        std::uint32_t number = count;
        for (std::uint32_t quarter = 0; quarter < kQuarters; ++quarter) {
            const std::uint32_t share = (count + ((before - quarter - 1) & 3)) >> 2;
            for (std::uint32_t j = 0; j < share; ++j, ++number) {
                const auto bits = counts.tableBits + 1 - static_cast<unsigned>(std::bit_width(number));
                const std::uint32_t base = (number << bits) & (size - 1);
                states[next[quarter]++] = {static_cast<std::uint16_t>(base), static_cast<std::uint8_t>(bits),
                                           symbol};
            }
        }
        before += count;
    }
}

}  // namespace oo2
