// The limits of arrays, besides their bytes: impossible lengths, scratch, and the places of a batch.
#include <cstdint>
#include <span>
#include <vector>

#include <gtest/gtest.h>

#include "oodle/oodle2/core/newlz_arrays_huff.h"
#include "oodle/oodle2/core/newlz_multiarrays.h"

namespace {

using Bytes = std::vector<std::uint8_t>;

TEST(ArrayHeader, lengths_have_limits) {
    const struct {
        Bytes header;
        std::size_t more;  // bytes behind the header
        bool isGood;
    } cases[] = {
        {{0x03, 0xFF, 0xFF}, 0x3FFFF, true},
        {{0x04, 0x00, 0x00}, 0x40000, false},
        {{0xB0, 0x00, 0x01}, 1, true},
        {{0xB0, 0x00, 0x00}, 1, false},
    };
    for (auto [header, more, isGood] : cases) {
        header.insert(header.end(), more, 0);
        EXPECT_EQ(oo2::newLZ_get_array_header(header, 0x40000).has_value(), isGood) << header.size();
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

// The last byte of the description is 0, as are the bits that a reader gives behind the end.
TEST(HuffBatch, takes_no_description_that_goes_on_behind_the_array) {
    const Bytes array = {0x00, 0x83, 0x0C, 0x00, 1, 0, 0, 0, 0};  // 'a' and 0x80 of 1 bit each
    Bytes out(12);
    EXPECT_TRUE(oo2::HuffBatch().Add(array, out, false));
    EXPECT_FALSE(oo2::HuffBatch().Add(std::span(array).first(3), out, false));
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

}  // namespace
