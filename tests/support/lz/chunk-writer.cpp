// Splits commands into the streams of an LZ chunk and lays the chunk out.
#include "support/lz/chunk-writer.h"

#include "support/lz/offset-codes.h"

namespace lz {
namespace {

using Kind = ChunkOptions::Kind;
using Literals = ChunkOptions::Literals;

constexpr double kSubGain = 0.02;  // "sub" literals decode slower: what they must save to be chosen

struct Streams {
    Bytes raw_literals;
    Bytes sub_literals;
    Bytes commands;
    Bytes excesses;
    std::vector<uint32_t> distances;
    std::vector<uint32_t> long_excesses;
    Forms forms;
};

class StreamBuilder {
  public:
    StreamBuilder(ByteSpan raw, size_t position, bool repeat_as_new)
        : raw_(raw), position_(position), repeat_as_new_(repeat_as_new) {}

    Streams Build(const std::vector<Command>& commands, size_t end) {
        for (const Command& command : commands) Put(command, end);
        Note(position_ == end ? "lz:no-last-literals" : "lz:last-literals");
        PutLiterals(end - position_);
        return std::move(out_);
    }

  private:
    void Put(const Command& command, size_t end) {
        const uint32_t run_code = std::min(command.run, 3U);
        const uint32_t length_code = std::min(command.length - 2, 15U);
        const unsigned recent = recent_.IndexOf(command.distance);
        const unsigned index = repeat_as_new_ ? 3 : recent;
        out_.commands.push_back(static_cast<uint8_t>(run_code | (length_code << 2) | (index << 6)));
        PutLiterals(command.run);
        if (run_code == 3) PutExcess(command.run - 3, "lz:run-excess");
        if (length_code == 15) PutExcess(command.length - 17, "lz:match-excess");
        if (index == 3) out_.distances.push_back(command.distance);
        recent_.Use(index, command.distance);
        position_ += command.length;
        Note("lz:index" + std::to_string(index));
        if (index == 3 && recent != 3) Note("lz:index3-recent");
        if (command.distance < command.length) Note("lz:overlap");
        if (length_code == 15 && position_ + 8 == end) Note("lz:long-match-at-limit");
        if (length_code < 15 && position_ + 8 > end) Note("lz:short-match-in-last-8");
    }
    void PutLiterals(size_t count) {
        if (count > 0 && recent_[0] < 8) Note("lz:literals-after-near-match");
        for (; count > 0; --count, ++position_) {
            const uint8_t byte = raw_[position_];
            out_.raw_literals.push_back(byte);
            out_.sub_literals.push_back(static_cast<uint8_t>(byte - raw_[position_ - recent_[0]]));
        }
    }
    void PutExcess(uint32_t excess, const char* form) {
        out_.excesses.push_back(static_cast<uint8_t>(std::min(excess, 255U)));
        if (excess >= 255) out_.long_excesses.push_back(excess - 255);
        Note(form);
    }
    void Note(const std::string& form) { out_.forms.insert(form); }

    ByteSpan raw_;
    size_t position_;
    bool repeat_as_new_;
    RecentDistances recent_;
    Streams out_;
};

OffsetCodes ChooseOffsets(const std::vector<uint32_t>& distances, std::optional<unsigned> modulus) {
    if (modulus && CanCode(distances, *modulus)) return CodeOffsets(distances, *modulus);
    OffsetCodes best = CodeOffsets(distances, CanCode(distances, 0) ? 0 : 1);
    double best_bits = best.EstimatedBits();
    for (const unsigned candidate : {1U, 2U, 4U, 8U, 12U, 16U, 20U, 24U, 28U, 32U, 36U, 40U, 48U, 64U}) {
        OffsetCodes codes = CodeOffsets(distances, candidate);
        const double bits = codes.EstimatedBits() * 1.01 + (candidate > 1 ? 400 : 8);
        if (bits >= best_bits) continue;
        best_bits = bits;
        best = std::move(codes);
    }
    return best;
}

void AppendStream(Coded& out, const char* name, ByteSpan raw, const ArrayOptions& options) {
    const Coded array = EncodeArray(raw, options);
    const unsigned first = array.bytes[0];
    const unsigned type = first < 0x80 ? (first < 16 ? 0 : first >> 4) : (first >> 4) & 7;
    const std::string form = std::string("lz:") + name;
    out.Append(array);
    out.Note(raw.empty() ? form + "-empty" : form + "-type" + std::to_string(type));
}

// The byte count of the section of long excesses.
void AppendCountByte(Coded& out, size_t count) {
    if (count < 32) {
        out.bytes.push_back(static_cast<uint8_t>(0x80 | count));
        out.Note("lz:excess-count");
    } else {
        out.bytes.push_back(static_cast<uint8_t>(0x80 | 32 | (count & 31)));
        out.bytes.push_back(static_cast<uint8_t>((count - 32) >> 5));
        out.Note("lz:excess-count-2");
    }
}

struct LiteralChoice {
    bool sub = false;
    bool count_byte = false;
};

LiteralChoice ChooseLiterals(const Streams& streams, const ChunkOptions& options) {
    const Coded raw = EncodeArray(streams.raw_literals, options.literal_array);
    const Coded sub = EncodeArray(streams.sub_literals, options.literal_array);
    LiteralChoice choice;
    choice.sub = options.literals == Literals::cheapest
                     ? static_cast<double>(sub.size()) * (1 + kSubGain) < static_cast<double>(raw.size())
                     : options.literals == Literals::sub;
    // The count byte pays for itself where it allows the literals a short header.
    const bool short_header = (choice.sub ? sub : raw).bytes[0] >= 0x80;
    choice.count_byte = options.count_byte.value_or(short_header);
    return choice;
}

void AppendOffsets(Coded& out, const OffsetCodes& offsets, const ChunkOptions& options) {
    ArrayOptions offset_array = options.offset_array;
    offset_array.long_header |= offsets.modulus == 0;  // a set bit 7 there would be a modulus
    if (offsets.modulus != 0) out.bytes.push_back(static_cast<uint8_t>(offsets.modulus + 0x7F));
    AppendStream(out, "offs", offsets.codes, offset_array);
    if (offsets.modulus > 1) AppendStream(out, "offs2", offsets.remainders, options.low_offset_array);
    out.forms.insert(offsets.forms.begin(), offsets.forms.end());
}

// The same options, but arrays are stored whose coding saves least for a symbol, until the chunk has grown by
// as many bytes as it may.
ChunkOptions StoreArrays(const Streams& streams, LiteralChoice choice, size_t growth, ChunkOptions options) {
    struct Array {
        ByteSpan raw;
        ArrayOptions* options;
        size_t saved = 0;  // by coding
    };
    const OffsetCodes offsets = ChooseOffsets(streams.distances, options.modulus);
    Array arrays[] = {{choice.sub ? streams.sub_literals : streams.raw_literals, &options.literal_array},
                      {streams.commands, &options.command_array},
                      {offsets.codes, &options.offset_array},
                      {streams.excesses, &options.excess_array}};
    for (Array& array : arrays)
        array.saved =
            array.raw.size() - std::min(array.raw.size(), EncodeArray(array.raw, *array.options).size());
    std::sort(std::begin(arrays), std::end(arrays),
              [](const Array& a, const Array& b) { return a.saved * b.raw.size() < b.saved * a.raw.size(); });
    for (const Array& array : arrays) {
        if (array.saved > growth) continue;
        growth -= array.saved;
        array.options->type = ArrayType::stored;
    }
    return options;
}

Coded Payload(const Streams& streams, LiteralChoice choice, const ChunkOptions& options) {
    Coded out;
    const Bytes section = choice.count_byte ? LongExcessBits(streams.long_excesses) : Bytes{};
    if (choice.count_byte) AppendCountByte(out, section.size());
    ArrayOptions literal_array = options.literal_array;
    literal_array.long_header |= !choice.count_byte;  // a set bit 7 there would be a count byte
    AppendStream(out, "lits", choice.sub ? streams.sub_literals : streams.raw_literals, literal_array);
    AppendStream(out, "cmds", streams.commands, options.command_array);
    const OffsetCodes offsets = ChooseOffsets(streams.distances, options.modulus);
    AppendOffsets(out, offsets, options);
    AppendStream(out, "excess", streams.excesses, options.excess_array);
    out.Append(OffsetBits(offsets, streams.long_excesses, choice.count_byte));
    out.Append(section);
    out.forms.insert(streams.forms.begin(), streams.forms.end());
    if (!choice.count_byte) out.Note("lz:no-excess-count");
    if (!streams.long_excesses.empty()) out.Note("lz:long-excess");
    if (streams.long_excesses.size() > 1) out.Note("lz:long-excess-both-readers");
    return out;
}

std::optional<Coded> EncodeLz(ByteSpan raw, size_t start, size_t size, bool first,
                              const std::vector<Command>& commands, const ChunkOptions& options) {
    if (size < kMinLzChunk) return std::nullopt;
    const size_t begin = start + (first ? 8 : 0);
    const Streams streams = StreamBuilder(raw, begin, options.repeat_as_new).Build(commands, start + size);
    const LiteralChoice choice = ChooseLiterals(streams, options);
    Coded payload = Payload(streams, choice, options);
    if (options.store_growth > 0) {
        const auto growth = static_cast<size_t>(options.store_growth * static_cast<double>(payload.size()));
        payload = Payload(streams, choice, StoreArrays(streams, choice, growth, options));
    }
    const size_t payload_size = payload.size() + (begin - start);
    if (payload_size >= size) return std::nullopt;
    Coded out;
    out.AppendBig(0x800000 | ((choice.sub ? 0U : 1U) << 19) | payload_size, 3);
    out.Append(raw.subspan(start, begin - start));
    out.Append(payload);
    out.Note(choice.sub ? "chunk:lz-sub" : "chunk:lz-raw");
    out.Note(first ? "lz:first8" : "lz:no-first8");
    return out;
}

Coded EncodeStored(ByteSpan raw) {
    Coded out;
    out.AppendBig(0x800000 | raw.size(), 3);
    out.Append(raw);
    out.Note("chunk:stored");
    return out;
}

// Long headers only: a chunk that begins with a set bit 7 is an LZ chunk.
Coded EncodeAsArray(ByteSpan raw, const ArrayOptions& array) {
    ArrayOptions options = array;
    options.long_header = true;
    options.allow_stored = false;
    Coded out = EncodeArray(raw, options);
    if (out.size() < raw.size()) {
        out.Note("chunk:array");
        return out;
    }
    return {};
}

}  // namespace

Coded EncodeChunk(ByteSpan raw, size_t start, size_t size, bool first, const std::vector<Command>& commands,
                  const ChunkOptions& options) {
    const ByteSpan bytes = raw.subspan(start, size);
    Coded best;
    const auto offer = [&](Coded candidate) {
        if (!candidate.bytes.empty() && (best.bytes.empty() || candidate.size() < best.size())) {
            best = std::move(candidate);
        }
    };
    const bool any = options.kind == Kind::cheapest;
    if (any || options.kind == Kind::lz) {
        offer(EncodeLz(raw, start, size, first, commands, options).value_or(Coded{}));
    }
    if (any || options.kind == Kind::array) offer(EncodeAsArray(bytes, options.literal_array));
    if (best.bytes.empty()) offer(EncodeStored(bytes));
    return best;
}

}  // namespace lz
