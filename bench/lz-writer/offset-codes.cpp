// Offset codes and long excesses.
#include "lz-writer/offset-codes.h"

namespace lz {
namespace {

constexpr uint32_t kLowBias = 248;                 // codes below 0xF0
constexpr uint32_t kHighBias = 8322816;            // codes from 0xF0
constexpr uint32_t kFirstHigh = (1U << 23) - 256;  // the smallest distance of a high code

void PutSingle(OffsetCodes& out, uint32_t distance) {
    if (distance < kFirstHigh) {
        const uint32_t biased = distance + kLowBias;
        const uint32_t high = biased >> 4;
        const unsigned k = FloorLog2(high);
        out.codes.push_back(static_cast<uint8_t>(((k - 4) << 4) | (biased & 15)));
        out.bits.push_back({{high - (1U << k), k}});
    } else {
        const uint32_t biased = distance - kHighBias;
        const uint32_t high = biased >> 12;
        const unsigned k = FloorLog2(high);
        out.codes.push_back(static_cast<uint8_t>(0xF0 + k - 4));
        out.bits.push_back({{high - (1U << k), k}, {biased & 0xFFF, 12}});
    }
}

// z zeros, then x + 64 in z + 7 bits; the excesses take turns at the two ends.
void PutLongExcesses(TwoEndedWriter& out, const std::vector<uint32_t>& long_excesses) {
    out.RestartAtFront();
    for (const uint32_t x : long_excesses) {
        const unsigned log = FloorLog2(x + 64);
        MsbWriter& end = out.Next();
        end.Put(0, log - 6);
        end.Put(x + 64, log + 1);
    }
}

}  // namespace

OffsetCodes CodeOffsets(const std::vector<uint32_t>& distances) {
    OffsetCodes out;
    for (const uint32_t distance : distances) PutSingle(out, distance);
    return out;
}

Bytes OffsetBits(const OffsetCodes& offsets, const std::vector<uint32_t>& long_excesses, bool count_byte) {
    TwoEndedWriter out;
    if (!count_byte) {
        const auto count = static_cast<uint32_t>(long_excesses.size()) + 1;
        out.Back().Put(0, FloorLog2(count));
        out.Back().Put(count, FloorLog2(count) + 1);
    }
    for (const auto& fields : offsets.bits) {
        MsbWriter& end = out.Next();
        for (const Field field : fields) end.Put(field);
    }
    if (!count_byte) PutLongExcesses(out, long_excesses);
    return out.Finish();
}

Bytes LongExcessBits(const std::vector<uint32_t>& long_excesses) {
    TwoEndedWriter out;
    PutLongExcesses(out, long_excesses);
    return out.Finish();
}

}  // namespace lz
