// Array headers and the choice of the coding.
#include "support/lz/array-writer.h"

namespace lz {
namespace {

constexpr size_t kMaxRaw = 0x40000;  // 18 bits, and one less for stored arrays

Coded StoredArray(ByteSpan raw, bool long_header) {
    Coded out;
    if (!long_header && raw.size() <= 0xFFF) {
        out.AppendBig(0x8000 | raw.size(), 2);
        out.Note("array:stored-short");
    } else {
        out.AppendBig(raw.size(), 3);
        out.Note("array:stored-long");
    }
    out.Append(raw);
    out.Note("type0");
    if (raw.empty()) out.Note("array:empty");
    return out;
}

// Nothing when the contents are not smaller than the raw bytes.
std::optional<Coded> WithHeader(ArrayType type, size_t raw_size, const Coded& contents, bool long_header) {
    const uint64_t number = static_cast<uint64_t>(type);
    if (contents.size() >= raw_size || raw_size > kMaxRaw) return std::nullopt;
    const size_t saved = raw_size - 1 - contents.size();
    Coded out;
    if (!long_header && contents.size() < 0x400 && saved < 0x400) {
        out.AppendBig(0x800000 | (number << 20) | (saved << 10) | contents.size(), 3);
        out.Note("array:coded-short");
    } else {
        out.AppendBig((number << 36) | (static_cast<uint64_t>(raw_size - 1) << 18) | contents.size(), 5);
        out.Note("array:coded-long");
    }
    out.Append(contents);
    out.Note("type" + std::to_string(number));
    return out;
}

std::optional<Coded> EncodeContents(ByteSpan raw, ArrayType type, const ArrayOptions& options) {
    HuffmanOptions huffman = options.huffman;
    huffman.split = type == ArrayType::huffman_split;
    switch (type) {
        case ArrayType::tans:
            return EncodeTans(raw, options.tans);
        case ArrayType::huffman:
        case ArrayType::huffman_split:
            return EncodeHuffman(raw, huffman);
        case ArrayType::run_length:
            return EncodeRunLength(raw, options);
        case ArrayType::multi:
            return EncodeMulti(raw, options);
        default:
            return std::nullopt;
    }
}

// Plain framing decodes slower than the split one, tANS slower still: what they must save to be chosen.
constexpr double kPlainGain = 0.005;
constexpr double kTansGain = 0.1;

// Multiarrays only on request.
constexpr ArrayType kChoices[] = {ArrayType::huffman, ArrayType::huffman_split, ArrayType::tans,
                                  ArrayType::run_length};

}  // namespace

Coded EncodeArray(ByteSpan raw, const ArrayOptions& options) {
    std::optional<Coded> best;
    if (options.allow_stored && raw.size() < kMaxRaw) best = StoredArray(raw, options.long_header);
    double best_cost = best ? static_cast<double>(best->size()) : 1e300;
    const auto offer = [&](ArrayType type, double handicap) {
        const std::optional<Coded> contents = raw.empty() ? std::nullopt : EncodeContents(raw, type, options);
        if (!contents) return;
        std::optional<Coded> coded = WithHeader(type, raw.size(), *contents, options.long_header);
        if (!coded || static_cast<double>(coded->size()) * handicap >= best_cost) return;
        best_cost = static_cast<double>(coded->size()) * handicap;
        best = std::move(coded);
    };
    if (!options.type) {
        for (const ArrayType type : kChoices)
            offer(type, 1 + (type == ArrayType::tans      ? kTansGain
                             : type == ArrayType::huffman ? kPlainGain
                                                          : 0));
    } else if (*options.type != ArrayType::stored) {
        best_cost = 1e300;
        offer(*options.type, 1);
    }
    return best.value_or(Coded{});
}

}  // namespace lz
