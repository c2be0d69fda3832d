// Array codings that are made of other arrays: run-length (type 3) and multiarrays (type 5).
#include "support/lz/array-writer.h"
#include "support/lz/bit-writers.h"

namespace lz {
namespace {

constexpr size_t kMinFill = 4;  // shorter repetitions are copied as literals

Coded EncodeInner(ByteSpan raw, const ArrayOptions& outer) {
    return EncodeArray(raw, outer.inner != nullptr ? *outer.inner : ArrayOptions{});
}

// A run-length buffer: literals from its front upwards, commands from its end downwards.
class RunLengthBuffer {
  public:
    void Put(ByteSpan literals, uint8_t value, size_t fill) {
        if (fill > 0 && value != fill_) {
            literals_.push_back(value);
            Command("set", 1);
            fill_ = value;
        }
        literals_.insert(literals_.end(), literals.begin(), literals.end());
        PutCounts(literals.size(), fill);
    }
    const Bytes& literals() const { return literals_; }
    Bytes TakeCommands() const { return Reversed(commands_); }
    const Forms& forms() const { return forms_; }

  private:
    void Command(const char* form, unsigned first) {
        commands_.push_back(static_cast<uint8_t>(first));
        forms_.insert(std::string("rle:cmd-") + form);
    }
    void Command2(const char* form, unsigned both) {
        Command(form, both >> 8);
        commands_.push_back(static_cast<uint8_t>(both));
    }
    void PutCounts(size_t literals, size_t fill) {
        for (size_t many = literals / 64; many > 0;) {
            const size_t now = std::min<size_t>(many, 0x700);
            Command2("lits", static_cast<unsigned>(0x1FF + now));
            many -= now;
        }
        const auto few = static_cast<unsigned>(literals % 64);
        const auto short_fill = static_cast<unsigned>(fill % 128);
        if (few <= 15 && short_fill >= 3 && short_fill <= 15) {
            Command("1", (short_fill << 4) | (15 - few));
        } else if (few == 15 && short_fill == 0) {
            Command("0", 0);
        } else if (few + short_fill > 0) {
            Command2("2", 0x1000 + ((short_fill << 6) | few));
        }
        for (size_t many = fill / 128; many > 0;) {
            const size_t now = std::min<size_t>(many, 0x700);
            Command2("fill", static_cast<unsigned>(0x8FF + now));
            many -= now;
        }
    }

    Bytes literals_;
    Bytes commands_;
    Forms forms_;
    uint8_t fill_ = 0;
};

RunLengthBuffer BuildRunLength(ByteSpan raw) {
    RunLengthBuffer buffer;
    size_t literals = 0;  // start of those not yet put
    for (size_t i = 0; i < raw.size();) {
        size_t end = i;
        while (end < raw.size() && raw[end] == raw[i]) ++end;
        if (end - i >= kMinFill) {
            buffer.Put(raw.subspan(literals, i - literals), raw[i], end - i);
            literals = end;
        }
        i = end;
    }
    buffer.Put(raw.subspan(literals), 0, 0);
    return buffer;
}

// An array that may head a run-length buffer: a first byte of 0 would mean that there is none.
bool CanLead(const Coded& array) { return !array.bytes.empty() && array.bytes[0] != 0; }

struct Interval {
    unsigned source;  // from 1
    size_t length;
};

// Cuts the array at places that depend on nothing but its length, so that all sources and widths occur.
std::vector<Interval> CutIntervals(size_t size, unsigned sources, size_t longest) {
    std::vector<Interval> intervals;
    uint32_t state = 12345;
    const auto below = [&state](size_t limit) {
        state = state * 1664525 + 1013904223;
        return (state >> 8) % limit;
    };
    const size_t usual = std::min(longest, std::max<size_t>(1, size / (3 * sources)));
    while (size > 0) {
        const size_t length = std::min(size, 1 + below(2 * usual - 1));
        intervals.push_back({1 + static_cast<unsigned>(below(sources)), length});
        size -= length;
    }
    return intervals;
}

Coded JoinArrays(ByteSpan raw, const ArrayOptions& options) {
    const size_t count = options.multi.arrays;
    Coded out;
    out.bytes.push_back(static_cast<uint8_t>(count));
    for (size_t i = 0; i < count; ++i) {
        const size_t start = raw.size() * i / count;
        out.Append(EncodeInner(raw.subspan(start, raw.size() * (i + 1) / count - start), options));
    }
    out.Note("multi:concat");
    return out;
}

Coded EncodeIndices(const std::vector<Interval>& intervals, const ArrayOptions& options) {
    const bool packed = options.multi.layout == MultiOptions::Layout::packed_indices;
    TwoEndedWriter block;
    Bytes indices;
    Bytes logs;
    const auto put_length = [&](size_t length) {
        const unsigned log = FloorLog2(length);
        block.Next().Put(static_cast<uint32_t>(length) - (1U << log), log);
        return static_cast<uint8_t>(log);
    };
    for (const Interval& interval : intervals) {
        const uint8_t log = put_length(interval.length);
        indices.push_back(
            static_cast<uint8_t>(packed ? (unsigned{log} << 4) | interval.source : interval.source));
        logs.push_back(log);
    }
    const size_t end_length = options.multi.end_length ? 5 : 1;
    indices.push_back(packed ? static_cast<uint8_t>(put_length(end_length) << 4) : uint8_t{0});
    const Bytes lengths = block.Finish();
    Coded out;
    out.AppendLittle((packed ? 0x8000 : 0) | lengths.size(), 2);
    out.Append(EncodeInner(indices, options));
    if (!packed) out.Append(EncodeInner(logs, options));
    out.Append(lengths);
    out.Note(packed ? "multi:bit15-set" : "multi:bit15-clear");
    if (packed && end_length > 1) out.Note("multi:end-with-length");
    return out;
}

Coded InterleaveArrays(ByteSpan raw, const ArrayOptions& options) {
    const unsigned sources = options.multi.arrays;
    const bool packed = options.multi.layout == MultiOptions::Layout::packed_indices;
    const std::vector<Interval> intervals = CutIntervals(raw.size(), sources, packed ? 0x4000 : 0x10000);
    std::vector<Bytes> parts(sources);
    size_t position = 0;
    for (const Interval& interval : intervals) {
        const ByteSpan bytes = raw.subspan(position, interval.length);
        parts[interval.source - 1].insert(parts[interval.source - 1].end(), bytes.begin(), bytes.end());
        position += interval.length;
    }
    Coded out;
    out.bytes.push_back(static_cast<uint8_t>(0x80 | sources));
    for (const Bytes& part : parts) out.Append(EncodeInner(part, options));
    out.Append(EncodeIndices(intervals, options));
    return out;
}

void NoteDepth(Coded& coded) { coded.Note("nested:" + std::to_string(++coded.depth)); }

}  // namespace

std::optional<Coded> EncodeRunLength(ByteSpan raw, const ArrayOptions& options) {
    if (std::count(raw.begin(), raw.end(), raw[0]) == static_cast<ptrdiff_t>(raw.size())) {
        return Coded{{raw[0]}, {"rle:one-byte"}};
    }
    const RunLengthBuffer buffer = BuildRunLength(raw);
    Bytes front = buffer.literals();
    Bytes back = buffer.TakeCommands();
    if (options.run_length_prefix == RunLengthPrefix::all) {
        front.insert(front.end(), back.begin(), back.end());
        back.clear();
    }
    Coded out;
    if (options.run_length_prefix != RunLengthPrefix::none) {
        const Coded lead = EncodeInner(front, options);
        if (!CanLead(lead)) return std::nullopt;
        out.Append(lead);
        NoteDepth(out);
        out.Note(back.empty() ? "rle:coded-all" : "rle:coded-then-raw");
    } else {
        out.bytes.push_back(0);
        out.Append(front);
        out.Note("rle:raw");
    }
    out.Append(back);
    out.forms.insert(buffer.forms().begin(), buffer.forms().end());
    return out;
}

std::optional<Coded> EncodeMulti(ByteSpan raw, const ArrayOptions& options) {
    Coded out = options.multi.layout == MultiOptions::Layout::joined ? JoinArrays(raw, options)
                                                                     : InterleaveArrays(raw, options);
    if (out.size() < 6) return std::nullopt;
    NoteDepth(out);
    return out;
}

}  // namespace lz
