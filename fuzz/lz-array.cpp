// One entropy-coded array. Settings: 1 byte (bits 0 to 2: 1 to 5 a coding's decoder by itself, else an array
// with its header), 3 bytes of raw length or capacity, 2 bytes of scratch. The rest is the array.
#include "fuzz-target.h"
#include "lz-log.h"
#include "oodle/oodle2/core/newlz_arrays.h"
#include "oodle/oodle2/core/newlz_arrays_huff.h"

namespace {

using namespace oo2;

struct Outcome {
    bool good = false;
    std::size_t used = 0;
    std::vector<std::uint8_t> raw;
    bool operator==(const Outcome&) const = default;
};

bool DecodeHuffman(std::span<const std::uint8_t> comp, std::span<std::uint8_t> out, bool split,
                   DecodePath path) {
    HuffBatch batch;
    return batch.Add(comp, out, split) && batch.Run(path);
}

bool DecodeContents(ArrayType type, std::span<const std::uint8_t> comp, std::span<std::uint8_t> out,
                    ArrayScratch& scratch) {
    switch (type) {
        case ArrayType::Tans:
            return newLZ_decode_tans(comp, out, scratch.path);
        case ArrayType::Huffman:
            return DecodeHuffman(comp, out, false, scratch.path);
        case ArrayType::HuffmanSplit:
            return DecodeHuffman(comp, out, true, scratch.path);
        case ArrayType::RunLength:
            return newLZ_decode_rle(comp, out, scratch);
        default:
            return newLZ_decode_multi(comp, out, scratch);
    }
}

Outcome Run(std::uint32_t kind, std::size_t rawLen, std::size_t scratchSize, std::span<const std::uint8_t> in,
            DecodePath path) {
    fuzz::ExactBlock comp(in);
    fuzz::ExactBlock out(rawLen);
    fuzz::ExactBlock memory(scratchSize);
    ArrayScratch scratch{.next = memory.data(), .end = memory.data() + memory.size(), .path = path};
    Outcome outcome;
    std::span<const std::uint8_t> raw = out.Span();
    if (kind >= 1 && kind <= 5) {
        // What stands before these calls: a header has no empty array but a stored one.
        if (rawLen == 0 || comp.size() == 0) return outcome;
        scratch.depth = 1;
        outcome.good = DecodeContents(static_cast<ArrayType>(kind), comp.Span(), out.Span(), scratch);
    } else {
        std::uint8_t* const dest = kind == 0 ? out.data() : nullptr;
        if (const auto array = newLZ_get_array(comp.Span(), dest, rawLen, scratch)) {
            outcome = {.good = true, .used = array->compUsed, .raw = {}};
            raw = array->bytes;
        }
    }
    if (outcome.good) outcome.raw.assign(raw.begin(), raw.end());
    return outcome;
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::FormatLzLog();
    fuzz::Settings settings({data, size});
    const std::uint32_t kind = settings.Take(1) & 7;
    const std::size_t rawLen = settings.Take(3) % (ArrayScratch::kMaxArrayLen + 1);
    const std::size_t scratchSize = std::size_t{settings.Take(2)} * 16;
    const Outcome fast = Run(kind, rawLen, scratchSize, settings.Rest(), DecodePath::Fast);
    const Outcome careful = Run(kind, rawLen, scratchSize, settings.Rest(), DecodePath::Careful);
    fuzz::Require(fast == careful, "both paths give the same");
    return 0;
}
