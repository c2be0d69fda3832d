#include "oodle/oodle2/core/newlz_parse_fast.h"

#include <algorithm>

#include "oodle/oodle2/core/processor.h"

namespace oo2 {
namespace {

// The loop copies whole units of 16 bytes, often more than a command asks for, and tests nothing per byte.
// This is why it stays within its memory:
//
// - A usual command has at most kUsualRun literals, at most kUsualMatch match bytes, and an offset of a unit
//   or more. It reads one unit of literals. It writes one unit at the output and, behind the run, two units
//   of match. So it reads at most kUnit literals, writes at most kUsualOut bytes, and moves no further than
//   that.
// - A round is as many commands as are safe if all of them are usual: UsualCommands. It leaves the
//   kLongMatchEndRoom bytes that a long match must leave, so no match of the round tests for that.
// - An unusual command checks its own room and ends the round:
//   - A longer run needs one more unit of literals than it has, and kBehindLongRun bytes of output behind it:
//     its last unit overshoots by less than a unit, and the match behind it writes kUsualMatch bytes and
//     leaves kLongMatchEndRoom. Without that room the loop stops before the command.
//   - CopyAnyMatch copies a longer match, or one with a smaller offset. It overshoots by less than a unit,
//     and goes byte by byte where even that does not fit.
//
// Where the loop stops, the careful half runs one command.
constexpr std::size_t kUnit = 16;
constexpr std::size_t kUsualRun = kUnit;
constexpr std::size_t kUsualMatch = 2 * kUnit;
constexpr std::size_t kUsualOut = kUsualRun + kUsualMatch;
constexpr std::size_t kBehindLongRun = kUsualMatch + kLongMatchEndRoom;

constexpr std::size_t kLongestShortRun = kLongRunCode - 1;
constexpr std::size_t kLongestShortMatch = kLongMatchCode - 1 + kShortMatchBase;
static_assert(kLongestShortRun <= kUsualRun && kLongestShortMatch <= kUsualMatch,
              "without excesses, only its offset can make a command unusual");
static_assert(kUsualRun <= kUnit && kUsualMatch % kUnit == 0, "the units cover what they copy");
static_assert(kUsualOut >= kUnit + kUsualMatch, "what is written lies within what the round has counted");
static_assert(kBehindLongRun >= kUnit - 1, "the overshoot of a long run stays in the chunk");
static_assert(kLiteralMargin >= kUnit,
              "a loop that stops for want of a unit of literals has less than the margin left");

// For each command byte: literals, match bytes, excesses used. Long lengths are placeholders.
using ByteTable = std::array<std::uint8_t, 256>;
struct CommandShapes {
    ByteTable run;
    ByteTable length;
    ByteTable runExcesses;
    ByteTable excesses;
};
constexpr CommandShapes kShapes = [] {
    CommandShapes shapes{};
    for (unsigned byte = 0; byte < 256; ++byte) {
        const Command command{static_cast<std::uint8_t>(byte)};
        shapes.run[byte] = static_cast<std::uint8_t>(command.RunCode());
        shapes.length[byte] = static_cast<std::uint8_t>(command.LengthCode() + kShortMatchBase);
        shapes.runExcesses[byte] = command.RunCode() == kLongRunCode;
        shapes.excesses[byte] =
            static_cast<std::uint8_t>(shapes.runExcesses[byte] + (command.LengthCode() == kLongMatchCode));
    }
    return shapes;
}();
constexpr std::uint32_t kLongMatchShape = kLongMatchCode + kShortMatchBase;

// Command bytes from here on take the second recent offset, the third one, a new one.
constexpr std::uint32_t kFirstOfIndex1 = 0x40;
constexpr std::uint32_t kFirstOfIndex2 = 0x80;
constexpr std::uint32_t kFirstOfNew = 0xC0;

// A unit of literals. With an offset below 16, later bytes depend on earlier ones.
template <LiteralMode kMode>
void CopyLiteralUnit(std::uint8_t* out, const std::uint8_t* literal, std::size_t offset) {
    if constexpr (kMode == LiteralMode::Raw) {
        Copy16(out, literal);
    } else if (offset >= kUnit) [[likely]] {
        Add16(out, literal, out - offset);
    } else {
        for (std::size_t i = 0; i < kUnit; ++i)
            out[i] = static_cast<std::uint8_t>(literal[i] + *(out + i - offset));
    }
}

void CopyBytes(std::uint8_t* to, const std::uint8_t* from, std::size_t length) {
    for (std::size_t i = 0; i < length; ++i) to[i] = from[i];
}

// Copies a match with an offset of 1 to 7. Its pattern also repeats with every multiple of the offset. So
// behind the first bytes a multiple of at least 8 allows copies of 8 bytes.
void CopyPattern(std::uint8_t* out, std::size_t offset, std::size_t length) {
    constexpr std::size_t kMultiple[8] = {0, 8, 8, 9, 8, 10, 12, 14};
    CopyBytes(out, out - offset, std::min(length, kUnit));
    for (std::size_t i = kUnit; i < length; i += 8) Copy8(out + i, out + i - kMultiple[offset]);
}

// Copies a match of any length and offset. At most `room` bytes may be written; length <= room.
[[gnu::noinline]] void CopyAnyMatch(std::uint8_t* out, std::size_t offset, std::size_t length,
                                    std::size_t room) {
    const std::uint8_t* const from = out - offset;
    if (room - length < kUnit) {
        CopyBytes(out, from, length);
    } else if (offset >= kUnit) {
        for (std::size_t i = 0; i < length; i += kUnit) Copy16(out + i, from + i);
    } else if (offset >= 8) {
        for (std::size_t i = 0; i < length; i += 8) Copy8(out + i, from + i);
    } else {
        CopyPattern(out, offset, length);
    }
}

// When matches reach beyond a processor's second cache, the loop fetches their sources ahead. That saves a
// sixth of its time (8 MB of text, 1 MB of cache); in a smaller window it would cost a twelfth. New offsets
// are known long in advance, but not the output position at that time: the loop guesses it from the mean
// output per offset.
constexpr std::size_t kFarWindow = 0x80000;
constexpr std::size_t kOffsetsAhead = 14;
static_assert(kOffsetsAhead < kOffsetPadding, "this entry behind the last offset can be read");

inline void Prefetch(const std::uint8_t* out, std::size_t lookAhead, std::size_t offset) {
    const std::uintptr_t address = reinterpret_cast<std::uintptr_t>(out) + lookAhead - offset;
    __builtin_prefetch(reinterpret_cast<const void*>(address));
}

// How many commands can run before the room must be checked again, if all of them are usual.
std::size_t UsualCommands(std::ptrdiff_t commands, std::ptrdiff_t out, std::ptrdiff_t literals) {
    constexpr std::ptrdiff_t kEndRoom = kLongMatchEndRoom;
    constexpr std::ptrdiff_t kOut = kUsualOut;
    constexpr std::ptrdiff_t kLiterals = kUnit;
    return static_cast<std::size_t>(
        std::max<std::ptrdiff_t>(std::min({commands, (out - kEndRoom) / kOut, literals / kLiterals}), 0));
}

template <LiteralMode kMode, bool kMostlyNew, bool kIsFar>
bool Run(ParseState& state, std::size_t literalSlack) {
    if (state.Written() < kUnit) return true;
    // One unsigned comparison rejects offsets below 16 and beyond the window.
    const std::uint8_t* const unitBehindStart = state.windowStart + kUnit;
    [[maybe_unused]] const std::size_t lookAhead =
        kOffsetsAhead * state.OutLeft() / (state.offsets.Left() + 1);
    std::uint8_t* out = state.out;
    const std::uint8_t* command = state.commands.next;
    const std::uint8_t* literal = state.literals.next;
    const std::uint32_t* newOffset = state.offsets.next;
    const std::uint32_t* excess = state.excesses.next;
    std::uint32_t recent0 = state.recent[0];
    std::uint32_t recent1 = state.recent[1];
    std::uint32_t recent2 = state.recent[2];
    const auto stop = [&] {
        state.out = out;
        state.commands.next = command;
        state.literals.next = literal;
        state.offsets.next = newOffset;
        state.excesses.next = excess;
        state.recent = {recent0, recent1, recent2};
        return literal <= state.literals.end;
    };

    for (;;) {
        // Room: how many commands the next round may run.
        std::size_t usual =
            UsualCommands(state.commands.end - command, state.outEnd - out,
                          state.literals.end - literal + static_cast<std::ptrdiff_t>(literalSlack));
        if (usual == 0) return stop();
        do {
            // The run of literals: length, then bytes. Nothing is taken yet, so the loop can still stop here.
            const std::uint32_t c = *command;
            std::uint32_t run = kShapes.run[c];
            MoveIfAtLeast<kLongRunCode>(run, run, *excess);
            CopyLiteralUnit<kMode>(out, literal, recent0);
            if (run > kUsualRun) [[unlikely]] {
                if (state.literals.end - literal < static_cast<std::ptrdiff_t>(run + kUnit)) return stop();
                if (state.outEnd - out < static_cast<std::ptrdiff_t>(run + kBehindLongRun)) return stop();
                for (std::size_t i = kUnit; i < run; i += kUnit) {
                    CopyLiteralUnit<kMode>(out + i, literal + i, recent0);
                }
                usual = 1;
            }

            // The match's length. Now the command, its literals and its excesses are taken.
            std::uint32_t length = kShapes.length[c];
            MoveIfAtLeast<kLongMatchShape>(length, length, excess[kShapes.runExcesses[c]] + kLongMatchBase);
            excess += kShapes.excesses[c];
            literal += run;
            out += run;
            ++command;

            // The match's offset: a recent one or a new one, which moves to the front.
            if (kMostlyNew && c >= kFirstOfNew) [[likely]] {
                recent2 = recent1;
                recent1 = recent0;
                recent0 = *newOffset++;
            } else {
                MoveIfAtLeast<kFirstOfNew>(c, recent2, *newOffset);
                newOffset += c >= kFirstOfNew;
                SwapIfAtLeast<kFirstOfIndex1>(c, recent0, recent1);
                SwapIfAtLeast<kFirstOfIndex2>(c, recent0, recent2);
            }
            const std::size_t offset = recent0;
            if constexpr (kIsFar) Prefetch(out, lookAhead, newOffset[kOffsetsAhead]);

            // The match: two units, then the rest if there is one.
            const bool isUsualOffset = offset - kUnit <= static_cast<std::size_t>(out - unitBehindStart);
            if (isUsualOffset) [[likely]] {
                const std::uint8_t* const from = out - offset;
                Copy16(out, from);
                Copy16(out + kUnit, from + kUnit);
            } else if (offset == 0 || offset > static_cast<std::size_t>(out - state.windowStart)) {
                return false;
            }
            if (length > kUsualMatch || !isUsualOffset) [[unlikely]] {
                const auto room = static_cast<std::size_t>(state.outEnd - out);
                if (length >= kLongMatchShape && length + kLongMatchEndRoom > room) return false;
                CopyAnyMatch(out, offset, length, room);
                usual = 1;
            }
            out += length;
        } while (--usual != 0);
    }
}

template <LiteralMode kMode>
bool RunAny(ParseState& state, bool mostlyNew, std::size_t literalSlack) {
    const bool isFar = state.Written() >= kFarWindow;
    if (mostlyNew)
        return isFar ? Run<kMode, true, true>(state, literalSlack)
                     : Run<kMode, true, false>(state, literalSlack);
    return isFar ? Run<kMode, false, true>(state, literalSlack)
                 : Run<kMode, false, false>(state, literalSlack);
}

}  // namespace

bool ParseFast(ParseState& state, const ParseTraits& traits, std::size_t literalSlack) {
    return traits.mode == LiteralMode::Raw
               ? RunAny<LiteralMode::Raw>(state, traits.mostlyNewOffsets, literalSlack)
               : RunAny<LiteralMode::Sub>(state, traits.mostlyNewOffsets, literalSlack);
}

}  // namespace oo2
