// The raw bits behind a chunk's arrays: they complete the offset codes and the excess codes.
#include <algorithm>
#include <array>
#include <bit>

#include "oodle/oodle2/core/bit_readers.h"
#include "oodle/oodle2/core/newlz_chunk.h"
#include "oodle/oodle2/core/oodlebase.h"

namespace oo2 {
namespace {

using Bytes = std::span<const std::uint8_t>;

constexpr unsigned kLongExcessCode = 255;
constexpr std::uint32_t kLeastExcess = 3;
constexpr unsigned kMaxExcessZeros = 12;
constexpr unsigned kMaxExcessCountZeros = 18;
constexpr std::uint32_t kMaxLongExcesses = 512;
constexpr unsigned kMaxModulusBits = 26;

// The two readers of a section, MSB: F forward from its first byte, B backward from its last. Values come
// from F and B in turn, and at the end the two meet.
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

// What an offset code stands for: base, plus (r << kShift) for r of `bits` raw bits.
struct OffsetCode {
    std::uint32_t base;
    std::uint32_t bits;
};
using OffsetCodeTable = std::array<OffsetCode, 256>;

// The single form. A code c below kFirstFarCode has k = (c >> 4) + 4 bits r, and the offset
// ((1 << k | r) << 4) + (c & 15) - 248. One from there on has k = (c & 15) + 16 bits r, and the offset
// (1 << k | r) + 8322816.
constexpr unsigned kFirstFarCode = 0xF0;
constexpr unsigned kSingleShift = 4;
constexpr OffsetCodeTable kSingleForm = [] {
    OffsetCodeTable table{};
    for (std::uint32_t c = 0; c < table.size(); ++c) {
        const bool isFar = c >= kFirstFarCode;
        const std::uint32_t bits = isFar ? (c & 15) + 16 : (c >> 4) + 4;
        table[c] = {isFar ? (1u << bits) + 8'322'816 : (16u << bits) + (c & 15) - 248, bits};
    }
    return table;
}();

// The modulus form: a code c has k = c >> 3 bits r, and the offset ((8 + (c & 7)) << k) + r - 8. With a
// modulus m of more than 1 the offset is m times that, plus a low part.
constexpr unsigned kModulusShift = 0;
constexpr OffsetCodeTable kModulusForm = [] {
    OffsetCodeTable table{};
    for (std::uint32_t c = 0; c < table.size(); ++c) {
        const std::uint32_t bits = std::min(c >> 3, kMaxModulusBits);
        table[c] = {((8 + (c & 7)) << bits) - 8, bits};
    }
    return table;
}();

std::uint32_t Limited(std::uint64_t offset) {
    return static_cast<std::uint32_t>(std::min<std::uint64_t>(offset, kOffsetTooFar));
}

template <unsigned kShift, typename Reader>
[[gnu::always_inline]] inline std::uint32_t ReadOffset(Reader& reader, const OffsetCodeTable& table,
                                                       unsigned c) {
    const OffsetCode code = table[c];
    const std::uint32_t raw = reader.Read(code.bits);
    if constexpr (kShift == kSingleShift) {
        if (c >= kFirstFarCode) [[unlikely]]
            return Limited(std::uint64_t{code.base} + raw);
    }
    return code.base + (raw << kShift);
}

template <unsigned kShift>
void ReadOffsets(SectionReader& in, const OffsetCodeTable& table, Bytes codes,
                 std::span<std::uint32_t> offsets) {
    MsbReader<Direction::Forward> forward = in.forward;
    MsbReader<Direction::Backward> backward = in.backward;
    std::size_t i = 0;
    for (; i + 1 < codes.size(); i += 2) {
        offsets[i] = ReadOffset<kShift>(forward, table, codes[i]);
        offsets[i + 1] = ReadOffset<kShift>(backward, table, codes[i + 1]);
    }
    if (i < codes.size()) offsets[i] = ReadOffset<kShift>(forward, table, codes[i]);
    in.forward = forward;
    in.backward = backward;
}

bool UnpackOffsets(SectionReader& in, const OffsetCodes& from, std::span<std::uint32_t> offsets) {
    if (from.modulus == 0) {
        ReadOffsets<kSingleShift>(in, kSingleForm, from.codes, offsets);
        return true;
    }
    const auto isTooLong = [](std::uint8_t c) { return c >> 3 > kMaxModulusBits; };
    if (std::any_of(from.codes.begin(), from.codes.end(), isTooLong)) return false;
    ReadOffsets<kModulusShift>(in, kModulusForm, from.codes, offsets);
    if (from.modulus > 1) {
        for (std::size_t i = 0; i < offsets.size(); ++i) {
            offsets[i] = Limited(std::uint64_t{from.modulus} * offsets[i] + from.lowParts[i]);
        }
    }
    return true;
}

// z zeros, then z + 7 bits that begin with a 1; the value is 64 less.
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

// The count of long excesses, where they have no section of their own: z zeros, then z + 1 bits that begin
// with a 1; the count is 1 less. It must be the number of codes that take one.
bool ReadLongExcessCount(SectionReader& in, Bytes codes) {
    const auto zeros = static_cast<unsigned>(std::countl_zero(in.backward.Window()));
    if (!Check(zeros <= kMaxExcessCountZeros, "OODLE ERROR : corruption : invalid excess stream\n"))
        return false;
    in.backward.Skip(zeros);
    const std::uint32_t count = in.backward.Read(zeros + 1) - 1;
    const auto wanted = static_cast<std::size_t>(std::count(codes.begin(), codes.end(), kLongExcessCode));
    return Check(count <= kMaxLongExcesses, "OODLE ERROR : corruption : invalid excess stream\n") &&
           Check(count <= codes.size(), "OODLE ERROR : corruption : excess_u32_count > excesses_count\n") &&
           Check(wanted <= count, "OODLE ERROR : corruption : excesses_u32_ptr < excesses_u32_end\n") &&
           Check(wanted == count, "OODLE ERROR : corruption : excesses_u32_ptr == excesses_u32_end\n");
}

}  // namespace

// Without a section for the long excesses:  their count (from B); the offsets' bits; the long excesses
// With one, which is the last of the bits:  the offsets' bits; in the section, the long excesses
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
