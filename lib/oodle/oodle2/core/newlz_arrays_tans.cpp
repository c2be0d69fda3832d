#include "oodle/oodle2/core/newlz_arrays_tans.h"

#include <algorithm>
#include <array>

#include "oodle/oodle2/core/fast_bits.h"
#include "oodle/oodle2/core/newlz_tans.h"
#include "oodle/oodle2/core/oodlebase.h"

namespace oo2 {
namespace {

constexpr std::size_t kStates = 5;
constexpr std::size_t kLeastComp = 8;
constexpr std::uint32_t kLargestLastState = 255;

// Data: F, LSB forward from its first byte, and R, LSB backward from its last. They end where they meet.
//   five states      the table's bits each: 0, 2 and 4 from F, 1 and 3 from R
//   output bytes     byte i is the symbol of state i % 5; the state's next bits come from F for five bytes,
//                    then from R for five bytes, and so on
// The last five output bytes are the states themselves.
class TansDecoder {
  public:
    TansDecoder(std::span<const std::uint8_t> data, const TansTable& table, std::span<std::uint8_t> out)
        : m_data(data), m_table(table), m_out(out), m_forward(data), m_backward(data) {}

    bool Start(unsigned tableBits);
    void RunFast();
    bool Finish();

  private:
    bool EndsMeet() const;

    const std::span<const std::uint8_t> m_data;
    const TansTable& m_table;
    const std::span<std::uint8_t> m_out;
    std::size_t m_done = 0;  // of m_out
    LsbReader<Direction::Forward> m_forward;
    LsbReader<Direction::Backward> m_backward;
    std::array<std::uint32_t, kStates> m_states{};
};

bool TansDecoder::Start(unsigned tableBits) {
    for (std::size_t i = 0; i < kStates; ++i)
        m_states[i] = i % 2 == 0 ? m_forward.Read(tableBits) : m_backward.Read(tableBits);
    return Check(m_forward.BytesUsed() + m_backward.BytesUsed() <= m_data.size(),
                 "OODLE ERROR : corruption : in1 >= in0\n");
}

template <typename Reader>
std::uint8_t StepState(std::uint32_t& state, Reader& reader, const TansTable& table) {
    const TansState at = table.states[state];
    state = at.base + reader.Read(at.bits);
    return at.symbol;
}

template <Direction kDirection>
void StepFast(std::uint32_t& state, FastBits<kDirection>& window, const TansTable& table, std::uint8_t& out) {
    const TansState at = table.states[state];
    state = at.base + (static_cast<std::uint32_t>(window.bits) & ((1u << at.bits) - 1));
    window.bits >>= at.bits;
    out = at.symbol;
}

constexpr std::size_t kStepsPerRefill = FastBits<Direction::Forward>::kBits / kMaxTansBits;
constexpr std::size_t kRefillsPerFive = (kStates + kStepsPerRefill - 1) / kStepsPerRefill;

// Five steps on one reader, with as few refills as its word allows.
template <Direction kDirection>
void RunFive(std::array<std::uint32_t, kStates>& states, FastBits<kDirection>& window, const TansTable& table,
             std::uint8_t* out) {
#pragma GCC unroll 8
    for (std::size_t i = 0; i < kStates; ++i) {
        if (i % kStepsPerRefill == 0) window.Refill();
        StepFast(states[i], window, table, out[i]);
    }
}

void TansDecoder::RunFast() {
    constexpr std::size_t kRound = 2 * kStates;
    FastBits<Direction::Forward> forward(m_data, m_forward);
    FastBits<Direction::Backward> backward(m_data, m_backward);
    std::array<std::uint32_t, kStates> states = m_states;
    std::uint8_t* out = m_out.data();
    const auto safeRounds = [&] {
        const std::size_t left = m_out.size() - kStates - m_done;
        return std::min({left / kRound, forward.SafeRounds(m_data) / kRefillsPerFive,
                         backward.SafeRounds(m_data) / kRefillsPerFive});
    };
    while (const std::size_t rounds = safeRounds()) {
        for (std::size_t round = 0; round < rounds; ++round) {
            RunFive(states, forward, m_table, out);
            RunFive(states, backward, m_table, out + kStates);
            out += kRound;
        }
        m_done += rounds * kRound;
    }
    m_states = states;
    m_forward.Skip(forward.BitsUsed() - m_forward.BitsUsed());
    m_backward.Skip(backward.BitsUsed() - m_backward.BitsUsed());
}

bool TansDecoder::Finish() {
    // The fast loop stops after whole rounds of ten, so the next byte is the first of a round.
    const std::size_t end = m_out.size() - kStates;
    for (std::size_t i = 0; m_done < end; ++i, ++m_done) {
        std::uint32_t& state = m_states[i % kStates];
        const bool isForward = i % (2 * kStates) < kStates;
        m_out[m_done] =
            isForward ? StepState(state, m_forward, m_table) : StepState(state, m_backward, m_table);
    }
    if (!EndsMeet()) return false;
    std::uint32_t all = 0;
    for (const std::uint32_t state : m_states) {
        all |= state;
        m_out[m_done++] = static_cast<std::uint8_t>(state);
    }
    return Check(all <= kLargestLastState, "OODLE ERROR : corruption : tans_states_or <= 255\n");
}

bool TansDecoder::EndsMeet() const {
    const std::size_t used = m_forward.BytesUsed() + m_backward.BytesUsed();
    return Check(used <= m_data.size(), "OODLE ERROR : corruption : in_left >= 0\n") &&
           Check(used == m_data.size(),
                 "OODLE ERROR : corruption : rrPtrDiff(in1 - in0) == (SINTa)final_nbytes\n");
}

}  // namespace

// The compressed bytes: the description of the table, padded to a whole byte; then the data.
bool newLZ_decode_tans(std::span<const std::uint8_t> comp, std::span<std::uint8_t> out, DecodePath path) {
    if (!Check(comp.size() >= kLeastComp, "OODLE ERROR : corruption : comp_len >= 8\n") ||
        !Check(out.size() >= kStates, "OODLE ERROR : corruption : to_len >= 5\n")) {
        return false;
    }
    MsbReader<Direction::Forward> in(comp);
    TansCounts counts;
    if (!ReadTansCounts(in, counts) || in.IsPastEnd()) return false;
    const std::span<const std::uint8_t> data = comp.subspan(in.BytesUsed());
    if (!Check(!data.empty(), "OODLE ERROR : corruption : tans_compLen > 0\n")) return false;

    TansTable table;
    table.Build(counts);
    TansDecoder decoder(data, table, out);
    if (!decoder.Start(counts.tableBits)) return false;
    if (path == DecodePath::Fast) decoder.RunFast();
    return decoder.Finish();
}

}  // namespace oo2
