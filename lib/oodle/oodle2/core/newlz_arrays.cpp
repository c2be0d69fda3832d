#include "oodle/oodle2/core/newlz_arrays.h"

#include "oodle/oodle2/core/newlz_arrays_huff.h"
#include "oodle/oodle2/core/newlz_arrays_rle.h"
#include "oodle/oodle2/core/newlz_arrays_tans.h"
#include "oodle/oodle2/core/newlz_multiarrays.h"
#include "oodle/oodle2/core/oodlebase.h"

namespace oo2 {
namespace {

constexpr std::size_t kStoredLengthLimit = 0x40000;

std::uint64_t BigEndian(std::span<const std::uint8_t> in, std::size_t count) {
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < count; ++i) value = value << 8 | in[i];
    return value;
}

// An array header, big-endian. The type is in bits 4 to 6 of its first byte:
//   bit 7 set, type 0     2 bytes   bits 0-11: length
//   bit 7 set, others     3 bytes   bits 0-9: compressed length c; bits 10-19: d; raw length c + 1 + d
//   bit 7 clear, type 0   3 bytes   bits 0-23: length, below 0x40000
//   bit 7 clear, others   5 bytes   bits 0-17: compressed length; bits 18-35: raw length less 1
bool ReadShortHeader(std::span<const std::uint8_t> in, ArrayHeader& header) {
    if (header.type == ArrayType::Stored) {
        header.size = 2;
        header.compLen = header.rawLen = BigEndian(in, 2) & 0xFFF;
        return true;
    }
    if (!Check(in.size() >= 4, "OODLE ERROR : corruption : from_ptr+4 <= from_end\n")) return false;
    const auto word = static_cast<std::size_t>(BigEndian(in, 3));
    header.size = 3;
    header.compLen = word & 0x3FF;
    header.rawLen = header.compLen + 1 + (word >> 10 & 0x3FF);
    return header.compLen > 0;
}

bool ReadLongHeader(std::span<const std::uint8_t> in, ArrayHeader& header) {
    if (header.type == ArrayType::Stored) {
        const bool endsWithZeros =
            in.size() == 3 && BigEndian(in, 3) == 0;  // an empty array that ends the input
        if (!Check(in.size() >= 4 || endsWithZeros, "OODLE ERROR : corruption : header == 0\n")) return false;
        header.size = 3;
        header.compLen = header.rawLen = static_cast<std::size_t>(BigEndian(in, 3));
        return header.rawLen < kStoredLengthLimit;
    }
    if (!Check(in.size() >= 5, "OODLE ERROR : corruption : from_ptr+5 <= from_end\n")) return false;
    const std::uint64_t word = BigEndian(in, 5);
    header.size = 5;
    header.compLen = static_cast<std::size_t>(word & 0x3FFFF);
    header.rawLen = static_cast<std::size_t>(word >> 18 & 0x3FFFF) + 1;
    return header.compLen > 0 && header.compLen < header.rawLen;
}

// Not inlined: otherwise every level of nested arrays would have its tables on the stack.
[[gnu::noinline]] bool DecodeHuffman(bool split, std::span<const std::uint8_t> comp,
                                     std::span<std::uint8_t> out, const ArrayScratch& scratch) {
    if (scratch.batch) return scratch.batch->Add(comp, out, split);
    HuffBatch batch;
    return batch.Add(comp, out, split) && batch.Run(scratch.path);
}

bool DecodeCoded(ArrayType type, std::span<const std::uint8_t> comp, std::span<std::uint8_t> out,
                 ArrayScratch& scratch) {
    switch (type) {
        case ArrayType::Tans:
            return newLZ_decode_tans(comp, out, scratch.path);
        case ArrayType::Huffman:
        case ArrayType::HuffmanSplit:
            return DecodeHuffman(type == ArrayType::HuffmanSplit, comp, out, scratch);
        case ArrayType::RunLength:
            return newLZ_decode_rle(comp, out, scratch);
        case ArrayType::Multi:
            return newLZ_decode_multi(comp, out, scratch);
        default:
            return false;
    }
}

// Checks nesting and budget for an array of this many raw bytes, and takes it off the budget.
bool Enter(ArrayScratch& scratch, std::size_t rawLen) {
    if (scratch.depth == 0) return true;
    if (scratch.depth >= ArrayScratch::kMaxNesting || rawLen > scratch.innerBytesLeft) return false;
    scratch.innerBytesLeft -= rawLen;
    return true;
}

}  // namespace

std::optional<ArrayHeader> newLZ_get_array_header(std::span<const std::uint8_t> in, std::size_t capacity) {
    if (!Check(in.size() >= 2, "OODLE ERROR : corruption : from_ptr+2 <= from_end\n")) return std::nullopt;
    ArrayHeader header;
    header.type = static_cast<ArrayType>(in[0] >> 4 & 7);
    if (header.type >= ArrayType::Count) {
        Log(kLogDetail, "newLZ_get_array : invalid array_type\n");
        return std::nullopt;
    }
    const bool isShort = (in[0] & 0x80) != 0;
    if (!(isShort ? ReadShortHeader(in, header) : ReadLongHeader(in, header))) return std::nullopt;
    if (header.rawLen > capacity || header.compLen > in.size() - header.size) return std::nullopt;
    return header;
}

std::optional<DecodedArray> newLZ_get_array(std::span<const std::uint8_t> in, std::uint8_t* dest,
                                            std::size_t capacity, ArrayScratch& scratch) {
    const std::optional<ArrayHeader> header = newLZ_get_array_header(in, capacity);
    if (!header || !Enter(scratch, header->rawLen)) return std::nullopt;
    const std::span<const std::uint8_t> comp = in.subspan(header->size, header->compLen);
    const std::size_t used = header->size + header->compLen;
    if (header->type == ArrayType::Stored) return DecodedArray{comp, used};

    if (!dest) {
        if (header->rawLen > scratch.Left()) return std::nullopt;
        dest = scratch.next;
        scratch.next += header->rawLen;
    }
    const std::span<std::uint8_t> out(dest, header->rawLen);
    ArrayScratch inner = scratch;
    ++inner.depth;
    const bool isHuffman = header->type == ArrayType::Huffman || header->type == ArrayType::HuffmanSplit;
    if (!isHuffman) inner.batch = nullptr;  // arrays inside must be decoded at once
    const bool good = DecodeCoded(header->type, comp, out, inner);
    scratch.innerBytesLeft = inner.innerBytesLeft;
    if (!good) return std::nullopt;
    return DecodedArray{out, used};
}

}  // namespace oo2
