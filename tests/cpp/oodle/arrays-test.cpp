// Array headers at their limits, contents that are broken in one place, and what bounds arrays inside arrays.
#include <cstdint>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "oodle/oodle2/core/newlz_arrays.h"
#include "oodle/oodle2/core/newlz_arrays_huff.h"
#include "oodle/oodle2/core/newlz_arrays_tans.h"
#include "oodle/oodle2/core/newlz_multiarrays.h"
#include "support/captured-log.h"

namespace {

using Bytes = std::vector<std::uint8_t>;

TEST(ArrayHeader, forms_and_limits) {
    constexpr std::size_t kAny = 0x40000;
    const struct {
        Bytes header;
        std::size_t more;  // bytes behind the header
        std::size_t capacity;
        long rawLen;  // -1: refused
        const char* line = nullptr;
    } cases[] = {
        {{0x8F, 0xFF}, 4095, kAny, 4095},
        {{0x8F, 0xFF}, 4094, kAny, -1},
        {{0x8F, 0xFF}, 4095, 4094, -1},
        {{0x80, 0x00}, 0, 0, 0},
        {{0x80}, 0, kAny, -1, "OODLE ERROR : corruption : from_ptr+2 <= from_end\n"},
        {{0x00, 0x00, 0x00}, 0, kAny, 0},
        {{0x00, 0x00, 0x00}, 1, kAny, 0},
        {{0x00, 0x00, 0x01}, 0, kAny, -1, "OODLE ERROR : corruption : header == 0\n"},
        {{0x00, 0x00}, 0, kAny, -1, "OODLE ERROR : corruption : header == 0\n"},
        {{0x03, 0xFF, 0xFF}, 0x3FFFF, kAny, 0x3FFFF},
        {{0x04, 0x00, 0x00}, 0x40000, kAny, -1},
        // Type 2, 5 bytes: raw length less 1 in bits 18 to 35, compressed length below them.
        {{0x20, 0x00, 0x28, 0x00, 0x0A}, 10, kAny, 11},
        {{0x20, 0x00, 0x28, 0x00, 0x0B}, 11, kAny, -1},
        {{0x20, 0x00, 0x28, 0x00, 0x00}, 10, kAny, -1},
        {{0x20, 0x00, 0x28, 0x00, 0x0A}, 9, kAny, -1},
        {{0x2F, 0xFF, 0xFC, 0x00, 0x01}, 1, kAny, 0x40000},
        {{0x20, 0x00, 0x28, 0x00}, 0, kAny, -1, "OODLE ERROR : corruption : from_ptr+5 <= from_end\n"},
        // Type 3, 3 bytes: compressed length c in bits 0 to 9, raw length less c + 1 above them.
        {{0xBF, 0xFC, 0x01}, 1, kAny, 1025},
        {{0xB0, 0x00, 0x00}, 1, kAny, -1},
        {{0xB0, 0x00, 0x01}, 0, kAny, -1, "OODLE ERROR : corruption : from_ptr+4 <= from_end\n"},
        {{0x60, 0x00, 0x28, 0x00, 0x0A}, 10, kAny, -1},
        {{0xF0, 0x00, 0x01}, 1, kAny, -1},
    };
    for (const auto& c : cases) {
        const CapturedLog log;
        Bytes in = c.header;
        in.insert(in.end(), c.more, 0);
        const auto header = oo2::newLZ_get_array_header(in, c.capacity);
        SCOPED_TRACE(testing::Message() << "case " << &c - cases);
        EXPECT_EQ(header ? static_cast<long>(header->rawLen) : -1, c.rawLen);
        if (header) {
            EXPECT_EQ(header->size, c.header.size());
        }
        EXPECT_EQ(log.Lines(oo2::kLogError),
                  c.line ? std::vector<std::string>{c.line} : std::vector<std::string>{});
    }
}

bool DecodeHuffman(std::span<const std::uint8_t> comp, std::span<std::uint8_t> out, oo2::ArrayScratch&) {
    oo2::HuffBatch batch;
    return batch.Add(comp, out, false) && batch.Run(oo2::DecodePath::Fast);
}

bool DecodeTans(std::span<const std::uint8_t> comp, std::span<std::uint8_t> out, oo2::ArrayScratch&) {
    return oo2::newLZ_decode_tans(comp, out, oo2::DecodePath::Fast);
}

// But for the one check each of these would be taken. The streams of the Huffman and tANS arrays are zeros.
TEST(ArrayContents, broken_in_one_place_are_refused) {
    const struct {
        decltype(&DecodeHuffman) decode;
        std::size_t rawLen;
        Bytes comp;
        const char* line = "";
    } cases[] = {
        // Sparse: 'a' and 'b' of 2 bits each; 'a' twice, of 1 bit. Then a byte for each stream.
        {DecodeHuffman, 12, {0x00, 0x8B, 0x0D, 0x8A, 1, 0, 0, 0, 0}},
        {DecodeHuffman, 12, {0x00, 0x83, 0x0B, 0x08, 1, 0, 0, 0, 0}},
        // The second form: 2 symbols of 1 bit, in a run behind a gap of 255.
        {DecodeHuffman, 12, {0x80, 0x14, 0x00, 0x10, 0x04, 0x04, 0, 1, 0, 0, 0, 0}},
        // Sparse, 256 states: one of 'a', then a byte too many; 200 of 'a'; 'a' twice. The rest are 'b'.
        {DecodeTans,
         5,
         {0x00, 0x2C, 0x36, 0x20, 0, 0, 0, 0, 0, 0},
         "rrPtrDiff(in1 - in0) == (SINTa)final_nbytes\n"},
        {DecodeTans, 5, {0x01, 0x0C, 0x39, 0x0C, 0x40, 0, 0, 0, 0, 0}, "last too small\n"},
        {DecodeTans, 5, {0x02, 0x2C, 0x36, 0x1B, 0x10, 0, 0, 0, 0, 0}, "! seen[sym]\n"},
        // Two sources; packed, no bytes of lengths; a last index that is not 0, a length that needs a bit.
        {oo2::newLZ_decode_multi,
         2,
         {0x82, 0x80, 1, 'a', 0x80, 1, 'b', 0, 0x80, 0x80, 3, 0x01, 0x02, 0x01},
         "interval_indices[num_indices-1] == 0\n"},
        {oo2::newLZ_decode_multi,
         3,
         {0x82, 0x80, 2, 'a', 'a', 0x80, 1, 'b', 0, 0x80, 0x80, 3, 0x11, 0x02, 0},
         "b >= f\n"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << "case " << &c - cases);
        const CapturedLog log;
        Bytes out(c.rawLen);
        oo2::ArrayScratch scratch;
        EXPECT_FALSE(c.decode(c.comp, out, scratch));
        std::string lines;
        for (const std::string& line : log.Lines(oo2::kLogError)) lines += line;
        EXPECT_THAT(lines, testing::EndsWith(c.line));
        EXPECT_EQ(lines.empty(), *c.line == '\0');
    }
}

// Two parts of 10 bytes, each one byte repeated.
TEST(JoinedArrays, take_scratch_for_their_parts) {
    const Bytes joined = {2, 0xB0, 0x20, 0x01, 5, 0xB0, 0x20, 0x01, 6};
    for (const std::size_t room : {20u, 19u}) {
        Bytes memory(room), out(20);
        oo2::ArrayScratch scratch{.next = memory.data(), .end = memory.data() + room};
        EXPECT_EQ(oo2::newLZ_decode_multi(joined, out, scratch), room == 20);
    }
}

TEST(HuffBatch, refuses_more_arrays_than_a_chunk_has) {
    const Bytes array = {0x00, 0x83, 0x0B, 0x10, 1, 0, 0, 0, 0};  // 'a' and 'b' of 1 bit each
    Bytes out(12);
    oo2::HuffBatch batch;
    for (int i = 0; i < 5; ++i) EXPECT_TRUE(batch.Add(array, out, false));
    EXPECT_FALSE(batch.Add(array, out, false));
    EXPECT_TRUE(batch.Run(oo2::DecodePath::Fast));
    EXPECT_EQ(out, Bytes(12, 'a'));
}

// 32,000 bytes in as many run-length arrays inside one another: the innermost is one byte repeated, each of
// the others copies the literals that the one inside it gives.
Bytes NestedArrays(std::size_t depth) {
    constexpr std::size_t kRawLen = 32'000;
    constexpr std::size_t kCopyAll = 0x1FF + kRawLen / 64;
    Bytes array = {7};
    for (std::size_t level = 1;; ++level) {
        // A long header of type 3: the raw length less 1 and the compressed length.
        const std::uint64_t word = std::uint64_t{3} << 36 | std::uint64_t{kRawLen - 1} << 18 | array.size();
        Bytes header;
        for (int shift = 32; shift >= 0; shift -= 8)
            header.push_back(static_cast<std::uint8_t>(word >> shift));
        array.insert(array.begin(), header.begin(), header.end());
        if (level == depth) return array;
        array.insert(array.end(), {kCopyAll & 0xFF, kCopyAll >> 8});
    }
}

TEST(NestedArrays, go_16_deep_and_hold_what_the_budget_allows) {
    constexpr std::size_t kDefault = oo2::ArrayScratch{}.innerBytesLeft, kJustEnough = 15 * 32'000;
    Bytes memory(1 << 20);
    const std::pair<std::size_t, std::size_t> cases[] = {
        {16, kDefault}, {17, kDefault}, {3000, kDefault}, {16, kJustEnough}, {16, kJustEnough - 1}};
    for (const auto& [depth, budget] : cases) {
        oo2::ArrayScratch scratch{.next = memory.data(), .end = memory.data() + memory.size()};
        scratch.innerBytesLeft = budget;
        const auto array = oo2::newLZ_get_array(NestedArrays(depth), nullptr, 32'000, scratch);
        ASSERT_EQ(array.has_value(), depth <= 16 && budget >= kJustEnough) << depth << ' ' << budget;
        if (array) {
            EXPECT_EQ(Bytes(array->bytes.begin(), array->bytes.end()), Bytes(32'000, 7));
        }
    }
}

}  // namespace
