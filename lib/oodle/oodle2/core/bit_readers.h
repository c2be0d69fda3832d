// The bit readers of the entropy-coded layouts. A reader runs over a range of bytes, forward from its first
// byte or backward from its last. It takes the bits of a byte from bit 7 down (MSB) or from bit 0 up (LSB).
// The first bit of a value is its most significant bit in an MSB reader, its least significant bit in an LSB
// reader.
//
// Invariants: a reader may look past the end of its range. It reads 0 there, touches no memory, and never
// fails. BytesUsed tells afterwards whether it went past the end; a partly used byte counts.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>

namespace oo2 {

static_assert(std::endian::native == std::endian::little, "the multi-byte loads are little-endian");

template <typename Word>
Word Load(const std::uint8_t* from) {
    Word word;
    std::memcpy(&word, from, sizeof(word));
    return word;
}

inline std::uint32_t SwapBytes(std::uint32_t word) { return __builtin_bswap32(word); }
inline std::uint64_t SwapBytes(std::uint64_t word) { return __builtin_bswap64(word); }

enum class Direction { Forward, Backward };

// A range of bytes in reading order, and a bit position in it.
template <Direction kDirection>
class BitCursor {
  public:
    explicit BitCursor(std::span<const std::uint8_t> range) : m_range(range) {}

    std::size_t BitsUsed() const { return m_bitPos; }
    std::size_t BytesUsed() const { return (m_bitPos + 7) / 8; }
    bool IsPastEnd() const { return BytesUsed() > m_range.size(); }

    void Skip(std::size_t bits) { m_bitPos += bits; }

  protected:
    // 8 bytes from the position's byte on; the first byte is in the lowest (or highest) bits.
    std::uint64_t FirstByteLow() const {
        const std::size_t at = m_bitPos / 8;
        if (at + 8 > m_range.size()) [[unlikely]]
            return BytesNearEnd(m_range, at);
        return kDirection == Direction::Forward ? LoadAt(at) : SwapBytes(LoadAt(at));
    }
    std::uint64_t FirstByteHigh() const {
        const std::size_t at = m_bitPos / 8;
        if (at + 8 > m_range.size()) [[unlikely]]
            return SwapBytes(BytesNearEnd(m_range, at));
        return kDirection == Direction::Forward ? SwapBytes(LoadAt(at)) : LoadAt(at);
    }

    unsigned BitInByte() const { return static_cast<unsigned>(m_bitPos % 8); }

  private:
    std::uint64_t LoadAt(std::size_t at) const {
        return Load<std::uint64_t>(m_range.data() +
                                   (kDirection == Direction::Forward ? at : m_range.size() - at - 8));
    }

    // Static: without `this`, a cursor can stay in registers.
    [[gnu::noinline]] static std::uint64_t BytesNearEnd(std::span<const std::uint8_t> range, std::size_t at) {
        std::uint64_t word = 0;
        for (unsigned i = 0; i < 8 && at + i < range.size(); ++i) {
            const std::size_t index = kDirection == Direction::Forward ? at + i : range.size() - 1 - (at + i);
            word |= std::uint64_t{range[index]} << (8 * i);
        }
        return word;
    }

    std::span<const std::uint8_t> m_range;
    std::size_t m_bitPos = 0;
};

// The next bits of an MSB reader, for taking several values at once.
class BitWindow {
  public:
    static constexpr unsigned kBits = 57;

    explicit BitWindow(std::uint64_t bits) : m_bits(bits) {}

    // 0 to 31 bits.
    std::uint32_t Take(unsigned count) {
        const std::uint32_t value = static_cast<std::uint32_t>(m_bits >> 32) >> 1 >> (31 - count);
        m_bits <<= count;
        m_taken += count;
        return value;
    }
    unsigned Taken() const { return m_taken; }

  private:
    std::uint64_t m_bits;  // from bit 63 down
    unsigned m_taken = 0;
};

template <Direction kDirection>
class MsbReader : public BitCursor<kDirection> {
  public:
    using BitCursor<kDirection>::BitCursor;

    // At least the next 57 bits, from bit 63 down.
    std::uint64_t Window() const { return this->FirstByteHigh() << this->BitInByte(); }

    // 0 to 31 bits.
    std::uint32_t Peek(unsigned count) const {
        return static_cast<std::uint32_t>(Window() >> 32) >> 1 >> (31 - count);
    }
    std::uint32_t Read(unsigned count) {
        const std::uint32_t value = Peek(count);
        this->Skip(count);
        return value;
    }

    // For several values at once: Open a window, take at most its bits, then Close it.
    BitWindow Open() const { return BitWindow(Window()); }
    void Close(const BitWindow& window) { this->Skip(window.Taken()); }

    // Counts the 0 bits before the next 1 and takes them all. kEndlessUnary or more if there is no 1 near.
    unsigned ReadUnary() {
        const auto zeros = static_cast<unsigned>(std::countl_zero(Window()));
        this->Skip(zeros + 1);
        return zeros;
    }
};

// No unary number of a valid stream is this long.
inline constexpr unsigned kEndlessUnary = 32;

template <Direction kDirection>
class LsbReader : public BitCursor<kDirection> {
  public:
    using BitCursor<kDirection>::BitCursor;

    // At least the next 25 bits, from bit 0 up.
    std::uint32_t Window() const {
        return static_cast<std::uint32_t>(this->FirstByteLow() >> this->BitInByte());
    }

    // 0 to 25 bits.
    std::uint32_t Read(unsigned count) {
        const std::uint32_t value = Window() & ((1u << count) - 1);
        this->Skip(count);
        return value;
    }
};

// 0, -1, 1, -2, 2, ... for 0, 1, 2, 3, 4, ...
constexpr int ZigZag(unsigned value) { return static_cast<int>(value >> 1) ^ -static_cast<int>(value & 1); }

}  // namespace oo2
