// Huffman arrays. The symbols of a block are dealt to three streams in turn, so that three look-ups are under
// way at any time: each by itself would wait for its own shift.
#include "oodle/oodle2/core/fast_bits.h"
#include "oodle/oodle2/core/newlz_arrays.h"
#include "oodle/oodle2/core/newlz_huff_code.h"
#include "oodle/oodle2/core/oodlebase.h"

namespace oo2 {
namespace {

constexpr std::size_t kStreams = 3;
constexpr std::size_t kIndexMask = kHuffTableSize - 1;

// A block of n output bytes:
//   2 bytes   length of A, little-endian
//   A         output bytes 0, 3, 6, ...: LSB forward
//   C         output bytes 2, 5, 8, ...: LSB forward, from the byte after A
//   B         output bytes 1, 4, 7, ...: LSB backward, from the block's end; it ends where C does
class HuffBlock {
  public:
    // False if the block has no room for what it must hold.
    bool Open(std::span<const std::uint8_t> comp, std::span<std::uint8_t> out);

    // Decodes up to the block's end; false if A does not end where C begins, or C not where B ends.
    bool Finish(const HuffTable& table);

    // Decode most of one or two blocks.
    static void RunFast(HuffBlock& block, const HuffTable& table);
    static void RunFast(HuffBlock& block0, HuffBlock& block1, const HuffTable& table);

  private:
    struct Lanes;

    std::span<const std::uint8_t> streams_;  // A, C and B
    std::size_t lengthA_ = 0;
    std::span<std::uint8_t> out_;  // what is not decoded yet
    LsbReader<Direction::Forward> a_{{}};
    LsbReader<Direction::Backward> b_{{}};
    LsbReader<Direction::Forward> c_{{}};
};

bool HuffBlock::Open(std::span<const std::uint8_t> comp, std::span<std::uint8_t> out) {
    if (comp.size() < 2) return false;
    lengthA_ = Load<std::uint16_t>(comp.data());
    streams_ = comp.subspan(2);
    if (!Check(streams_.size() >= lengthA_ + 2,
               "OODLE ERROR : corruption : (comp_end-comp_start) >= comp_len1 + 2\n")) {
        return false;
    }
    out_ = out;
    a_ = LsbReader<Direction::Forward>(streams_.first(lengthA_));
    b_ = LsbReader<Direction::Backward>(streams_.subspan(lengthA_));
    c_ = LsbReader<Direction::Forward>(streams_.subspan(lengthA_));
    return true;
}

template <Direction kDirection>
std::uint8_t NextSymbol(LsbReader<kDirection>& reader, const HuffTable& table) {
    const std::uint16_t entry = table.entries[reader.Window() & kIndexMask];
    reader.Skip(entry & 0xFF);
    return static_cast<std::uint8_t>(entry >> 8);
}

bool HuffBlock::Finish(const HuffTable& table) {
    // Whatever ran before decoded whole turns.
    for (std::size_t i = 0; i < out_.size(); ++i) {
        switch (i % kStreams) {
            case 0:
                out_[i] = NextSymbol(a_, table);
                break;
            case 1:
                out_[i] = NextSymbol(b_, table);
                break;
            default:
                out_[i] = NextSymbol(c_, table);
                break;
        }
    }
    return a_.BytesUsed() == lengthA_ && b_.BytesUsed() + c_.BytesUsed() == streams_.size() - lengthA_;
}

// The streams' windows. A may be read past its end and C and B past each other, as all of it is within the
// block: what is then consumed there fails the test at the end.
struct HuffBlock::Lanes {
    static constexpr std::size_t kTurns = FastBits<Direction::Forward>::kBits / kMaxCodeLength;
    static constexpr std::size_t kSymbolsPerRound = kStreams * kTurns;

    explicit Lanes(const HuffBlock& block)
        : a(block.streams_.first(block.lengthA_), block.a_),
          b(block.streams_, block.b_),
          c(block.streams_.subspan(block.lengthA_), block.c_),
          memory(block.streams_),
          out(block.out_.data()),
          outLeft(block.out_.size()) {}

    bool CanRun() const {
        return outLeft >= kSymbolsPerRound && a.CanRefill(memory) && b.CanRefill(memory) &&
               c.CanRefill(memory);
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

    void Turn(std::size_t turn, const HuffTable& table) {
        std::uint8_t* const to = out + kStreams * turn;
        to[0] = Next(a, table);
        to[1] = Next(b, table);
        to[2] = Next(c, table);
    }

    void EndRound() {
        out += kSymbolsPerRound;
        outLeft -= kSymbolsPerRound;
    }

    void Store(HuffBlock& block) const {
        block.out_ = block.out_.last(outLeft);
        block.a_.Skip(a.BitsUsed() - block.a_.BitsUsed());
        block.b_.Skip(b.BitsUsed() - block.b_.BitsUsed());
        block.c_.Skip(c.BitsUsed() - block.c_.BitsUsed());
    }

    FastBits<Direction::Forward> a;
    FastBits<Direction::Backward> b;
    FastBits<Direction::Forward> c;
    std::span<const std::uint8_t> memory;
    std::uint8_t* out;
    std::size_t outLeft;
};

void HuffBlock::RunFast(HuffBlock& block, const HuffTable& table) {
    Lanes lanes(block);
    while (lanes.CanRun()) {
        lanes.Refill();
#pragma GCC unroll 8
        for (std::size_t turn = 0; turn < Lanes::kTurns; ++turn) lanes.Turn(turn, table);
        lanes.EndRound();
    }
    lanes.Store(block);
}

void HuffBlock::RunFast(HuffBlock& block0, HuffBlock& block1, const HuffTable& table) {
    Lanes lanes0(block0);
    Lanes lanes1(block1);
    while (lanes0.CanRun() && lanes1.CanRun()) {
        lanes0.Refill();
        lanes1.Refill();
#pragma GCC unroll 8
        for (std::size_t turn = 0; turn < Lanes::kTurns; ++turn) {
            lanes0.Turn(turn, table);
            lanes1.Turn(turn, table);
        }
        lanes0.EndRound();
        lanes1.EndRound();
    }
    lanes0.Store(block0);
    lanes1.Store(block1);
}

bool DecodePlain(std::span<const std::uint8_t> comp, std::span<std::uint8_t> out, const HuffTable& table,
                 DecodePath path) {
    HuffBlock block;
    if (!block.Open(comp, out)) return false;
    if (path == DecodePath::Fast) HuffBlock::RunFast(block, table);
    return block.Finish(table);
}

// Split framing: 3 bytes, little-endian, the length of the first block; that block, with the first half of
// the output, rounded up; and a second block with the rest. The two run side by side.
bool DecodeSplit(std::span<const std::uint8_t> comp, std::span<std::uint8_t> out, const HuffTable& table,
                 DecodePath path) {
    constexpr std::size_t kLeast = 6;
    if (comp.size() < kLeast) return false;
    const std::size_t length0 = static_cast<std::size_t>(comp[0]) | static_cast<std::size_t>(comp[1]) << 8 |
                                static_cast<std::size_t>(comp[2]) << 16;
    comp = comp.subspan(3);
    if (length0 > comp.size()) return false;
    const std::size_t half = (out.size() + 1) / 2;
    HuffBlock block0;
    HuffBlock block1;
    if (!block0.Open(comp.first(length0), out.first(half)) ||
        !block1.Open(comp.subspan(length0), out.subspan(half))) {
        return false;
    }
    if (path == DecodePath::Fast) {
        HuffBlock::RunFast(block0, block1, table);
        HuffBlock::RunFast(block0, table);
        HuffBlock::RunFast(block1, table);
    }
    return block0.Finish(table) && block1.Finish(table);
}

}  // namespace

// The compressed bytes: the code's description, to the end of its last byte; then, unless the code has a
// single symbol, of which the whole array is made, one block, or two in the split framing.
bool newLZ_decode_huff(std::span<const std::uint8_t> comp, std::span<std::uint8_t> out, bool split,
                       DecodePath path) {
    MsbReader<Direction::Forward> in(comp);
    HuffCode code;
    if (!ReadHuffCode(in, code) || in.IsPastEnd()) return false;
    comp = comp.subspan(in.BytesUsed());
    if (code.SymbolCount() == 1) {
        std::memset(out.data(), code.LastSymbol(), out.size());
        return comp.empty();
    }
    HuffTable table;
    if (!table.Build(code)) return false;
    return split ? DecodeSplit(comp, out, table, path) : DecodePlain(comp, out, table, path);
}

}  // namespace oo2
