// The window through which the fast loops read LSB streams.
#pragma once

#include "oodle/oodle2/core/bit_readers.h"

namespace oo2 {

// `bits` holds the stream's next bits from bit 0 up. Above them are zeros, and then a single 1, the marker.
// Taking n bits is a shift by n. The marker moves down with the bits, so its position tells how many bits
// were taken since the last Refill. Nothing else counts them.
//
// Refill moves `ptr` past the whole bytes taken and loads a word there. It drops the bits of the first byte
// that were taken before, and puts the marker on the top bit. The marker and the at most 7 dropped bits leave
// kBits to take. The word must lie in readable memory: see SafeRounds.
template <Direction kDirection>
struct FastBits {
    using Word = std::size_t;
    static constexpr unsigned kWordBits = 8 * sizeof(Word);
    static constexpr unsigned kBits = kWordBits - 1 - 7;
    static constexpr Word kMarker = Word{1} << (kWordBits - 1);

    // Starts at the position of a reader of `range`.
    FastBits(std::span<const std::uint8_t> range, const LsbReader<kDirection>& reader)
        : origin(kDirection == Direction::Forward ? range.data() : range.data() + range.size()),
          ptr(Advance(origin, reader.BitsUsed() / 8)),
          bits(kMarker >> reader.BitsUsed() % 8) {}

    // How many rounds are safe. A round is one Refill and up to kBits bits; it is safe if its word lies in
    // `memory`. `ptr` must be inside `memory` or at its end. Each Refill first moves `ptr` by less than a
    // word.
    std::size_t SafeRounds(std::span<const std::uint8_t> memory) const {
        const std::ptrdiff_t room =
            kDirection == Direction::Forward ? memory.data() + memory.size() - ptr : ptr - memory.data();
        constexpr std::ptrdiff_t kWord = sizeof(Word);
        return room < kWord ? 0 : static_cast<std::size_t>((room - kWord) / (kWord - 1));
    }

    // Moves by (kWordBits - 1 - marker) / 8 bytes. Written so that few steps lead from the marker to the
    // load: every stream waits for them once a round.
    void Refill() {
        const unsigned marker = Marker();
        Word word;
        if constexpr (kDirection == Direction::Forward) {
            ptr = ptr + (sizeof(Word) - 1) - marker / 8;
            word = Load<Word>(ptr);
        } else {
            ptr = ptr - (sizeof(Word) - 1) + marker / 8;
            word = SwapBytes(Load<Word>(ptr - sizeof(Word)));
        }
        bits = (word | kMarker) >> (kWordBits - 1 - marker) % 8;
    }

    // Bits taken since the start of the range.
    std::size_t BitsUsed() const {
        const std::ptrdiff_t bytes = kDirection == Direction::Forward ? ptr - origin : origin - ptr;
        return 8 * static_cast<std::size_t>(bytes) + (kWordBits - 1 - Marker());
    }

    const std::uint8_t* origin;
    const std::uint8_t* ptr;
    Word bits;

  private:
    static const std::uint8_t* Advance(const std::uint8_t* from, std::size_t bytes) {
        return kDirection == Direction::Forward ? from + bytes : from - bytes;
    }
    // The position of the marker.
    unsigned Marker() const {
        if constexpr (sizeof(Word) == 8) return 63u ^ static_cast<unsigned>(__builtin_clzll(bits));
        return 31u ^ static_cast<unsigned>(__builtin_clz(static_cast<unsigned>(bits)));
    }
};

}  // namespace oo2
