// Phase 2 of an LZ chunk: commands, literals and offsets to raw bytes. This is the careful half, which runs
// what the fast one leaves.
#include "oodle/oodle2/core/newlz_parse.h"

#include <algorithm>
#include <cstring>

#include "oodle/oodle2/core/oodlebase.h"

namespace oo2 {
namespace {

// Offsets have 32 bits: further back than this nothing is reached, and kOffsetTooFar reaches before every
// window.
constexpr std::size_t kLongestReach = kOffsetTooFar - 1 - kMaxChunkLen;

class Parser {
  public:
    Parser(const Chunk& chunk, const ChunkStreams& streams);

    bool Run(DecodePath path);

  private:
    bool StreamsCoverCommands();
    bool RunFast();
    bool RunOne();
    bool CopyLiterals(std::size_t count);
    std::uint32_t TakeOffset(unsigned index);
    bool CopyMatch(std::size_t offset, std::size_t length);

    ParseState state_;
    ParseTraits traits_;
    // The last literals, with room behind them for a unit to be read.
    std::array<std::uint8_t, 2 * kLiteralMargin> tail_;
    bool literalsAreInTail_ = false;
};

Parser::Parser(const Chunk& chunk, const ChunkStreams& streams) : traits_{.mode = streams.mode} {
    state_.out = chunk.raw;
    state_.outEnd = chunk.raw + chunk.rawLen;
    state_.windowStart = chunk.raw - std::min(chunk.bytesSinceReset, kLongestReach);
    state_.commands = Cursor(streams.commands);
    state_.literals = Cursor(streams.literals);
    state_.offsets = Cursor(streams.offsets);
    state_.excesses = Cursor(streams.excesses);
    if (!streams.head.empty()) std::memcpy(state_.out, streams.head.data(), kHeadLen);
    state_.out += streams.head.size();
}

// Counts what all the commands take, so that nothing needs to ask before it takes an offset or an excess. The
// counts of a round fit a byte, which lets the compiler count 16 commands at once.
bool Parser::StreamsCoverCommands() {
    constexpr std::size_t kRound = 64;
    std::size_t offsets = 0;
    std::size_t excesses = 0;
    const auto count = [&](const std::uint8_t* from, std::size_t commands) {
        std::uint8_t newOffsets = 0;
        std::uint8_t longRuns = 0;
        std::uint8_t longMatches = 0;
        for (std::size_t i = 0; i < commands; ++i) {
            const Command command{from[i]};
            newOffsets = static_cast<std::uint8_t>(newOffsets + (command.OffsetIndex() == kNewOffset));
            longRuns = static_cast<std::uint8_t>(longRuns + (command.RunCode() == kLongRunCode));
            longMatches = static_cast<std::uint8_t>(longMatches + (command.LengthCode() == kLongMatchCode));
        }
        offsets += newOffsets;
        excesses += std::size_t{longRuns} + longMatches;
    };
    Cursor<std::uint8_t> commands = state_.commands;
    for (; commands.Left() >= kRound; commands.next += kRound) count(commands.next, kRound);
    count(commands.next, commands.Left());
    traits_.mostlyNewOffsets = offsets >= state_.commands.Left() / 16 * 15;
    return offsets <= state_.offsets.Left() && excesses <= state_.excesses.Left();
}

bool Parser::Run(DecodePath path) {
    if (!StreamsCoverCommands() || state_.Written() < kFirstOffset) return false;
    for (;;) {
        if (path == DecodePath::Fast && !RunFast()) return false;
        if (state_.commands.Left() == 0) break;
        if (!RunOne()) return false;
    }
    return state_.literals.Left() == state_.OutLeft() && CopyLiterals(state_.OutLeft());
}

bool Parser::RunFast() {
    if (!literalsAreInTail_) {
        if (!ParseFast(state_, traits_, 0)) return false;
        const std::size_t left = state_.literals.Left();
        if (left >= kLiteralMargin) return true;
        std::copy_n(state_.literals.next, left, tail_.begin());
        std::fill(tail_.begin() + static_cast<std::ptrdiff_t>(left), tail_.end(), 0);
        state_.literals = Cursor(std::span<const std::uint8_t>(tail_.data(), left));
        literalsAreInTail_ = true;
    }
    return ParseFast(state_, traits_, kLiteralMargin);
}

bool Parser::RunOne() {
    const Command command{*state_.commands.next++};
    std::size_t run = command.RunCode();
    if (run == kLongRunCode) run = *state_.excesses.next++;
    if (!CopyLiterals(run)) return false;

    const std::uint32_t offset = TakeOffset(command.OffsetIndex());
    if (offset == 0 || offset > state_.Written()) return false;

    std::size_t length = command.LengthCode() + kShortMatchBase;
    if (command.LengthCode() == kLongMatchCode) {
        length = kLongMatchBase + *state_.excesses.next++;
        if (state_.OutLeft() < kLongMatchEndRoom || length > state_.OutLeft() - kLongMatchEndRoom)
            return false;
    }
    return CopyMatch(offset, length);
}

bool Parser::CopyLiterals(std::size_t count) {
    if (count > state_.literals.Left() || count > state_.OutLeft()) return false;
    const std::size_t base = state_.recent[0];
    for (; count > 0; --count, ++state_.out) {
        const std::uint8_t literal = *state_.literals.next++;
        *state_.out = traits_.mode == LiteralMode::Sub
                          ? static_cast<std::uint8_t>(literal + *(state_.out - base))
                          : literal;
    }
    return true;
}

// The chosen offset moves to the front of the recent ones; a new one drives the last of them out.
std::uint32_t Parser::TakeOffset(unsigned index) {
    auto& recent = state_.recent;
    if (index == kNewOffset) {
        recent[2] = *state_.offsets.next++;
        index = 2;
    }
    std::rotate(recent.begin(), recent.begin() + index, recent.begin() + index + 1);
    return recent[0];
}

bool Parser::CopyMatch(std::size_t offset, std::size_t length) {
    if (length > state_.OutLeft()) return false;
    for (; length > 0; --length, ++state_.out) *state_.out = *(state_.out - offset);
    return true;
}

}  // namespace

bool newLZ_decode_chunk_phase2(const Chunk& chunk, const ChunkStreams& streams) {
    if (streams.mode != LiteralMode::Sub && streams.mode != LiteralMode::Raw) {
        return Fail("OODLE ERROR : assertion failed : %s : %s\n", "oo2::newLZ_decode_chunk_phase2",
                    "bad chunk_type");
    }
    return Parser(chunk, streams).Run(chunk.path);
}

}  // namespace oo2
