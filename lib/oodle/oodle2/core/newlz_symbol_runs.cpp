#include "oodle/oodle2/core/newlz_symbol_runs.h"

#include <algorithm>
#include <bit>

namespace oo2 {
namespace {

constexpr unsigned kMaxGapNumber = 7;
constexpr unsigned kMaxRunNumber = 8;

// A number below `limit` in truncated binary: y = bit_width(limit - 1) bits; the smallest values take y - 1.
unsigned ReadBelow(MsbReader<Direction::Forward>& in, unsigned limit) {
    const auto bits = static_cast<unsigned>(std::bit_width(limit - 1));
    const unsigned unusedCodes = (1u << bits) - limit;
    const unsigned value = in.Peek(bits);
    if (value >> 1 < unusedCodes) {
        in.Skip(bits - 1);
        return value >> 1;
    }
    in.Skip(bits);
    return value - unusedCodes;
}

bool ReadNumbers(MsbReader<Direction::Forward>& in, std::uint8_t* numbers, unsigned count) {
    for (unsigned i = 0; i < count; ++i) {
        const unsigned number = in.ReadUnary();
        if (number >= kEndlessUnary) return false;
        numbers[i] = static_cast<std::uint8_t>(number);
    }
    return true;
}

// The gap before a run: at least 1 behind another run. Its run number tells how many bits it has.
unsigned ReadGap(MsbReader<Direction::Forward>& in, unsigned number) {
    return in.Read(number + 1) + (2u << number) - 1;
}

}  // namespace

bool ReadUnaryNumbers(MsbReader<Direction::Forward>& in, UsedSymbols& used) {
    used.runNumberCount =
        used.count == kSymbols ? 0 : ReadBelow(in, 2 * std::min(kSymbols + 1 - used.count, used.count));
    return ReadNumbers(in, used.numbers.data(), used.count) &&
           ReadNumbers(in, used.runNumbers.data(), used.runNumberCount);
}

// If the count of run numbers is odd, the first one is for a gap before all symbols. Then come pairs: a run
// and the gap behind it. The last run is not sent: it has the rest of the symbols.
bool ReadSymbolRuns(MsbReader<Direction::Forward>& in, UsedSymbols& used) {
    unsigned listed = 0;
    unsigned cursor = 0;
    const auto list = [&](unsigned run) {
        if (run == 0 || run > used.count - listed || cursor > kSymbols || run > kSymbols - cursor)
            return false;
        for (; run > 0; --run) used.symbols[listed++] = static_cast<std::uint8_t>(cursor++);
        return true;
    };

    unsigned next = used.runNumberCount % 2;
    if (next == 1) {
        if (used.runNumbers[0] > kMaxGapNumber) return false;
        cursor = ReadGap(in, used.runNumbers[0]);
    }
    for (; next < used.runNumberCount; next += 2) {
        const unsigned runNumber = used.runNumbers[next];
        const unsigned gapNumber = used.runNumbers[next + 1];
        if (runNumber > kMaxRunNumber || gapNumber > kMaxGapNumber) return false;
        if (!list(in.Read(runNumber) + (1u << runNumber))) return false;
        cursor += ReadGap(in, gapNumber);
    }
    return list(used.count - listed);
}

}  // namespace oo2
