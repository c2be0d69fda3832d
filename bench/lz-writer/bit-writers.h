// Bit writers. The format reads some streams forwards and some from their last byte downwards; a backward
// stream is written forwards here and its bytes are reversed when it is finished.
#pragma once

#include <algorithm>

#include "lz-writer/coded.h"

namespace lz {

// `bits` low bits of `value`, at most 32 of them.
struct Field {
    uint32_t value = 0;
    unsigned bits = 0;
};

inline Bytes Reversed(Bytes bytes) {
    std::reverse(bytes.begin(), bytes.end());
    return bytes;
}

// First bit of a value is its most significant one and goes to bit 7 of the byte.
class MsbWriter {
  public:
    void Put(uint32_t value, unsigned bits) {
        pending_ = (pending_ << bits) | value;
        for (count_ += bits; count_ >= 8; count_ -= 8) {
            bytes_.push_back(static_cast<uint8_t>(pending_ >> (count_ - 8)));
        }
    }
    void Put(Field field) { Put(field.value, field.bits); }
    // `zeros` 0 bits and a 1.
    void PutUnary(unsigned zeros) {
        for (; zeros >= 31; zeros -= 31) Put(0, 31);
        Put(1, zeros + 1);
    }
    // The bytes so far, the last one filled up with 0 bits.
    Bytes Finish() const {
        Bytes out = bytes_;
        if (count_ > 0) out.push_back(static_cast<uint8_t>(pending_ << (8 - count_)));
        return out;
    }

  private:
    Bytes bytes_;
    uint64_t pending_ = 0;
    unsigned count_ = 0;  // bits of pending_ not yet in bytes_, below 8 between calls
};

// First bit of a value is its least significant one and goes to bit 0 of the byte.
class LsbWriter {
  public:
    void Put(uint32_t value, unsigned bits) {
        pending_ |= static_cast<uint64_t>(value) << count_;
        for (count_ += bits; count_ >= 8; count_ -= 8) {
            bytes_.push_back(static_cast<uint8_t>(pending_));
            pending_ >>= 8;
        }
    }
    Bytes Finish() const {
        Bytes out = bytes_;
        if (count_ > 0) out.push_back(static_cast<uint8_t>(pending_));
        return out;
    }

  private:
    Bytes bytes_;
    uint64_t pending_ = 0;
    unsigned count_ = 0;
};

// Values that go in turn to a stream from the front and to one from the back of the same bytes.
class TwoEndedWriter {
  public:
    MsbWriter& Next() { return (turn_++ & 1) == 0 ? front_ : back_; }
    MsbWriter& Back() { return back_; }
    void RestartAtFront() { turn_ = 0; }
    Bytes Finish() const {
        Bytes out = front_.Finish();
        const Bytes back = Reversed(back_.Finish());
        out.insert(out.end(), back.begin(), back.end());
        return out;
    }

  private:
    MsbWriter front_;
    MsbWriter back_;
    unsigned turn_ = 0;
};

}  // namespace lz
