// The seeds of the LZ decoder's targets, each form of the format in a small stream.
#include <array>

#include "make-seeds.h"
#include "support/lz/sample-data.h"
#include "support/lz/stream-writer.h"

namespace fuzz {
namespace {

using corvane_test::Bytes;
using corvane_test::Join;
using corvane_test::Writer;

Bytes Settings(std::uint8_t flags, std::size_t rawLen) {
    const auto length = static_cast<std::uint32_t>(rawLen);
    return Writer()
        .U8(flags)
        .U16(static_cast<std::uint16_t>(length & 0xFFFF))
        .U8(static_cast<std::uint8_t>(length >> 16))
        .bytes;
}

struct NamedArray {
    const char* name;
    lz::ArrayOptions options;
};

std::vector<NamedArray> ArrayForms() {
    using Description = lz::HuffmanOptions::Description;
    using Table = lz::TansOptions::Table;
    using Layout = lz::MultiOptions::Layout;
    using Type = lz::ArrayType;
    const lz::ArrayOptions none;
    std::vector<NamedArray> forms = {
        {"stored", none},         {"tans-dense", none},     {"tans-sparse", none},
        {"huffman-dense", none},  {"huffman-sparse", none}, {"huffman-second", none},
        {"huffman-split", none},  {"run-length", none},     {"run-length-literals", none},
        {"run-length-all", none}, {"joined", none},         {"plain-indices", none},
        {"packed-indices", none}};
    constexpr std::array kTypes = {Type::stored,     Type::tans,       Type::tans,          Type::huffman,
                                   Type::huffman,    Type::huffman,    Type::huffman_split, Type::run_length,
                                   Type::run_length, Type::run_length, Type::multi,         Type::multi,
                                   Type::multi};
    for (std::size_t i = 0; i < forms.size(); ++i) forms[i].options.type = kTypes[i];
    forms[1].options.tans.table = Table::dense;
    forms[2].options.tans.table = Table::sparse;
    forms[3].options.huffman.description = Description::dense;
    forms[4].options.huffman.description = Description::sparse;
    forms[5].options.huffman.description = Description::second;
    forms[6].options.huffman.split = true;
    forms[8].options.run_length_prefix = lz::RunLengthPrefix::literals;
    forms[9].options.run_length_prefix = lz::RunLengthPrefix::all;
    forms[11].options.multi.layout = Layout::plain_indices;
    forms[12].options.multi.layout = Layout::packed_indices;
    return forms;
}

void AddArrays(const Seeds& seeds) {
    for (const NamedArray& form : ArrayForms()) {
        for (const std::size_t size : {40U, 700U}) {
            const lz::Bytes raw = lz::MakeText(size);
            const lz::Coded array = lz::EncodeArray(raw, form.options);
            const Bytes scratch = {0xFF, 0xFF};
            const std::string name = form.name + std::string("-") + std::to_string(size);
            seeds.Add(name, Join({Settings(0, raw.size()), scratch, array.bytes}));
        }
    }
}

std::vector<std::pair<std::string, lz::ChunkOptions>> ChunkForms() {
    std::vector<std::pair<std::string, lz::ChunkOptions>> forms;
    for (const unsigned modulus : {0U, 1U, 7U}) {
        for (const bool countByte : {false, true}) {
            for (const auto literals : {lz::ChunkOptions::Literals::raw, lz::ChunkOptions::Literals::sub}) {
                lz::ChunkOptions options;
                options.kind = lz::ChunkOptions::Kind::lz;
                options.literals = literals;
                options.modulus = modulus;
                options.count_byte = countByte;
                const bool raw = literals == lz::ChunkOptions::Literals::raw;
                forms.emplace_back(
                    (raw ? "raw-" : "sub-") + std::to_string(modulus) + (countByte ? "-counted" : ""),
                    options);
            }
        }
    }
    return forms;
}

// A stream of one block, and its quantum alone: what follows the block's and the quantum's header.
void AddStream(const Seeds& frame, const Seeds& quantum, const std::string& name, const lz::Bytes& raw,
               const lz::CompressOptions& options) {
    const lz::Bytes stream = lz::Compress(raw, options).bytes;
    frame.Add(name, Join({Settings(1, raw.size()), stream}));
    constexpr std::ptrdiff_t kHeaders = 2 + 3;
    quantum.Add(name, Join({Settings(1, raw.size() - 1), Bytes(stream.begin() + kHeaders, stream.end())}));
}

void AddStreams(const Seeds& frame, const Seeds& quantum) {
    for (const auto& [name, chunk] : ChunkForms()) {
        const lz::CompressOptions options{.parse = {}, .chunk = chunk};
        AddStream(frame, quantum, name, lz::MakeText(1500), options);
        AddStream(frame, quantum, name + "-records", lz::MakeRecords(2500), options);
    }
    for (const NamedArray& form : ArrayForms()) {
        lz::CompressOptions options;
        options.chunk.kind = lz::ChunkOptions::Kind::lz;
        options.chunk.literal_array = form.options;
        options.chunk.command_array = form.options;
        AddStream(frame, quantum, form.name, lz::MakeText(1500, 3), options);
    }
    lz::CompressOptions array;
    array.chunk.kind = lz::ChunkOptions::Kind::array;
    AddStream(frame, quantum, "array", lz::MakeText(400), array);
}

// Long matches and runs of one byte keep streams of several chunks and blocks small.
lz::Bytes Repetitive(std::size_t size) {
    lz::Bytes raw = lz::MakeText(900);
    while (raw.size() < size)
        raw.insert(
            raw.end(), raw.begin(),
            raw.begin() + std::min<std::ptrdiff_t>(900, static_cast<std::ptrdiff_t>(size - raw.size())));
    return raw;
}

void AddBlocks(const Seeds& frame, const Seeds& payload) {
    const lz::Bytes three = Repetitive(2 * lz::kBlockSize + 1000);
    for (const bool reset : {false, true}) {
        const Bytes stream = lz::Compress(three, {.parse = {}, .chunk = {}, .reset_blocks = reset}).bytes;
        frame.Add(reset ? "blocks-reset" : "blocks", Join({Settings(1, three.size()), stream}));
    }
    const lz::Bytes block = Repetitive(lz::kBlockSize);
    frame.Add("two-phases", Join({Settings(33, block.size()), lz::Compress(block).bytes}));

    const lz::Bytes text = lz::MakeText(600);
    lz::StreamWriter writer;
    writer.BeginBlock({.check = true});
    writer.StoredSpecial(text);
    frame.Add("check-value", Join({Settings(3, text.size()), writer.stream().bytes}));
    const Bytes stream = lz::Compress(text).bytes;
    frame.Add("cancelled", Join({Settings(1 + 4 + 16 + 64, text.size()), stream}));
    const auto size = static_cast<std::uint32_t>(stream.size());
    const Bytes prefix = Writer().U8(4).U32(static_cast<std::uint32_t>(text.size())).U32(size).bytes;
    payload.Add("compressed", Join({prefix, stream}));
}

void AddSimpleQuanta(const Seeds& frame) {
    const lz::Bytes text = lz::MakeText(500);
    lz::StreamWriter memset;
    memset.BeginBlock({});
    memset.Memset(7);
    frame.Add("memset", Join({Settings(1, 500), memset.stream().bytes}));
    lz::StreamWriter match;
    match.BeginBlock({.memcpy = false});
    match.WholeMatch(300);
    frame.Add("whole-match", Join({Settings(1 + 8, 500), match.stream().bytes}));
    lz::StreamWriter copy;
    copy.BeginBlock({.memcpy = true});
    copy.Memcpy(text);
    frame.Add("memcpy", Join({Settings(1, 500), copy.stream().bytes}));
    for (const auto type : {lz::DecodeType::lzb16, lz::DecodeType::mermaid, lz::DecodeType::leviathan}) {
        lz::StreamWriter other;
        other.BeginBlock({.type = type});
        other.StoredSpecial(text);
        frame.Add("type-" + std::to_string(static_cast<int>(type)),
                  Join({Settings(0, 500), other.stream().bytes}));
    }
}

}  // namespace

void AddLzSeeds(const std::string& corpus) {
    const Seeds frame(corpus, "lz-frame");
    const Seeds payload(corpus, "payload");
    AddArrays(Seeds(corpus, "lz-array"));
    AddStreams(frame, Seeds(corpus, "kraken-quantum"));
    AddBlocks(frame, payload);
    AddSimpleQuanta(frame);
    payload.Add("encrypted", Join({{2 | 2 << 4}, corvane_test::Sequence(0, 16 + 48)}));
    payload.Add("encrypted-and-compressed", Join({{6 | 2 << 4}, corvane_test::Sequence(0, 16 + 48)}));
    payload.Add("no-key", Join({{2}, corvane_test::Sequence(0, 32)}));
    payload.Add("plain", Join({{1}, corvane_test::Sequence(0, 20)}));
}

}  // namespace fuzz
