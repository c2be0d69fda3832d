// Normalised counts, the two table descriptions, the coding table and the data of tANS arrays.
#include "lz-writer/tans-writer.h"

#include <array>
#include <cmath>

#include "lz-writer/symbol-runs.h"

namespace lz {
namespace {

constexpr size_t kStates = 5;  // also the bytes that end the array as the states' values

struct Counts {
    unsigned table_bits = 0;
    std::vector<uint8_t> symbols;  // ascending, at least 2
    Histogram of{};                // sums to 2^table_bits
};

// Gives or takes single slots where that changes the coded size least.
void BalanceCounts(Counts& counts, const Histogram& histogram) {
    int64_t missing = int64_t{1} << counts.table_bits;
    for (const uint8_t symbol : counts.symbols) missing -= counts.of[symbol];
    const int step = missing > 0 ? 1 : -1;
    for (; missing != 0; missing -= step) {
        uint8_t best = 0;
        double best_gain = -1e300;
        for (const uint8_t symbol : counts.symbols) {
            const double count = counts.of[symbol];
            if (step < 0 && count < 2) continue;
            const double gain = histogram[symbol] * std::log2((count + step) / count);
            if (gain > best_gain) {
                best_gain = gain;
                best = symbol;
            }
        }
        counts.of[best] = static_cast<uint32_t>(static_cast<int64_t>(counts.of[best]) + step);
    }
}

// The last five bytes are not coded with the table, so they do not count.
Counts NormalisedCounts(ByteSpan raw, unsigned table_bits) {
    Histogram histogram = CountBytes(raw.first(raw.size() - kStates));
    for (unsigned filler = 0; UsedSymbols(histogram).size() < 2; ++filler) {
        if (histogram[filler] == 0) histogram[filler] = 1;
    }
    Counts counts{table_bits, UsedSymbols(histogram), {}};
    uint64_t total = 0;
    for (const uint32_t count : histogram) total += count;
    for (const uint8_t symbol : counts.symbols) {
        const uint64_t share = ((static_cast<uint64_t>(histogram[symbol]) << table_bits) + total / 2) / total;
        counts.of[symbol] = static_cast<uint32_t>(std::max<uint64_t>(1, share));
    }
    BalanceCounts(counts, histogram);
    return counts;
}

// What a dense table sends for each count, before its exponential code: the distance to a running average
// where that is small, the count itself where it is not.
std::vector<unsigned> DenseValues(const Counts& counts) {
    std::vector<unsigned> values;
    int average = 6;
    for (const uint8_t symbol : counts.symbols) {
        const int v = static_cast<int>(counts.of[symbol]) - 1;
        const int a = average >> 2;
        const int limit = 2 * a;
        values.push_back(v <= limit ? UnsignedOf(v - a) : static_cast<unsigned>(v));
        average += std::min(limit, v) - a;
    }
    return values;
}

Coded DescribeDense(const Counts& counts, unsigned q) {
    const SymbolRuns runs(counts.symbols);
    MsbWriter out;
    out.Put(0, 1);
    out.Put(counts.table_bits - 8, 2);
    out.Put(1, 1);
    out.Put(q, 3);
    out.Put(runs.used - 1, 8);
    runs.PutExponentCount(out);
    std::vector<Field> fields;
    for (const unsigned v : DenseValues(counts)) {
        const unsigned bits = FloorLog2(v + (1U << q));
        out.PutUnary(bits - q);
        fields.push_back({v + (1U << q) - (1U << bits), bits});
    }
    for (const unsigned exponent : runs.exponents) out.PutUnary(exponent);
    for (const Field tail : runs.tails) out.Put(tail);
    for (const Field field : fields) out.Put(field);
    return {out.Finish()};
}

// At most nine symbols, by ascending count, the last one's count being what is left of the table.
std::optional<Coded> DescribeSparse(const Counts& counts) {
    std::vector<uint8_t> order = counts.symbols;
    std::stable_sort(order.begin(), order.end(),
                     [&](uint8_t a, uint8_t b) { return counts.of[a] < counts.of[b]; });
    if (order.size() > 9 || counts.of[order.back()] < 2) return std::nullopt;
    uint32_t largest_delta = 1;
    for (size_t i = 0; i + 1 < order.size(); ++i) {
        largest_delta = std::max(largest_delta, counts.of[order[i]] - (i > 0 ? counts.of[order[i - 1]] : 0));
    }
    const unsigned width = FloorLog2(largest_delta) + 1;
    if (width > counts.table_bits) return std::nullopt;
    MsbWriter out;
    out.Put(0, 1);
    out.Put(counts.table_bits - 8, 2);
    out.Put(0, 1);
    out.Put(static_cast<uint32_t>(order.size() - 2), 3);
    out.Put(width, 4);
    uint32_t weight = 0;
    for (size_t i = 0; i + 1 < order.size(); ++i) {
        out.Put(order[i], 8);
        out.Put(counts.of[order[i]] - weight, width);
        weight = counts.of[order[i]];
    }
    out.Put(order.back(), 8);
    return Coded{out.Finish()};
}

Coded Describe(const Counts& counts) {
    std::optional<Coded> best = DescribeSparse(counts);
    for (unsigned q = 0; q <= 7; ++q) {
        Coded candidate = DescribeDense(counts, q);
        if (!best || candidate.size() < best->size()) best = std::move(candidate);
    }
    return *best;
}

// For each symbol, the table slots of its state numbers count .. 2 * count - 1.
using Slots = std::array<std::vector<uint16_t>, 256>;

Slots AssignSlots(const Counts& counts) {
    const uint32_t size = 1U << counts.table_bits;
    uint32_t singles = 0;
    for (const uint8_t symbol : counts.symbols) singles += counts.of[symbol] == 1 ? 1U : 0U;
    std::array<uint32_t, 4> next{};  // free slot of each quarter of the others
    for (uint32_t quarter = 0, start = 0; quarter < 4; ++quarter) {
        next[quarter] = start;
        start += ((size - singles) >> 2) + (quarter < ((size - singles) & 3) ? 1 : 0);
    }
    uint32_t single = size - singles;
    uint32_t before = 0;
    Slots slots;
    for (const uint8_t symbol : counts.symbols) {
        const uint32_t count = counts.of[symbol];
        if (count == 1) {
            slots[symbol].push_back(static_cast<uint16_t>(single++));
            continue;
        }
        for (uint32_t quarter = 0; quarter < 4; ++quarter) {
            const uint32_t share = (count + ((before - quarter - 1) & 3)) >> 2;
            for (uint32_t i = 0; i < share; ++i)
                slots[symbol].push_back(static_cast<uint16_t>(next[quarter]++));
        }
        before += count;
    }
    return slots;
}

// Runs the decoder's steps from the last to the first, then writes what they read, first to last.
Bytes EncodeData(ByteSpan raw, const Counts& counts) {
    const Slots slots = AssignSlots(counts);
    const size_t steps = raw.size() - kStates;
    std::array<uint32_t, kStates> states{};
    for (size_t i = 0; i < kStates; ++i) states[i] = raw[steps + i];
    std::vector<Field> fields(steps);
    for (size_t i = steps; i-- > 0;) {
        uint32_t& state = states[i % kStates];
        const uint32_t full = state + (1U << counts.table_bits);
        const uint32_t count = counts.of[raw[i]];
        unsigned bits = counts.table_bits - FloorLog2(count);
        if ((full >> bits) < count) --bits;
        fields[i] = {full & ((1U << bits) - 1), bits};
        state = slots[raw[i]][(full >> bits) - count];
    }
    std::array<LsbWriter, 2> ends;
    for (size_t i = 0; i < kStates; ++i) ends[i % 2].Put(states[i], counts.table_bits);
    for (size_t i = 0; i < steps; ++i) ends[i % 10 < 5 ? 0 : 1].Put(fields[i].value, fields[i].bits);
    Bytes out = ends[0].Finish();
    const Bytes back = Reversed(ends[1].Finish());
    out.insert(out.end(), back.begin(), back.end());
    return out;
}

}  // namespace

std::optional<Coded> EncodeTans(ByteSpan raw) {
    if (raw.size() < kStates + 1) return std::nullopt;
    const Counts counts = NormalisedCounts(raw, std::clamp(FloorLog2(raw.size()) - 1, 8U, 11U));
    Coded out = Describe(counts);
    out.Append(EncodeData(raw, counts));
    if (out.size() < 8) return std::nullopt;
    return out;
}

}  // namespace lz
