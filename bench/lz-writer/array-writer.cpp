// Array headers and the choice of the coding.
#include "lz-writer/array-writer.h"

#include "lz-writer/huffman-writer.h"
#include "lz-writer/tans-writer.h"

namespace lz {
namespace {

constexpr size_t kMaxRaw = 0x40000;  // 18 bits, and one less for stored arrays

Coded StoredArray(ByteSpan raw, bool long_header) {
    Coded out;
    const bool is_short = !long_header && raw.size() <= 0xFFF;
    out.AppendBig(is_short ? 0x8000 | raw.size() : raw.size(), is_short ? 2 : 3);
    out.Append(raw);
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
    } else {
        out.AppendBig((number << 36) | (static_cast<uint64_t>(raw_size - 1) << 18) | contents.size(), 5);
    }
    out.Append(contents);
    return out;
}

std::optional<Coded> EncodeContents(ByteSpan raw, ArrayType type) {
    switch (type) {
        case ArrayType::tans:
            return EncodeTans(raw);
        case ArrayType::huffman:
        case ArrayType::huffman_split:
            return EncodeHuffman(raw, type == ArrayType::huffman_split);
        case ArrayType::run_length:
            return EncodeRunLength(raw);
        default:
            return std::nullopt;
    }
}

// Plain framing decodes slower than split framing, and tANS slower still. Each must save this share to be
// chosen.
constexpr double kPlainGain = 0.005;
constexpr double kTansGain = 0.1;

constexpr ArrayType kChoices[] = {ArrayType::huffman, ArrayType::huffman_split, ArrayType::tans,
                                  ArrayType::run_length};

}  // namespace

Coded EncodeArray(ByteSpan raw, const ArrayOptions& options) {
    std::optional<Coded> best;
    if (options.allow_stored && raw.size() < kMaxRaw) best = StoredArray(raw, options.long_header);
    double best_cost = best ? static_cast<double>(best->size()) : 1e300;
    const auto offer = [&](ArrayType type, double handicap) {
        const std::optional<Coded> contents = EncodeContents(raw, type);
        if (!contents) return;
        std::optional<Coded> coded = WithHeader(type, raw.size(), *contents, options.long_header);
        if (!coded || static_cast<double>(coded->size()) * handicap >= best_cost) return;
        best_cost = static_cast<double>(coded->size()) * handicap;
        best = std::move(coded);
    };
    if (!options.only_stored && !raw.empty()) {
        for (const ArrayType type : kChoices)
            offer(type, 1 + (type == ArrayType::tans      ? kTansGain
                             : type == ArrayType::huffman ? kPlainGain
                                                          : 0));
    }
    return best.value_or(Coded{});
}

}  // namespace lz
