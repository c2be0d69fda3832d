// Phase 2, and its careful half, which runs the commands that the fast half leaves.
#include "oodle/oodle2/core/newlz_parse.h"

#include <algorithm>
#include <cstring>

#include "oodle/oodle2/core/byte_scan.h"
#include "oodle/oodle2/core/newlz_offsets.h"
#include "oodle/oodle2/core/newlz_parse_fast.h"
#include "oodle/oodle2/core/newlz_parse_state.h"
#include "oodle/oodle2/core/oodlebase.h"

namespace oo2 {
namespace {

// No match reaches back further than this. So the offset kOffsetTooFar is beyond every window.
constexpr std::size_t kLongestReach = kOffsetTooFar - 1 - kMaxChunkLen;

// Whether there are as many offsets and excesses as all commands together take. After this check no other is
// needed.
bool CoverCommands(const ChunkStreams& streams, std::size_t newOffsets) {
    const auto hasLongRun = [](std::uint8_t c) { return Command{c}.RunCode() == kLongRunCode; };
    const auto hasLongMatch = [](std::uint8_t c) { return Command{c}.LengthCode() == kLongMatchCode; };
    const std::size_t excesses =
        CountBytes(streams.commands, hasLongRun) + CountBytes(streams.commands, hasLongMatch);
    return newOffsets <= streams.offsets.size() && excesses <= streams.excesses.size();
}

class Parser {
  public:
    Parser(const Chunk& chunk, const ChunkStreams& streams, std::size_t newOffsets);

    bool Run(DecodePath path);

  private:
    bool RunFast();
    bool RunOne();
    bool CopyLiterals(std::size_t count);
    std::uint32_t TakeOffset(unsigned index);
    bool CopyMatch(std::size_t offset, std::size_t length);

    ParseState m_state;
    ParseTraits m_traits;
    // A copy of the last literals, with kLiteralMargin readable bytes behind them.
    std::array<std::uint8_t, 2 * kLiteralMargin> m_tail;
    bool m_literalsAreInTail = false;
};

Parser::Parser(const Chunk& chunk, const ChunkStreams& streams, std::size_t newOffsets)
    : m_traits{.mode = streams.mode, .mostlyNewOffsets = newOffsets >= streams.commands.size() / 16 * 15} {
    m_state.out = chunk.context.Out();
    m_state.outEnd = m_state.out + chunk.rawLen;
    m_state.windowStart = m_state.out - std::min(chunk.context.BytesSinceReset(), kLongestReach);
    m_state.commands = Cursor(streams.commands);
    m_state.literals = Cursor(streams.literals);
    m_state.offsets = Cursor(streams.offsets);
    m_state.excesses = Cursor(streams.excesses);
    if (!streams.head.empty()) std::memcpy(m_state.out, streams.head.data(), kHeadLen);
    m_state.out += streams.head.size();
}

bool Parser::Run(DecodePath path) {
    if (m_state.Written() < kFirstOffset) return false;
    for (;;) {
        if (path == DecodePath::Fast && !RunFast()) return false;
        if (m_state.commands.Left() == 0) break;
        if (!RunOne()) return false;
    }
    return m_state.literals.Left() == m_state.OutLeft() && CopyLiterals(m_state.OutLeft());
}

bool Parser::RunFast() {
    if (!m_literalsAreInTail) {
        if (!ParseFast(m_state, m_traits, 0)) return false;
        const std::size_t left = m_state.literals.Left();
        if (left >= kLiteralMargin) return true;
        std::copy_n(m_state.literals.next, left, m_tail.begin());
        std::fill(m_tail.begin() + static_cast<std::ptrdiff_t>(left), m_tail.end(), 0);
        m_state.literals = Cursor(std::span<const std::uint8_t>(m_tail.data(), left));
        m_literalsAreInTail = true;
    }
    return ParseFast(m_state, m_traits, kLiteralMargin);
}

bool Parser::RunOne() {
    const Command command{*m_state.commands.next++};
    std::size_t run = command.RunCode();
    if (run == kLongRunCode) run = *m_state.excesses.next++;
    if (!CopyLiterals(run)) return false;

    const std::uint32_t offset = TakeOffset(command.OffsetIndex());
    if (offset == 0 || offset > m_state.Written()) return false;

    std::size_t length = command.LengthCode() + kShortMatchBase;
    if (command.LengthCode() == kLongMatchCode) {
        length = kLongMatchBase + *m_state.excesses.next++;
        if (m_state.OutLeft() < kLongMatchEndRoom || length > m_state.OutLeft() - kLongMatchEndRoom)
            return false;
    }
    return CopyMatch(offset, length);
}

bool Parser::CopyLiterals(std::size_t count) {
    if (count > m_state.literals.Left() || count > m_state.OutLeft()) return false;
    const std::size_t base = m_state.recent[0];
    for (; count > 0; --count, ++m_state.out) {
        const std::uint8_t literal = *m_state.literals.next++;
        *m_state.out = m_traits.mode == LiteralMode::Sub
                           ? static_cast<std::uint8_t>(literal + *(m_state.out - base))
                           : literal;
    }
    return true;
}

// Moves the chosen offset to the front of the recent ones. A new offset pushes the last one out.
std::uint32_t Parser::TakeOffset(unsigned index) {
    auto& recent = m_state.recent;
    if (index == kNewOffset) {
        recent[2] = *m_state.offsets.next++;
        index = 2;
    }
    std::rotate(recent.begin(), recent.begin() + index, recent.begin() + index + 1);
    return recent[0];
}

bool Parser::CopyMatch(std::size_t offset, std::size_t length) {
    if (length > m_state.OutLeft()) return false;
    for (; length > 0; --length, ++m_state.out) *m_state.out = *(m_state.out - offset);
    return true;
}

}  // namespace

bool newLZ_decode_chunk_phase2(const Chunk& chunk, const ChunkStreams& streams) {
    if (streams.mode != LiteralMode::Sub && streams.mode != LiteralMode::Raw) {
        return Fail("OODLE ERROR : assertion failed : %s : %s\n", "oo2::newLZ_decode_chunk_phase2",
                    "bad chunk_type");
    }
    const auto takesNew = [](std::uint8_t c) { return Command{c}.OffsetIndex() == kNewOffset; };
    const std::size_t newOffsets = CountBytes(streams.commands, takesNew);
    return CoverCommands(streams, newOffsets) && Parser(chunk, streams, newOffsets).Run(chunk.context.path);
}

}  // namespace oo2
