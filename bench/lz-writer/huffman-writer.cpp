// Code lengths, the three descriptions and the data streams of Huffman arrays.
#include "lz-writer/huffman-writer.h"

#include <array>

#include "lz-writer/symbol-runs.h"

namespace lz {
namespace {

constexpr unsigned kMaxLength = 11;

struct Code {
    std::vector<uint8_t> symbols;          // in the order of the description
    std::array<uint8_t, 256> lengths{};    // 0: not used
    std::array<uint16_t, 256> patterns{};  // first bit of the code in bit 0
};

struct Package {
    uint64_t weight = 0;
    std::vector<uint8_t> symbols;
};

bool Lighter(const Package& a, const Package& b) { return a.weight < b.weight; }

std::vector<Package> Leaves(const Histogram& histogram) {
    std::vector<Package> leaves;
    for (const uint8_t symbol : UsedSymbols(histogram)) leaves.push_back({histogram[symbol], {symbol}});
    std::stable_sort(leaves.begin(), leaves.end(), Lighter);
    return leaves;
}

// Package-merge: the best code with lengths of at most 11 bits. It is always complete.
std::array<uint8_t, 256> CodeLengths(const Histogram& histogram) {
    const std::vector<Package> leaves = Leaves(histogram);
    std::array<uint8_t, 256> lengths{};
    if (leaves.size() == 1) {
        lengths[leaves[0].symbols[0]] = 1;
        return lengths;
    }
    std::vector<Package> row = leaves;
    for (unsigned level = 1; level < kMaxLength; ++level) {
        std::vector<Package> pairs;
        for (size_t i = 0; i + 1 < row.size(); i += 2) {
            Package pair{row[i].weight + row[i + 1].weight, row[i].symbols};
            pair.symbols.insert(pair.symbols.end(), row[i + 1].symbols.begin(), row[i + 1].symbols.end());
            pairs.push_back(std::move(pair));
        }
        row.clear();
        std::merge(leaves.begin(), leaves.end(), pairs.begin(), pairs.end(), std::back_inserter(row),
                   Lighter);
    }
    for (size_t i = 0; i < 2 * leaves.size() - 2; ++i) {
        for (const uint8_t symbol : row[i].symbols) ++lengths[symbol];
    }
    return lengths;
}

uint16_t ReversedBits(unsigned value, unsigned bits) {
    unsigned reversed = 0;
    for (unsigned i = 0; i < bits; ++i) reversed |= ((value >> i) & 1) << (bits - 1 - i);
    return static_cast<uint16_t>(reversed);
}

// Canonical: shorter codes first, equal lengths in the order of the description, the first code all zeros.
Code MakeCode(const Histogram& histogram) {
    Code code;
    code.lengths = CodeLengths(histogram);
    code.symbols = UsedSymbols(histogram);
    unsigned next = 0;
    for (unsigned length = 1; length <= kMaxLength; ++length, next <<= 1) {
        for (const uint8_t symbol : code.symbols) {
            if (code.lengths[symbol] == length) code.patterns[symbol] = ReversedBits(next++, length);
        }
    }
    return code;
}

// z zeros, then run + 1 in z + 2 bits.
void PutGammaRun(MsbWriter& out, unsigned run) {
    const unsigned log = FloorLog2(run + 1);
    out.Put(0, log - 1);
    out.Put(run + 1, log + 1);
}

Coded DescribeDense(const Code& code, unsigned f) {
    MsbWriter out;
    out.Put(0b01, 2);
    out.Put(f, 2);
    out.Put(code.lengths[0] != 0 ? 1 : 0, 1);
    int average = 32;
    for (unsigned symbol = 0; symbol < 256;) {
        const bool used = code.lengths[symbol] != 0;
        unsigned end = symbol;
        while (end < 256 && (code.lengths[end] != 0) == used) ++end;
        PutGammaRun(out, end - symbol);
        for (; symbol < end; ++symbol) {
            if (!used) continue;
            const int length = code.lengths[symbol];
            const unsigned v = UnsignedOf(length - ((average + 2) >> 2));
            out.PutUnary(v >> f);
            out.Put(v & ((1U << f) - 1), f);
            average = length + ((3 * average + 2) >> 2);
        }
    }
    return {out.Finish()};
}

Coded DescribeSparse(const Code& code) {
    MsbWriter out;
    out.Put(0b00, 2);
    out.Put(static_cast<uint32_t>(code.symbols.size()), 8);
    if (code.symbols.size() == 1) {
        out.Put(code.symbols[0], 8);
        return {out.Finish()};
    }
    const unsigned longest = *std::max_element(code.lengths.begin(), code.lengths.end());
    const unsigned width = static_cast<unsigned>(std::bit_width(longest - 1));
    out.Put(width, 3);
    for (const uint8_t symbol : code.symbols) {
        out.Put(symbol, 8);
        out.Put(code.lengths[symbol] - 1U, width);
    }
    return {out.Finish()};
}

Coded DescribeSecond(const Code& code, unsigned f) {
    const SymbolRuns runs(code.symbols);
    MsbWriter out;
    out.Put(0b10, 2);
    out.Put(f, 2);
    out.Put(runs.used - 1, 8);
    runs.PutExponentCount(out);
    std::vector<unsigned> values;
    int sum = 30;
    for (const uint8_t symbol : code.symbols) {
        const int step = code.lengths[symbol] - 1 - (sum >> 2);
        values.push_back(UnsignedOf(step));
        sum += step;
    }
    for (const unsigned v : values) out.PutUnary(v >> f);
    for (const unsigned exponent : runs.exponents) out.PutUnary(exponent);
    for (const unsigned v : values) out.Put(v & ((1U << f) - 1), f);
    for (const Field tail : runs.tails) out.Put(tail);
    return {out.Finish()};
}

// The cheapest description.
Coded Describe(const Code& code) {
    const size_t used = code.symbols.size();
    Coded best = DescribeSecond(code, 0);
    const auto offer = [&best](Coded candidate) {
        if (candidate.size() < best.size()) best = std::move(candidate);
    };
    for (unsigned f = 0; f <= 3; ++f) {
        if (used > 1) offer(DescribeDense(code, f));
        offer(DescribeSecond(code, f));
    }
    if (used <= 16) offer(DescribeSparse(code));
    return best;
}

// Three streams in turn: A forwards, C forwards after it, B backwards from the end.
std::optional<Coded> EncodeBlock(ByteSpan raw, const Code& code) {
    std::array<LsbWriter, 3> streams;
    for (size_t i = 0; i < raw.size(); ++i) {
        streams[i % 3].Put(code.patterns[raw[i]], code.lengths[raw[i]]);
    }
    const Bytes a = streams[0].Finish();
    const Bytes b = Reversed(streams[1].Finish());
    const Bytes c = streams[2].Finish();
    if (a.size() > 0xFFFF || b.size() + c.size() < 2) return std::nullopt;
    Coded block;
    block.AppendLittle(a.size(), 2);
    block.Append(a);
    block.Append(c);
    block.Append(b);
    return block;
}

}  // namespace

std::optional<Coded> EncodeHuffman(ByteSpan raw, bool split) {
    const Code code = MakeCode(CountBytes(raw));
    Coded out = Describe(code);
    if (code.symbols.size() == 1) return out;
    const size_t first_half = split ? (raw.size() + 1) / 2 : raw.size();
    const std::optional<Coded> first = EncodeBlock(raw.first(first_half), code);
    if (!first) return std::nullopt;
    if (split) out.AppendLittle(first->size(), 3);
    out.Append(*first);
    if (!split) return out;
    const std::optional<Coded> second = EncodeBlock(raw.subspan(first_half), code);
    if (!second) return std::nullopt;
    out.Append(*second);
    return out;
}

}  // namespace lz
