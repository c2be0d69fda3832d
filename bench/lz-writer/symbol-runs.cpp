// Histogram and runs of used symbols.
#include "lz-writer/symbol-runs.h"

namespace lz {
namespace {

// p below x in floor(log2(x - 1)) bits where possible, one more otherwise.
void PutShortRange(MsbWriter& out, unsigned p, unsigned x) {
    const unsigned bits = FloorLog2(x - 1) + 1;
    const unsigned short_codes = (1U << bits) - x;
    if (p < short_codes) {
        out.Put(p, bits - 1);
    } else {
        out.Put(p + short_codes, bits);
    }
}

}  // namespace

Histogram CountBytes(ByteSpan raw) {
    Histogram histogram{};
    for (const uint8_t byte : raw) ++histogram[byte];
    return histogram;
}

std::vector<uint8_t> UsedSymbols(const Histogram& histogram) {
    std::vector<uint8_t> symbols;
    for (unsigned symbol = 0; symbol < 256; ++symbol) {
        if (histogram[symbol] != 0) symbols.push_back(static_cast<uint8_t>(symbol));
    }
    return symbols;
}

SymbolRuns::SymbolRuns(const std::vector<uint8_t>& symbols) : used(static_cast<unsigned>(symbols.size())) {
    const auto put_gap = [this](unsigned gap) {
        const unsigned k = FloorLog2(gap + 1) - 1;
        exponents.push_back(k);
        tails.push_back({gap + 1 - (2U << k), k + 1});
    };
    const auto put_run = [this](unsigned run) {
        const unsigned k = FloorLog2(run);
        exponents.push_back(k);
        tails.push_back({run - (1U << k), k});
    };
    if (symbols.front() != 0) put_gap(symbols.front());
    unsigned run = 1;
    for (size_t i = 1; i < symbols.size(); ++i) {
        const unsigned gap = symbols[i] - symbols[i - 1] - 1U;
        if (gap == 0) {
            ++run;
            continue;
        }
        put_run(run);
        put_gap(gap);
        run = 1;
    }
}

void SymbolRuns::PutExponentCount(MsbWriter& out) const {
    if (used == 256) return;
    PutShortRange(out, static_cast<unsigned>(exponents.size()), 2 * std::min(257 - used, used));
}

}  // namespace lz
