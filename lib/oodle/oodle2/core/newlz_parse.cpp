// Phase 2 of an LZ chunk: commands, literals and offsets to raw bytes. This is the careful half, which runs
// what the fast one leaves.
#include "oodle/oodle2/core/newlz_parse.h"

#include <algorithm>
#include <cstring>

#include "oodle/oodle2/core/byte_scan.h"
#include "oodle/oodle2/core/oodlebase.h"

namespace oo2 {
namespace {

// Offsets have 32 bits: further back than this nothing is reached, and kOffsetTooFar reaches before every
// window.
constexpr std::size_t kLongestReach = kOffsetTooFar - 1 - kMaxChunkLen;

// Counts what all the commands take, so that nothing needs to ask before it takes an offset or an excess.
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

    ParseState state_;
    ParseTraits traits_;
    // The last literals, with room behind them for a unit to be read.
    std::array<std::uint8_t, 2 * kLiteralMargin> tail_;
    bool literalsAreInTail_ = false;
};

Parser::Parser(const Chunk& chunk, const ChunkStreams& streams, std::size_t newOffsets)
    : traits_{.mode = streams.mode, .mostlyNewOffsets = newOffsets >= streams.commands.size() / 16 * 15} {
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

bool Parser::Run(DecodePath path) {
    if (state_.Written() < kFirstOffset) return false;
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
    const auto takesNew = [](std::uint8_t c) { return Command{c}.OffsetIndex() == kNewOffset; };
    const std::size_t newOffsets = CountBytes(streams.commands, takesNew);
    return CoverCommands(streams, newOffsets) && Parser(chunk, streams, newOffsets).Run(chunk.path);
}

}  // namespace oo2
