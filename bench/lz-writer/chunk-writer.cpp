// Splits commands into the streams of an LZ chunk and lays the chunk out.
#include "lz-writer/chunk-writer.h"

#include "lz-writer/offset-codes.h"

namespace lz {
namespace {

struct Streams {
    Bytes literals;
    Bytes commands;
    Bytes excesses;
    std::vector<uint32_t> distances;
    std::vector<uint32_t> long_excesses;
};

class StreamBuilder {
  public:
    StreamBuilder(ByteSpan raw, size_t position) : raw_(raw), position_(position) {}

    Streams Build(const std::vector<Command>& commands, size_t end) {
        for (const Command& command : commands) Put(command);
        PutLiterals(end - position_);
        return std::move(out_);
    }

  private:
    void Put(const Command& command) {
        const uint32_t run_code = std::min(command.run, 3U);
        const uint32_t length_code = std::min(command.length - 2, 15U);
        const unsigned index = recent_.IndexOf(command.distance);
        out_.commands.push_back(static_cast<uint8_t>(run_code | (length_code << 2) | (index << 6)));
        PutLiterals(command.run);
        if (run_code == 3) PutExcess(command.run - 3);
        if (length_code == 15) PutExcess(command.length - 17);
        if (index == 3) out_.distances.push_back(command.distance);
        recent_.Use(index, command.distance);
        position_ += command.length;
    }
    void PutLiterals(size_t count) {
        const ByteSpan literals = raw_.subspan(position_, count);
        out_.literals.insert(out_.literals.end(), literals.begin(), literals.end());
        position_ += count;
    }
    void PutExcess(uint32_t excess) {
        out_.excesses.push_back(static_cast<uint8_t>(std::min(excess, 255U)));
        if (excess >= 255) out_.long_excesses.push_back(excess - 255);
    }

    ByteSpan raw_;
    size_t position_;
    RecentDistances recent_;
    Streams out_;
};

// The byte count of the section of long excesses.
void AppendCountByte(Coded& out, size_t count) {
    if (count < 32) {
        out.bytes.push_back(static_cast<uint8_t>(0x80 | count));
    } else {
        out.bytes.push_back(static_cast<uint8_t>(0x80 | 32 | (count & 31)));
        out.bytes.push_back(static_cast<uint8_t>((count - 32) >> 5));
    }
}

struct ArrayChoices {
    ArrayOptions literals;
    ArrayOptions commands;
    ArrayOptions offsets;
    ArrayOptions excesses;
};

// Stores the arrays whose coding saves least per symbol, until the chunk has grown by at most `growth` bytes.
ArrayChoices StoreArrays(const Streams& streams, ByteSpan offset_codes, size_t growth) {
    struct Array {
        ByteSpan raw;
        ArrayOptions* options;
        size_t saved = 0;  // by coding
    };
    ArrayChoices choices;
    Array arrays[] = {{streams.literals, &choices.literals},
                      {streams.commands, &choices.commands},
                      {offset_codes, &choices.offsets},
                      {streams.excesses, &choices.excesses}};
    for (Array& array : arrays)
        array.saved = array.raw.size() - std::min(array.raw.size(), EncodeArray(array.raw).size());
    std::sort(std::begin(arrays), std::end(arrays),
              [](const Array& a, const Array& b) { return a.saved * b.raw.size() < b.saved * a.raw.size(); });
    for (const Array& array : arrays) {
        if (array.saved > growth) continue;
        growth -= array.saved;
        array.options->only_stored = true;
    }
    return choices;
}

Coded Payload(const Streams& streams, const OffsetCodes& offsets, bool count_byte, ArrayChoices choices) {
    Coded out;
    const Bytes section = count_byte ? LongExcessBits(streams.long_excesses) : Bytes{};
    if (count_byte) AppendCountByte(out, section.size());
    choices.literals.long_header = !count_byte;  // a set bit 7 there would be a count byte
    choices.offsets.long_header = true;          // and there a modulus
    out.Append(EncodeArray(streams.literals, choices.literals));
    out.Append(EncodeArray(streams.commands, choices.commands));
    out.Append(EncodeArray(offsets.codes, choices.offsets));
    out.Append(EncodeArray(streams.excesses, choices.excesses));
    out.Append(OffsetBits(offsets, streams.long_excesses, count_byte));
    out.Append(section);
    return out;
}

// Nothing if the chunk is no smaller than its raw bytes.
std::optional<Coded> EncodeLz(ByteSpan raw, size_t start, size_t size, bool first,
                              const std::vector<Command>& commands, double store_growth) {
    if (size < kMinLzChunk) return std::nullopt;
    const size_t begin = start + (first ? 8 : 0);
    const Streams streams = StreamBuilder(raw, begin).Build(commands, start + size);
    const OffsetCodes offsets = CodeOffsets(streams.distances);
    // The count byte pays for itself where it allows the literals a short header.
    const bool count_byte = EncodeArray(streams.literals).bytes[0] >= 0x80;
    Coded payload = Payload(streams, offsets, count_byte, {});
    const auto growth = static_cast<size_t>(store_growth * static_cast<double>(payload.size()));
    if (growth > 0) {
        payload = Payload(streams, offsets, count_byte, StoreArrays(streams, offsets.codes, growth));
    }
    const size_t payload_size = payload.size() + (begin - start);
    if (payload_size >= size) return std::nullopt;
    constexpr uint32_t kRawLiterals = 1 << 19;
    Coded out;
    out.AppendBig(0x800000 | kRawLiterals | payload_size, 3);
    out.Append(raw.subspan(start, begin - start));
    out.Append(payload);
    return out;
}

Coded EncodeStored(ByteSpan raw) {
    Coded out;
    out.AppendBig(0x800000 | raw.size(), 3);
    out.Append(raw);
    return out;
}

}  // namespace

Coded EncodeChunk(ByteSpan raw, size_t start, size_t size, bool first, const std::vector<Command>& commands,
                  double store_growth) {
    const ByteSpan bytes = raw.subspan(start, size);
    Coded best = EncodeLz(raw, start, size, first, commands, store_growth).value_or(EncodeStored(bytes));
    // A long header, since a chunk that begins with a set bit 7 is an LZ chunk.
    Coded array = EncodeArray(bytes, {.long_header = true, .allow_stored = false});
    return !array.bytes.empty() && array.size() < std::min(best.size(), bytes.size()) ? array : best;
}

}  // namespace lz
