// Run-length arrays.
#include "lz-writer/array-writer.h"
#include "lz-writer/bit-writers.h"

namespace lz {
namespace {

constexpr size_t kMinFill = 4;  // shorter repetitions are copied as literals

// A run-length buffer: literals from its front upwards, commands from its end downwards.
class RunLengthBuffer {
  public:
    void Put(ByteSpan literals, uint8_t value, size_t fill) {
        if (fill > 0 && value != fill_) {
            literals_.push_back(value);
            Command(1);
            fill_ = value;
        }
        literals_.insert(literals_.end(), literals.begin(), literals.end());
        PutCounts(literals.size(), fill);
    }
    const Bytes& literals() const { return literals_; }
    Bytes TakeCommands() const { return Reversed(commands_); }

  private:
    void Command(unsigned first) { commands_.push_back(static_cast<uint8_t>(first)); }
    void Command2(unsigned both) {
        Command(both >> 8);
        Command(both & 0xFF);
    }
    void PutCounts(size_t literals, size_t fill) {
        for (size_t many = literals / 64; many > 0;) {
            const size_t now = std::min<size_t>(many, 0x700);
            Command2(static_cast<unsigned>(0x1FF + now));
            many -= now;
        }
        const auto few = static_cast<unsigned>(literals % 64);
        const auto short_fill = static_cast<unsigned>(fill % 128);
        if (few <= 15 && short_fill >= 3 && short_fill <= 15) {
            Command((short_fill << 4) | (15 - few));
        } else if (few == 15 && short_fill == 0) {
            Command(0);
        } else if (few + short_fill > 0) {
            Command2(0x1000 + ((short_fill << 6) | few));
        }
        for (size_t many = fill / 128; many > 0;) {
            const size_t now = std::min<size_t>(many, 0x700);
            Command2(static_cast<unsigned>(0x8FF + now));
            many -= now;
        }
    }

    Bytes literals_;
    Bytes commands_;
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

}  // namespace

Coded EncodeRunLength(ByteSpan raw) {
    if (std::count(raw.begin(), raw.end(), raw[0]) == static_cast<ptrdiff_t>(raw.size())) return {{raw[0]}};
    const RunLengthBuffer buffer = BuildRunLength(raw);
    Coded out;
    out.bytes.push_back(0);
    out.Append(buffer.literals());
    out.Append(buffer.TakeCommands());
    return out;
}

}  // namespace lz
