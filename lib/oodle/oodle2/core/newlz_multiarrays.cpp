#include "oodle/oodle2/core/newlz_multiarrays.h"

#include <algorithm>
#include <array>

#include "oodle/oodle2/core/bit_readers.h"
#include "oodle/oodle2/core/oodlebase.h"

namespace oo2 {
namespace {

using Bytes = std::span<const std::uint8_t>;

constexpr std::size_t kLeastComp = 6;
constexpr std::size_t kMaxSources = 63;
constexpr unsigned kMaxLengthLog2 = 16;
constexpr unsigned kPackedFlag = 0x8000;
constexpr unsigned kLengthBytesMask = 0x3FFF;

// Takes arrays from the front of the compressed bytes, one after the other.
class ArrayQueue {
  public:
    ArrayQueue(Bytes comp, ArrayScratch& scratch) : m_comp(comp), m_scratch(scratch) {}

    std::optional<Bytes> Next(std::size_t capacity) {
        const auto array = newLZ_get_array(m_comp, nullptr, capacity, m_scratch);
        if (!array) return std::nullopt;
        m_comp = m_comp.subspan(array->compUsed);
        return array->bytes;
    }

    Bytes Rest() const { return m_comp; }
    Bytes Take(std::size_t count) {
        const Bytes taken = m_comp.first(count);
        m_comp = m_comp.subspan(count);
        return taken;
    }

  private:
    Bytes m_comp;
    ArrayScratch& m_scratch;
};

bool Join(Bytes comp, std::size_t parts, std::span<std::uint8_t> out, ArrayScratch& scratch) {
    ArrayQueue queue(comp, scratch);
    for (; parts > 0; --parts) {
        const auto part = queue.Next(out.size());
        if (!part) return false;
        std::copy(part->begin(), part->end(), out.begin());
        out = out.subspan(part->size());
    }
    return queue.Rest().empty() && out.empty();
}

// The intervals of a cut multiarray. Each has the number of its source and log2 of its length. The last index
// is 0.
struct Intervals {
    bool packed = false;  // then an index has the source in its low four bits, the log2 in its high four
    Bytes indices;
    Bytes logs;  // one fewer than indices, unless packed
    Bytes lengthBits;

    unsigned SourceAt(std::size_t i) const { return packed ? indices[i] & 15 : indices[i]; }
    unsigned LogAt(std::size_t i) const { return packed ? indices[i] >> 4 : logs[i]; }
    std::size_t LengthCount() const { return packed ? indices.size() : logs.size(); }
};

// Behind the sources:
//   2 bytes   little-endian q: bit 15: packed; bits 0-13: the number of bytes of the lengths' bits
//   array     the indices, one byte each
//   array     unless packed: the lengths' log2, one byte each
//   bytes     the lengths' bits
bool ReadIntervals(ArrayQueue& queue, Intervals& intervals) {
    if (!Check(queue.Rest().size() >= 3, "OODLE ERROR : corruption : rrPtrDiff(comp_end - comp_ptr) >= 3\n"))
        return false;
    const unsigned q = Load<std::uint16_t>(queue.Take(2).data());
    intervals.packed = (q & kPackedFlag) != 0;
    const auto indices = queue.Next(ArrayScratch::kMaxArrayLen);
    if (!indices || !Check(!indices->empty(), "OODLE ERROR : corruption : indi < num_indices\n"))
        return false;
    intervals.indices = *indices;
    if (!intervals.packed) {
        const auto logs = queue.Next(ArrayScratch::kMaxArrayLen);
        if (!logs) return false;
        intervals.logs = *logs;
    }
    const std::size_t lengthBytes = q & kLengthBytesMask;
    if (!Check(queue.Rest().size() >= lengthBytes,
               "OODLE ERROR : corruption : rrPtrDiff(comp_end - comp_ptr) >= varbits_complen\n")) {
        return false;
    }
    intervals.lengthBits = queue.Take(lengthBytes);
    return Check(intervals.SourceAt(indices->size() - 1) == 0,
                 "OODLE ERROR : corruption : interval_indices[num_indices-1] == 0\n") &&
           queue.Rest().empty();
}

// Reads the lengths: the 1st, 3rd, ... MSB forward from the first byte of their bits, the others MSB backward
// from the last. A length is a 1 and log2 more bits.
class LengthReader {
  public:
    explicit LengthReader(const Intervals& intervals)
        : m_intervals(intervals), m_forward(intervals.lengthBits), m_backward(intervals.lengthBits) {}

    bool Next(std::size_t& length) {
        const unsigned log = m_intervals.LogAt(m_read);
        if (!Check(log <= kMaxLengthLog2, "OODLE ERROR : corruption : interval_lenlog2 > 16\n")) return false;
        const std::uint32_t low = m_read % 2 == 0 ? m_forward.Read(log) : m_backward.Read(log);
        length = (std::size_t{1} << log) + low;
        ++m_read;
        return true;
    }

    bool HasNext() const { return m_read < m_intervals.LengthCount(); }
    bool HavePassedEachOther() const {
        return m_forward.BytesUsed() + m_backward.BytesUsed() > m_intervals.lengthBits.size();
    }

  private:
    const Intervals& m_intervals;
    std::size_t m_read = 0;
    MsbReader<Direction::Forward> m_forward;
    MsbReader<Direction::Backward> m_backward;
};

// Puts the output together. Uses `sources` up.
bool Assemble(std::span<Bytes> sources, const Intervals& intervals, std::span<std::uint8_t> out) {
    LengthReader lengths(intervals);
    const std::size_t last = intervals.indices.size() - 1;
    for (std::size_t i = 0; i < last; ++i) {
        const unsigned source = intervals.SourceAt(i);
        if (!Check(source != 0, "OODLE ERROR : corruption : indi == num_indices\n") ||
            !Check(source <= sources.size(),
                   "OODLE ERROR : corruption : interval source > num_entropy_arrays\n") ||
            !Check(lengths.HasNext(), "OODLE ERROR : corruption : leni < num_lens\n")) {
            return false;
        }
        std::size_t length = 0;
        if (!lengths.Next(length)) return false;
        Bytes& from = sources[source - 1];
        if (!Check(length <= from.size(), "OODLE ERROR : corruption : interval cur_len too large\n"))
            return false;
        if (length > out.size()) return false;
        std::copy_n(from.begin(), length, out.begin());
        from = from.subspan(length);
        out = out.subspan(length);
    }
    // A packed index of 0 has a length too. It means nothing but must be there.
    std::size_t unused = 0;
    if (intervals.packed && !lengths.Next(unused)) return false;
    return Check(!lengths.HavePassedEachOther(), "OODLE ERROR : corruption : b >= f\n") &&
           Check(!lengths.HasNext(), "OODLE ERROR : corruption : leni == num_lens\n") &&
           Check(std::all_of(sources.begin(), sources.end(), [](Bytes source) { return source.empty(); }),
                 "OODLE ERROR : corruption : entropy_array_lens[i] == 0\n") &&
           out.empty();
}

bool Cut(Bytes comp, std::size_t sourceCount, std::span<std::uint8_t> out, ArrayScratch& scratch) {
    ArrayQueue queue(comp, scratch);
    std::array<Bytes, kMaxSources> sources;
    for (std::size_t i = 0; i < sourceCount; ++i) {
        const auto source = queue.Next(out.size());
        if (!source) return false;
        sources[i] = *source;
    }
    Intervals intervals;
    return ReadIntervals(queue, intervals) && Assemble(std::span(sources).first(sourceCount), intervals, out);
}

}  // namespace

// The first byte. Bit 7 clear: bits 0-6 are the number of arrays that follow; they are joined. Bit 7 set:
// bits 0-5 are the number of source arrays that follow; behind them stands how to cut them.
bool newLZ_decode_multi(Bytes comp, std::span<std::uint8_t> out, ArrayScratch& scratch) {
    if (comp.size() < kLeastComp) return false;
    const unsigned first = comp[0];
    if ((first & 0x7F) < 2) return false;
    comp = comp.subspan(1);
    return (first & 0x80) == 0 ? Join(comp, first, out, scratch) : Cut(comp, first & 0x3F, out, scratch);
}

}  // namespace oo2
