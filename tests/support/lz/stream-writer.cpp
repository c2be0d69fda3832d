// Block headers, quantum headers and the loop over blocks and chunks.
#include "support/lz/stream-writer.h"

namespace lz {
namespace {

constexpr size_t kLongSpecial = 0x3FFFF;  // length fields that announce a special quantum
constexpr size_t kShortSpecial = 0x3FFF;

enum Special : unsigned { kWhole = 0, kMemset = 1, kStored = 2 };

bool IsOneByte(ByteSpan raw) {
    return std::all_of(raw.begin(), raw.end(), [&](uint8_t byte) { return byte == raw[0]; });
}

}  // namespace

Coded EncodeQuantum(Parser& parser, ByteSpan raw, size_t start, size_t end, size_t floor,
                    const ChunkOptions& options) {
    Coded payload;
    for (size_t position = start; position < end; position += kChunkSize) {
        const size_t size = std::min(kChunkSize, end - position);
        const bool first = position == floor;
        std::vector<Command> commands;
        if (size >= kMinLzChunk) commands = parser.Parse(position + (first ? 8 : 0), position + size, floor);
        payload.Append(EncodeChunk(raw, position, size, first, commands, options));
        if (position > start) payload.Note("quantum:two-chunks");
        if (position > start && size < kMinLzChunk) payload.Note("quantum:short-last-chunk");
    }
    payload.Note("quantum:kraken");
    return payload;
}

void StreamWriter::BeginBlock(const BlockHeader& header) {
    if (!blocks_.empty()) stream_.Note("block:several");
    if (!blocks_.empty() && header.reset) stream_.Note("block:reset-later");
    if (!blocks_.empty() && header.type != header_.type) stream_.Note("block:mixed-types");
    blocks_.push_back(stream_.size());
    header_ = header;
    const auto type = static_cast<unsigned>(header.type);
    stream_.AppendBig((header.reset ? 0x8C00U : 0x0C00U) | (header.memcpy ? 0x4000U : 0) |
                          (header.check ? 0x80U : 0) | type,
                      2);
    stream_.Note(header.reset ? "block:reset" : "block:no-reset");
    if (header.check) stream_.Note("block:check");
    stream_.Note("block:type" + std::to_string(type));
}

void StreamWriter::NoteQuantum(const char* form) {
    stream_.Note(std::string(IsLong() ? "quantum:long-" : "quantum:short-") + form);
}

void StreamWriter::PutLength(size_t size) { stream_.AppendBig(size - 1, IsLong() ? 3 : 2); }

void StreamWriter::PutSpecial(unsigned kind) {
    if (IsLong()) {
        stream_.AppendBig((kind << 18) | kLongSpecial, 3);
    } else {
        stream_.AppendBig((kind << 14) | kShortSpecial, 2);
    }
}

void StreamWriter::PutCheck(ByteSpan payload) {
    if (!header_.check) return;
    stream_.AppendBig(0xC0FFEE ^ payload.size(), 3);
    stream_.Note("quantum:check-bytes");
}

void StreamWriter::Memcpy(ByteSpan raw) {
    stream_.Append(raw);
    stream_.Note("block:memcpy");
}

void StreamWriter::Quantum(const Coded& payload) {
    PutLength(payload.size());
    PutCheck(payload.bytes);
    stream_.Append(payload);
    NoteQuantum("coded");
}

void StreamWriter::StoredByLength(ByteSpan raw) {
    PutLength(raw.size());
    PutCheck(raw);
    stream_.Append(raw);
    NoteQuantum("stored-by-length");
}

void StreamWriter::StoredSpecial(ByteSpan raw) {
    PutSpecial(kStored);
    PutCheck(raw);
    stream_.Append(raw);
    NoteQuantum("special-stored");
}

void StreamWriter::Memset(uint8_t value) {
    PutSpecial(kMemset);
    stream_.bytes.push_back(value);
    NoteQuantum("memset");
}

void StreamWriter::WholeMatch(uint64_t distance) {
    PutSpecial(kWhole);
    const uint64_t value = distance - 1;
    unsigned groups = 0;
    if (value < 0x8000) {
        stream_.AppendBig(0x8000 | value, 2);
    } else {
        stream_.AppendBig((value - 0x8000) & 0x7FFF, 2);
        uint64_t rest = (value - 0x8000) >> 15;
        for (groups = 1; rest >= 0x80; ++groups) {  // such a group counts 0x80 more than its bits say
            stream_.bytes.push_back(static_cast<uint8_t>(rest & 0x7F));
            rest = (rest - 0x80 - (rest & 0x7F)) >> 7;
        }
        stream_.bytes.push_back(static_cast<uint8_t>(0x80 | rest));
    }
    NoteQuantum("whole");
    stream_.Note("whole:groups" + std::to_string(groups));
}

Compressed Compress(ByteSpan raw, const CompressOptions& options) {
    StreamWriter out;
    Parser parser(raw, options.parse);
    size_t floor = 0;
    for (size_t start = 0; start < raw.size(); start += kBlockSize) {
        const ByteSpan block = raw.subspan(start, std::min(kBlockSize, raw.size() - start));
        const bool reset = start == 0 || options.reset_blocks;
        if (reset) floor = start;
        BlockHeader header;
        header.reset = reset;
        header.check = options.check;
        out.BeginBlock(header);
        const Coded payload = EncodeQuantum(parser, raw, start, start + block.size(), floor, options.chunk);
        if (IsOneByte(block)) {
            out.Memset(block[0]);
        } else if (payload.size() < block.size()) {
            out.Quantum(payload);
        } else {
            out.StoredSpecial(block);
        }
    }
    return {out.stream().bytes, out.stream().forms, out.blocks()};
}

}  // namespace lz
