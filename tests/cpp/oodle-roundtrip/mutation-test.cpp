// Damaged streams: no access outside the buffers, no success for a stream that lacks bytes, and both of the
// decoder's paths of one mind about what is left.
#include <gtest/gtest.h>

#include "decode.h"
#include "oodle/oodle2/core/oodlelzcompressors.h"

namespace lz {
namespace {

constexpr size_t kStreams = 40;
constexpr size_t kLargestStream = 700;
constexpr size_t kLargestRaw = 50'000;

std::vector<const Case*> SmallCases() {
    std::vector<const Case*> cases;
    for (const Case& example : AllCases()) {
        const bool small = example.stream.size() <= kLargestStream && example.raw.size() <= kLargestRaw;
        if (small) cases.push_back(&example);
    }
    return cases;
}

TEST(OodleMutation, RefusesEveryCutStream) {
    const std::vector<const Case*> cases = SmallCases();
    ASSERT_GE(cases.size(), kStreams);
    for (const Case* example : cases) {
        for (size_t size = 0; size < example->stream.size(); ++size) {
            const ByteSpan cut = ByteSpan(example->stream).first(size);
            ASSERT_FALSE(Decode(cut, example->raw.size()).has_value()) << example->name << " cut to " << size;
        }
    }
}

TEST(OodleMutation, SurvivesEveryChangedByte) {
    for (const Case* example : SmallCases()) {
        Bytes stream = example->stream;
        for (size_t i = 0; i < stream.size(); ++i) {
            const uint8_t original = stream[i];
            for (const unsigned change : {0x01U, 0x80U, 0xFFU, 0x24U + static_cast<unsigned>(i % 64)}) {
                stream[i] = static_cast<uint8_t>(original ^ change);
                const std::optional<Bytes> fast = Decode(stream, example->raw.size());
                ASSERT_TRUE(fast == Decode(stream, example->raw.size(), Path::careful))
                    << example->name << ", byte " << i << " is " << int{stream[i]};
            }
            stream[i] = original;
        }
    }
}

// Phase 2 once took what phase 1 had left of the stream that stood there before.
TEST(OodleMutation, SecondPhaseRefusesWhatTheFirstRefused) {
    const auto& cases = AllCases();
    const auto example = std::ranges::find(cases, "long-excesses", &Case::name);
    ASSERT_NE(example, cases.end());
    Bytes stream = example->stream;
    Bytes raw(example->raw.size());
    Bytes memory(static_cast<size_t>(OodleLZ_ThreadPhased_BlockDecoderMemorySizeNeeded));
    const auto decode = [&](int phase) {
        return OodleLZ_Decompress(stream.data(), std::ssize(stream), raw.data(), std::ssize(raw), 1, 0, 0,
                                  nullptr, 0, nullptr, nullptr, memory.data(), std::ssize(memory), phase);
    };
    EXPECT_EQ(decode(OodleLZ_Decode_ThreadPhase1), std::ssize(raw));
    EXPECT_EQ(decode(OodleLZ_Decode_ThreadPhase2), std::ssize(raw));
    std::fill(stream.end() - 3, stream.end(), uint8_t{0});  // the count of long excesses: too many zeros
    EXPECT_EQ(decode(OodleLZ_Decode_ThreadPhase1), 0);
    EXPECT_EQ(decode(OodleLZ_Decode_ThreadPhase2), 0);
}

}  // namespace
}  // namespace lz
