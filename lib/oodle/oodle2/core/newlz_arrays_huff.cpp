#include "oodle/oodle2/core/newlz_arrays_huff.h"

#include <algorithm>

#include "oodle/oodle2/core/fast_bits.h"
#include "oodle/oodle2/core/oodlebase.h"

namespace oo2 {
namespace {

constexpr std::size_t kStreams = 3;
constexpr std::size_t kIndexMask = kHuffTableSize - 1;

template <Direction kDirection>
std::uint8_t NextSymbol(LsbReader<kDirection>& reader, const HuffTable& table) {
    const std::uint16_t entry = table.entries[reader.Window() & kIndexMask];
    reader.Skip(entry & 0xFF);
    return static_cast<std::uint8_t>(entry >> 8);
}

}  // namespace

bool HuffBlock::Open(std::span<const std::uint8_t> comp, std::span<std::uint8_t> out,
                     const HuffTable& table) {
    if (comp.size() < 2) return false;
    m_lengthA = Load<std::uint16_t>(comp.data());
    m_streams = comp.subspan(2);
    if (!Check(m_streams.size() >= m_lengthA + 2,
               "OODLE ERROR : corruption : (comp_end-comp_start) >= comp_len1 + 2\n")) {
        return false;
    }
    m_table = &table;
    m_out = out;
    m_a = LsbReader<Direction::Forward>(m_streams.first(m_lengthA));
    m_b = LsbReader<Direction::Backward>(m_streams.subspan(m_lengthA));
    m_c = LsbReader<Direction::Forward>(m_streams.subspan(m_lengthA));
    return true;
}

bool HuffBlock::Finish() {
    // The fast loop stops after whole turns, so the first byte left is stream A's.
    for (std::size_t i = 0; i < m_out.size(); ++i) {
        switch (i % kStreams) {
            case 0:
                m_out[i] = NextSymbol(m_a, *m_table);
                break;
            case 1:
                m_out[i] = NextSymbol(m_b, *m_table);
                break;
            default:
                m_out[i] = NextSymbol(m_c, *m_table);
                break;
        }
    }
    return m_a.BytesUsed() == m_lengthA && m_b.BytesUsed() + m_c.BytesUsed() == m_streams.size() - m_lengthA;
}

// The windows of the three streams. A may read past its end, and B and C past each other. All of that is
// within the block. If a stream also takes such bits, the test at the end fails.
struct HuffBlock::Lanes {
    static constexpr std::size_t kTurns = FastBits<Direction::Forward>::kBits / kMaxCodeLength;
    static constexpr std::size_t kSymbolsPerRound = kStreams * kTurns;

    explicit Lanes(const HuffBlock& block)
        : table(block.m_table),
          a(block.m_streams.first(block.m_lengthA), block.m_a),
          b(block.m_streams, block.m_b),
          c(block.m_streams.subspan(block.m_lengthA), block.m_c),
          memory(block.m_streams),
          out(block.m_out.data()),
          outLeft(block.m_out.size()) {}

    // How many rounds the loop may run before it must ask again.
    std::size_t SafeRounds() const {
        return std::min(
            {outLeft / kSymbolsPerRound, a.SafeRounds(memory), b.SafeRounds(memory), c.SafeRounds(memory)});
    }

    void Refill() {
        a.Refill();
        b.Refill();
        c.Refill();
    }

    template <Direction kDirection>
    static std::uint8_t Next(FastBits<kDirection>& lane, const HuffTable& table) {
        const std::uint16_t entry = table.entries[lane.bits & kIndexMask];
        lane.bits >>= entry & 0xFF;
        return static_cast<std::uint8_t>(entry >> 8);
    }

    void Turn(std::size_t turn) {
        std::uint8_t* const to = out + kStreams * turn;
        to[0] = Next(a, *table);
        to[1] = Next(b, *table);
        to[2] = Next(c, *table);
    }

    void EndRounds(std::size_t rounds) { outLeft -= rounds * kSymbolsPerRound; }

    void Store(HuffBlock& block) const {
        block.m_out = block.m_out.last(outLeft);
        block.m_a.Skip(a.BitsUsed() - block.m_a.BitsUsed());
        block.m_b.Skip(b.BitsUsed() - block.m_b.BitsUsed());
        block.m_c.Skip(c.BitsUsed() - block.m_c.BitsUsed());
    }

    const HuffTable* table;
    FastBits<Direction::Forward> a;
    FastBits<Direction::Backward> b;
    FastBits<Direction::Forward> c;
    std::span<const std::uint8_t> memory;
    std::uint8_t* out;
    std::size_t outLeft;
};

bool HuffBlock::CanRunFast() const { return Lanes(*this).SafeRounds() > 0; }

void HuffBlock::RunFast(HuffBlock& block) {
    Lanes lanes(block);
    while (const std::size_t rounds = lanes.SafeRounds()) {
        for (std::size_t round = 0; round < rounds; ++round) {
            lanes.Refill();
#pragma GCC unroll 8
            for (std::size_t turn = 0; turn < Lanes::kTurns; ++turn) lanes.Turn(turn);
            lanes.out += Lanes::kSymbolsPerRound;
        }
        lanes.EndRounds(rounds);
    }
    lanes.Store(block);
}

void HuffBlock::RunFast(HuffBlock& block0, HuffBlock& block1) {
    Lanes lanes0(block0);
    Lanes lanes1(block1);
    while (const std::size_t rounds = std::min(lanes0.SafeRounds(), lanes1.SafeRounds())) {
        for (std::size_t round = 0; round < rounds; ++round) {
            lanes0.Refill();
            lanes1.Refill();
#pragma GCC unroll 8
            for (std::size_t turn = 0; turn < Lanes::kTurns; ++turn) {
                lanes0.Turn(turn);
                lanes1.Turn(turn);
            }
            lanes0.out += Lanes::kSymbolsPerRound;
            lanes1.out += Lanes::kSymbolsPerRound;
        }
        lanes0.EndRounds(rounds);
        lanes1.EndRounds(rounds);
    }
    lanes0.Store(block0);
    lanes1.Store(block1);
}

// The compressed bytes: the description of the code, padded to a whole byte; then one block, or two in split
// framing. A code with a single symbol has no block: the array repeats that symbol.
bool HuffBatch::Add(std::span<const std::uint8_t> comp, std::span<std::uint8_t> out, bool split) {
    MsbReader<Direction::Forward> in(comp);
    HuffCode code;
    if (!ReadHuffCode(in, code) || in.IsPastEnd()) return false;
    comp = comp.subspan(in.BytesUsed());
    if (code.SymbolCount() == 1) {
        std::memset(out.data(), code.LastSymbol(), out.size());
        return comp.empty();
    }
    if (m_tableCount == kMaxArrays) return false;
    HuffTable& table = m_tables[m_tableCount++];
    if (!table.Build(code)) return false;
    return split ? AddSplit(comp, out, table) : m_blocks[m_blockCount++].Open(comp, out, table);
}

// Split framing: 3 bytes, little-endian, the length of the first block; the first block, with the first half
// of the output, rounded up; the second block, with the rest.
bool HuffBatch::AddSplit(std::span<const std::uint8_t> comp, std::span<std::uint8_t> out,
                         const HuffTable& table) {
    constexpr std::size_t kLeast = 6;
    if (comp.size() < kLeast) return false;
    const std::size_t length0 = static_cast<std::size_t>(comp[0]) | static_cast<std::size_t>(comp[1]) << 8 |
                                static_cast<std::size_t>(comp[2]) << 16;
    comp = comp.subspan(3);
    if (length0 > comp.size()) return false;
    const std::size_t half = (out.size() + 1) / 2;
    return m_blocks[m_blockCount++].Open(comp.first(length0), out.first(half), table) &&
           m_blocks[m_blockCount++].Open(comp.subspan(length0), out.subspan(half), table);
}

// Runs two blocks at a time while there are two.
void HuffBatch::RunFast() {
    std::size_t next = 0;
    const auto take = [&]() -> HuffBlock* {
        while (next < m_blockCount) {
            HuffBlock& block = m_blocks[next++];
            if (block.CanRunFast()) return &block;
        }
        return nullptr;
    };
    HuffBlock* first = take();
    HuffBlock* second = take();
    while (first && second) {
        HuffBlock::RunFast(*first, *second);
        if (!first->CanRunFast()) first = take();
        if (!second->CanRunFast()) second = take();
    }
    if (first) HuffBlock::RunFast(*first);
    if (second) HuffBlock::RunFast(*second);
}

bool HuffBatch::Run(DecodePath path) {
    if (path == DecodePath::Fast) RunFast();
    for (std::size_t i = 0; i < m_blockCount; ++i) {
        if (!m_blocks[i].Finish()) return false;
    }
    return true;
}

}  // namespace oo2
