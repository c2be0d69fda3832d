// The data that the parts of the LZ stream writer pass to each other.
#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace lz {

using Bytes = std::vector<uint8_t>;
using ByteSpan = std::span<const uint8_t>;

struct Coded {
    Bytes bytes;

    size_t size() const { return bytes.size(); }
    void Append(ByteSpan more) { bytes.insert(bytes.end(), more.begin(), more.end()); }
    void Append(const Coded& more) { Append(ByteSpan(more.bytes)); }
    // Big-endian number of `count` bytes.
    void AppendBig(uint64_t value, unsigned count) {
        for (unsigned i = count; i-- > 0;) bytes.push_back(static_cast<uint8_t>(value >> (8 * i)));
    }
    // Little-endian number of `count` bytes.
    void AppendLittle(uint64_t value, unsigned count) {
        for (unsigned i = 0; i < count; ++i) bytes.push_back(static_cast<uint8_t>(value >> (8 * i)));
    }
};

// Index of the highest set bit; x must not be 0.
inline unsigned FloorLog2(uint64_t x) { return static_cast<unsigned>(std::bit_width(x)) - 1; }

// The inverse of the format's 0, -1, 1, -2, 2, ... numbering.
inline unsigned UnsignedOf(int value) {
    return static_cast<unsigned>(value >= 0 ? 2 * value : -2 * value - 1);
}

}  // namespace lz
