#include "oodle/oodle2/core/newlz_offsets.h"

#include <algorithm>
#include <array>
#include <bit>

#include "oodle/oodle2/core/bit_readers.h"
#include "oodle/oodle2/core/byte_scan.h"
#include "oodle/oodle2/core/oodlebase.h"

namespace oo2 {
namespace {

using Bytes = std::span<const std::uint8_t>;

constexpr unsigned kLongExcessCode = 255;
constexpr std::uint32_t kLeastExcess = 3;
constexpr unsigned kMaxExcessZeros = 12;
constexpr unsigned kMaxExcessCountZeros = 18;
constexpr std::uint32_t kMaxLongExcesses = 512;

// The two MSB readers of a section: F forward from its first byte, B backward from its last. They take turns
// and meet in the end.
struct SectionReader {
    explicit SectionReader(Bytes section) : size(section.size()), forward(section), backward(section) {}

    bool EndsMeet() const {
        const std::size_t used = forward.BytesUsed() + backward.BytesUsed();
        return Check(used <= size, "OODLE ERROR : corruption : vb1_init <= vb2_init\n") &&
               Check(used == size, "OODLE ERROR : corruption : ptr_delta == 0\n");
    }

    std::size_t size;
    MsbReader<Direction::Forward> forward;
    MsbReader<Direction::Backward> backward;
};

std::uint32_t Limited(std::uint64_t offset) {
    return static_cast<std::uint32_t>(std::min<std::uint64_t>(offset, kOffsetTooFar));
}

// For each offset code: the offset is base + r, or base + 16 r; r are `bits` raw bits.
struct OffsetTable {
    std::array<std::uint32_t, 256> base;
    std::array<std::uint8_t, 256> bits;
};

// The single form. A code c below kFirstFarCode has k = (c >> 4) + 4 bits r; the offset is
// ((1 << k | r) << 4) + (c & 15) - 248. The other codes have k = (c & 15) + 16 bits r; the offset is
// (1 << k | r) + 8322816, which may not fit 32 bits.
constexpr unsigned kFirstFarCode = 0xF0;
constexpr OffsetTable kSingleTable = [] {
    OffsetTable table{};
    for (std::uint32_t c = 0; c < 256; ++c) {
        const bool isFar = c >= kFirstFarCode;
        const std::uint32_t bits = isFar ? (c & 15) + 16 : (c >> 4) + 4;
        table.bits[c] = static_cast<std::uint8_t>(bits);
        table.base[c] = isFar ? (1u << bits) + 8'322'816 : (16u << bits) + (c & 15) - 248;
    }
    return table;
}();

// The modulus form. A code c has k = c >> 3 bits r; the offset is ((8 + (c & 7)) << k) + r - 8. If the
// modulus m is more than 1, the offset is m times that, plus a low part.
constexpr unsigned kHighestModulusCode = 26 * 8 + 7;
constexpr OffsetTable kModulusTable = [] {
    OffsetTable table{};
    for (std::uint32_t c = 0; c <= kHighestModulusCode; ++c) {
        table.bits[c] = static_cast<std::uint8_t>(c >> 3);
        table.base[c] = ((8 + (c & 7)) << (c >> 3)) - 8;
    }
    return table;
}();

// How to read a chunk's offsets. One load has bits for kPerWindow offsets, which saves a third of the
// instructions per offset.
struct NearOffsets {
    static constexpr std::size_t kPerWindow = 3;
    static_assert(kPerWindow * 18 <= BitWindow::kBits);
    static std::uint32_t Read(BitWindow& window, unsigned c) {
        return kSingleTable.base[c] + (window.Take(kSingleTable.bits[c]) << 4);
    }
};
struct FarOffsets {
    static constexpr std::size_t kPerWindow = 1;
    static_assert(kPerWindow * 31 <= BitWindow::kBits);
    static std::uint32_t Read(BitWindow& window, unsigned c) {
        if (c < kFirstFarCode) return NearOffsets::Read(window, c);
        return Limited(std::uint64_t{kSingleTable.base[c]} + window.Take(kSingleTable.bits[c]));
    }
};
struct ModulusOffsets {
    static constexpr std::size_t kPerWindow = 2;
    static_assert(kPerWindow * 26 <= BitWindow::kBits);
    static std::uint32_t Read(BitWindow& window, unsigned c) {
        return kModulusTable.base[c] + window.Take(kModulusTable.bits[c]);
    }
};

template <typename Offsets>
void ReadOffsets(SectionReader& in, Bytes codes, std::span<std::uint32_t> offsets) {
    constexpr std::size_t kRound = 2 * Offsets::kPerWindow;
    MsbReader<Direction::Forward> forward = in.forward;
    MsbReader<Direction::Backward> backward = in.backward;
    for (std::size_t i = 0; i < codes.size();) {
        BitWindow first = forward.Open();
        BitWindow second = backward.Open();
        const auto read = [&](std::size_t count) {
#pragma GCC unroll 8
            for (std::size_t j = 0; j < count; ++j) {
                offsets[i + j] = Offsets::Read(j % 2 == 0 ? first : second, codes[i + j]);
            }
            i += count;
        };
        codes.size() - i >= kRound ? read(kRound) : read(codes.size() - i);
        forward.Close(first);
        backward.Close(second);
    }
    in.forward = forward;
    in.backward = backward;
}

bool UnpackOffsets(SectionReader& in, const OffsetCodes& from, std::span<std::uint32_t> offsets) {
    const unsigned highest = HighestByte(from.codes);
    if (from.modulus == 0) {
        highest < kFirstFarCode ? ReadOffsets<NearOffsets>(in, from.codes, offsets)
                                : ReadOffsets<FarOffsets>(in, from.codes, offsets);
        return true;
    }
    if (highest > kHighestModulusCode) return false;
    ReadOffsets<ModulusOffsets>(in, from.codes, offsets);
    if (from.modulus > 1) {
        for (std::size_t i = 0; i < offsets.size(); ++i) {
            offsets[i] = Limited(std::uint64_t{from.modulus} * offsets[i] + from.lowParts[i]);
        }
    }
    return true;
}

// z zeros, then z + 7 bits that begin with a 1. These bits are the value plus 64.
template <typename Reader>
bool ReadLongExcess(Reader& reader, std::uint32_t& value) {
    const auto zeros = static_cast<unsigned>(std::countl_zero(reader.Window()));
    if (!Check(zeros <= kMaxExcessZeros, "OODLE ERROR : corruption : invalid excess stream\n")) return false;
    reader.Skip(zeros);
    value = reader.Read(zeros + 7) - 64;
    return true;
}

// An excess is its code plus 3; code 255 adds the next long excess.
bool UnpackExcesses(SectionReader& in, Bytes codes, std::span<std::uint32_t> excesses) {
    std::size_t longCount = 0;
    for (std::size_t i = 0; i < codes.size(); ++i) {
        excesses[i] = codes[i] + kLeastExcess;
        if (codes[i] != kLongExcessCode) [[likely]]
            continue;
        std::uint32_t value = 0;
        const bool fromForward = longCount++ % 2 == 0;
        if (!(fromForward ? ReadLongExcess(in.forward, value) : ReadLongExcess(in.backward, value)))
            return false;
        excesses[i] += value;
    }
    return true;
}

// The number of long excesses, sent if they have no section of their own: z zeros, then z + 1 bits that begin
// with a 1. These bits are the number plus 1. It must be the number of codes that take a long excess.
bool ReadLongExcessCount(SectionReader& in, Bytes codes) {
    const auto zeros = static_cast<unsigned>(std::countl_zero(in.backward.Window()));
    if (!Check(zeros <= kMaxExcessCountZeros, "OODLE ERROR : corruption : invalid excess stream\n"))
        return false;
    in.backward.Skip(zeros);
    const std::uint32_t count = in.backward.Read(zeros + 1) - 1;
    const std::size_t wanted = CountBytes(codes, [](std::uint8_t code) { return code == kLongExcessCode; });
    return Check(count <= kMaxLongExcesses, "OODLE ERROR : corruption : invalid excess stream\n") &&
           Check(count <= codes.size(), "OODLE ERROR : corruption : excess_u32_count > excesses_count\n") &&
           Check(wanted <= count, "OODLE ERROR : corruption : excesses_u32_ptr < excesses_u32_end\n") &&
           Check(wanted == count, "OODLE ERROR : corruption : excesses_u32_ptr == excesses_u32_end\n");
}

}  // namespace

// Without a section for the long excesses: their number (from B), the offsets' bits, the long excesses.
// With a section, which ends the bits: the offsets' bits; in the section, the long excesses.
bool newLZ_get_offsets_excesses(Bytes bits, std::ptrdiff_t excessBytes, const OffsetCodes& codes,
                                Bytes excessCodes, std::span<std::uint32_t> offsets,
                                std::span<std::uint32_t> excesses) {
    if (excessBytes < 0) {
        SectionReader in(bits);
        return ReadLongExcessCount(in, excessCodes) && UnpackOffsets(in, codes, offsets) &&
               UnpackExcesses(in, excessCodes, excesses) && in.EndsMeet();
    }
    const auto sectionLen = static_cast<std::size_t>(excessBytes);
    if (!Check(sectionLen <= bits.size(), "OODLE ERROR : corruption : excess_stream_bytes > comp_bytes\n"))
        return false;
    SectionReader in(bits.first(bits.size() - sectionLen));
    SectionReader section(bits.last(sectionLen));
    return UnpackOffsets(in, codes, offsets) && in.EndsMeet() &&
           UnpackExcesses(section, excessCodes, excesses) && section.EndsMeet();
}

}  // namespace oo2
