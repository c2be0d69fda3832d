// The fast half of phase 2: copies in whole units, which may overshoot what they are to copy, and branches
// only where hardly any command goes the other way. What it costs is mispredicted branches: a run of 3
// literals or more, a match of 17 bytes or more, or a recent offset comes when one least expects it.
#include <algorithm>
#include <xmmintrin.h>

#include "oodle/oodle2/core/copy_units.h"
#include "oodle/oodle2/core/newlz_parse.h"

namespace oo2 {
namespace {

constexpr std::size_t kUnit = 16;
constexpr std::size_t kUsualRun = kUnit;
constexpr std::size_t kUsualMatch = 2 * kUnit;

// A usual command writes a unit of literals and, behind the run, two of match: as far as it can move `out` at
// the most. Its match may be a long one, which leaves kLongMatchEndRoom.
constexpr std::size_t kUsualOut = kUsualRun + kUsualMatch;
// What a long run must leave: its last unit may overshoot, and the command's match follows.
constexpr std::size_t kBehindLongRun = kUsualMatch + kLongMatchEndRoom;
static_assert(kBehindLongRun >= kUnit && kLiteralMargin >= kUnit);

// What the commands take and do, by command byte; a long run's or match's length is to be replaced.
struct CommandShape {
    std::uint8_t run;
    std::uint8_t length;
    std::uint8_t runExcesses;
    std::uint8_t excesses;
};
constexpr std::array<CommandShape, 256> kShapes = [] {
    std::array<CommandShape, 256> shapes{};
    for (unsigned byte = 0; byte < shapes.size(); ++byte) {
        const Command command{static_cast<std::uint8_t>(byte)};
        const bool isLongRun = command.RunCode() == kLongRunCode;
        const bool isLongMatch = command.LengthCode() == kLongMatchCode;
        shapes[byte] = {static_cast<std::uint8_t>(command.RunCode()),
                        static_cast<std::uint8_t>(command.LengthCode() + kShortMatchBase), isLongRun,
                        static_cast<std::uint8_t>(isLongRun + isLongMatch)};
    }
    return shapes;
}();
constexpr std::uint32_t kLongMatchShape = kLongMatchCode + kShortMatchBase;

// Command bytes from these on take the second recent offset, the third, a new one.
constexpr std::uint32_t kFirstOfIndex1 = 0x40;
constexpr std::uint32_t kFirstOfIndex2 = 0x80;
constexpr std::uint32_t kFirstOfNew = 0xC0;

// Conditional moves. Compilers make branches of the same in plain code: with every third command taking a new
// offset, that is 5.5 ns a command instead of 3.6 (GCC 12, records of 40 bytes).
template <std::uint32_t kLimit>
void MoveIfAtLeast(std::uint32_t value, std::uint32_t& to, std::uint32_t from) {
    asm("cmp %3, %2\n\tcmovae %1, %0" : "+r"(to) : "r"(from), "r"(value), "i"(kLimit) : "cc");
}
template <std::uint32_t kLimit>
void SwapIfAtLeast(std::uint32_t value, std::uint32_t& a, std::uint32_t& b) {
    const std::uint32_t former = a;
    asm("cmp %4, %3\n\tcmovae %1, %0\n\tcmovae %2, %1"
        : "+&r"(a), "+&r"(b)
        : "r"(former), "r"(value), "i"(kLimit)
        : "cc");
}

// A unit of literals; only with an offset of a unit or more are its bytes not each other's base.
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

// A match with an offset of 1 to 7: behind its first bytes, its pattern also repeats over a multiple of the
// offset that is at least a half unit.
void CopyPattern(std::uint8_t* out, std::size_t offset, std::size_t length) {
    constexpr std::size_t kMultiple[8] = {0, 8, 8, 9, 8, 10, 12, 14};
    CopyBytes(out, out - offset, std::min(length, kUnit));
    for (std::size_t i = kUnit; i < length; i += 8) Copy8(out + i, out + i - kMultiple[offset]);
}

// A match of any length and offset, within `room` bytes.
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

// New offsets are known long before their commands, though not where the output then stands: that is taken to
// be as far on as so many of them have been apart so far. The match's source is then on its way when the
// command comes.
constexpr std::size_t kOffsetsAhead = 15;
static_assert(kOffsetsAhead < kExcessPadding, "as many entries can be read behind the last offset");

inline void Prefetch(const std::uint8_t* out, std::size_t lookAhead, std::size_t offset) {
    const std::uintptr_t address = reinterpret_cast<std::uintptr_t>(out) + lookAhead - offset;
    _mm_prefetch(reinterpret_cast<const char*>(address), _MM_HINT_T0);
}

// How many commands can start before one must ask again whether there is room, if all are usual ones.
std::size_t UsualCommands(const ParseState& state, std::size_t literalSlack) {
    const std::ptrdiff_t literals =
        state.literals.end - state.literals.next + static_cast<std::ptrdiff_t>(literalSlack);
    if (literals < 0 || state.OutLeft() < kLongMatchEndRoom) return 0;
    return std::min({state.commands.Left(), (state.OutLeft() - kLongMatchEndRoom) / kUsualOut,
                     static_cast<std::size_t>(literals) / kUnit});
}

template <LiteralMode kMode, bool kMostlyNew>
bool Run(ParseState& state, std::size_t literalSlack) {
    ParseState s = state;
    std::uint32_t recent0 = s.recent[0];
    std::uint32_t recent1 = s.recent[1];
    std::uint32_t recent2 = s.recent[2];
    const auto stop = [&] {
        state = s;
        state.recent = {recent0, recent1, recent2};
        return s.literals.next <= s.literals.end;
    };
    // Offsets below a unit and those that reach too far then fail one comparison.
    if (s.Written() < kUnit) return stop();
    const std::uint8_t* const unitBehindStart = s.windowStart + kUnit;
    const std::size_t lookAhead = kOffsetsAhead * s.OutLeft() / (s.offsets.Left() + 1);

    while (std::size_t usual = UsualCommands(s, literalSlack)) {
        do {
            const std::uint32_t c = *s.commands.next;
            const CommandShape shape = kShapes[c];
            std::uint32_t run = shape.run;
            MoveIfAtLeast<kLongRunCode>(run, run, *s.excesses.next);
            CopyLiteralUnit<kMode>(s.out, s.literals.next, recent0);
            if (run > kUsualRun) [[unlikely]] {
                if (s.literals.end - s.literals.next < static_cast<std::ptrdiff_t>(run + kUnit))
                    return stop();
                if (s.OutLeft() < run + kBehindLongRun) return stop();
                for (std::size_t i = kUnit; i < run; i += kUnit) {
                    CopyLiteralUnit<kMode>(s.out + i, s.literals.next + i, recent0);
                }
                usual = 1;
            }
            std::uint32_t length = shape.length;
            MoveIfAtLeast<kLongMatchShape>(length, length,
                                           s.excesses.next[shape.runExcesses] + kLongMatchBase);
            s.excesses.next += shape.excesses;
            s.literals.next += run;
            s.out += run;
            ++s.commands.next;

            if (kMostlyNew && c >= kFirstOfNew) [[likely]] {
                recent2 = recent1;
                recent1 = recent0;
                recent0 = *s.offsets.next++;
            } else {
                MoveIfAtLeast<kFirstOfNew>(c, recent2, *s.offsets.next);
                s.offsets.next += c >= kFirstOfNew;
                SwapIfAtLeast<kFirstOfIndex1>(c, recent0, recent1);
                SwapIfAtLeast<kFirstOfIndex2>(c, recent0, recent2);
            }
            const std::size_t offset = recent0;
            Prefetch(s.out, lookAhead, s.offsets.next[kOffsetsAhead]);

            const bool isUsualOffset = offset - kUnit <= static_cast<std::size_t>(s.out - unitBehindStart);
            if (isUsualOffset) [[likely]] {
                Copy16(s.out, s.out - offset);
                Copy16(s.out + kUnit, s.out - offset + kUnit);
            } else if (offset == 0 || offset > s.Written()) {
                return false;
            }
            if (length > kUsualMatch || !isUsualOffset) [[unlikely]] {
                const std::size_t room = s.OutLeft();
                if (length >= kLongMatchShape && length + kLongMatchEndRoom > room) return false;
                CopyAnyMatch(s.out, offset, length, room);
                usual = 1;
            }
            s.out += length;
        } while (--usual != 0);
    }
    return stop();
}

}  // namespace

bool ParseFast(ParseState& state, const ParseTraits& traits, std::size_t literalSlack) {
    if (traits.mode == LiteralMode::Raw) {
        return traits.mostlyNewOffsets ? Run<LiteralMode::Raw, true>(state, literalSlack)
                                       : Run<LiteralMode::Raw, false>(state, literalSlack);
    }
    return traits.mostlyNewOffsets ? Run<LiteralMode::Sub, true>(state, literalSlack)
                                   : Run<LiteralMode::Sub, false>(state, literalSlack);
}

}  // namespace oo2
