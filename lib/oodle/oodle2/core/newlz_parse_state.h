// What the fast and the careful half of the parse loop share: the command byte, and the position in the
// streams.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace oo2 {

// A command byte: a run of literals, then a match.
//   bits 0-1   run code: literals; kLongRunCode: the next excess
//   bits 2-5   length code: match bytes less 2; kLongMatchCode: 14 and the next excess
//   bits 6-7   offset index: one of the recent offsets; kNewOffset: the next offset
struct Command {
    std::uint8_t byte;

    constexpr unsigned RunCode() const { return byte & 3; }
    constexpr unsigned LengthCode() const { return byte >> 2 & 15; }
    constexpr unsigned OffsetIndex() const { return byte >> 6; }
};

inline constexpr unsigned kLongRunCode = 3;
inline constexpr unsigned kLongMatchCode = 15;
inline constexpr unsigned kNewOffset = 3;
inline constexpr std::size_t kShortMatchBase = 2;
inline constexpr std::size_t kLongMatchBase = 14;
inline constexpr std::size_t kLongMatchEndRoom = 8;  // bytes that a long match leaves before the chunk's end
inline constexpr std::uint32_t kFirstOffset = 8;     // all recent offsets at a chunk's start

template <typename T>
struct Cursor {
    const T* next = nullptr;
    const T* end = nullptr;

    Cursor() = default;
    explicit Cursor(std::span<const T> of) : next(of.data()), end(of.data() + of.size()) {}
    std::size_t Left() const { return static_cast<std::size_t>(end - next); }
};

struct ParseState {
    std::uint8_t* out = nullptr;
    std::uint8_t* outEnd = nullptr;
    const std::uint8_t* windowStart = nullptr;  // matches do not reach before it
    Cursor<std::uint8_t> commands;
    Cursor<std::uint8_t> literals;
    Cursor<std::uint32_t> offsets;
    Cursor<std::uint32_t> excesses;
    std::array<std::uint32_t, 3> recent = {kFirstOffset, kFirstOffset, kFirstOffset};

    std::size_t OutLeft() const { return static_cast<std::size_t>(outEnd - out); }
    std::size_t Written() const { return static_cast<std::size_t>(out - windowStart); }
};

}  // namespace oo2
