// What OodleLZ_Decompress promises of its arguments: dictionary, callback, memory, phases, and the hooks.
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "oodle/oodle2/core/decoder_state.h"
#include "oodle/oodle2/core/decompress.h"
#include "support/captured-log.h"

namespace {

using testing::ElementsAre;
using Bytes = std::vector<std::uint8_t>;

constexpr std::ptrdiff_t kBlock = OODLELZ_BLOCK_LEN;

Bytes ReadVector(const char* name) {
    std::ifstream file(std::filesystem::path(CORVANE_TEST_DATA) / "lz" / name, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

// A stream of three blocks, Kraken, whole match and Kraken, and what it decodes to.
class Blocks : public testing::Test {
  protected:
    void SetUp() override {
        ASSERT_FALSE(stream_.empty());
        args_.compBuf = stream_.data();
        args_.compBufSize = static_cast<std::ptrdiff_t>(stream_.size());
        args_.rawBuf = raw_.data();
        args_.rawLen = static_cast<std::ptrdiff_t>(raw_.size());
        ASSERT_EQ(oo2::Decompress(args_, oo2::DecodePath::Fast), args_.rawLen);
        expected_ = raw_;
        raw_.assign(raw_.size(), 0);
    }

    // The arguments that decode one block behind those before it, as their dictionary.
    oo2::DecompressArgs OneBlock(std::ptrdiff_t rawPos, std::ptrdiff_t compPos) {
        oo2::DecompressArgs args = args_;
        args.compBuf += compPos;
        args.compBufSize -= compPos;
        args.rawBuf += rawPos;
        args.rawLen = std::min(kBlock, args_.rawLen - rawPos);
        args.decBufBase = raw_.data();
        return args;
    }

    template <typename DecodeBlock>
    void ForEachBlock(const DecodeBlock& decode) {
        std::ptrdiff_t compPos = 0;
        for (std::ptrdiff_t rawPos = 0; rawPos < args_.rawLen; rawPos += kBlock) {
            const oo2::DecompressArgs args = OneBlock(rawPos, compPos);
            decode(args);
            compPos += oo2::GetCompressedStepForRawStep(args.compBuf, args.compBufSize, rawPos, args.rawLen)
                           .compUsed;
        }
    }

    const Bytes stream_ = ReadVector("blocks_kraken_whole_kraken.lz");
    Bytes raw_ = Bytes(600'000);
    Bytes expected_;
    oo2::DecompressArgs args_;
};

TEST_F(Blocks, decode_one_by_one_with_the_others_as_dictionary) {
    ForEachBlock([](const oo2::DecompressArgs& args) {
        EXPECT_EQ(oo2::Decompress(args, oo2::DecodePath::Fast), args.rawLen);
    });
    EXPECT_EQ(raw_, expected_);
}

TEST_F(Blocks, phase_1_of_all_blocks_may_run_before_phase_2_of_the_first) {
    std::vector<Bytes> memories;
    ForEachBlock([&](oo2::DecompressArgs args) {
        args.decoderMemorySize = OodleLZ_ThreadPhased_BlockDecoderMemorySizeNeeded;
        args.decoderMemory = memories.emplace_back(args.decoderMemorySize).data();
        args.threadPhase = OodleLZ_Decode_ThreadPhase1;
        EXPECT_EQ(oo2::Decompress(args, oo2::DecodePath::Fast), args.rawLen);
    });
    EXPECT_EQ(raw_, Bytes(raw_.size())) << "phase 1 wrote output";
    std::size_t block = 0;
    ForEachBlock([&](oo2::DecompressArgs args) {
        args.decoderMemorySize = OodleLZ_ThreadPhased_BlockDecoderMemorySizeNeeded;
        args.decoderMemory = memories[block++].data();
        args.threadPhase = OodleLZ_Decode_ThreadPhase2;
        EXPECT_EQ(oo2::Decompress(args, oo2::DecodePath::Fast), args.rawLen);
    });
    EXPECT_EQ(raw_, expected_);
}

TEST_F(Blocks, phase_2_refuses_memory_that_phase_1_of_the_block_did_not_fill) {
    const CapturedLog log;
    Bytes memory(OodleLZ_ThreadPhased_BlockDecoderMemorySizeNeeded);
    oo2::DecompressArgs args = OneBlock(0, 0);
    args.decoderMemory = memory.data();
    args.decoderMemorySize = static_cast<std::ptrdiff_t>(memory.size());
    args.threadPhase = OodleLZ_Decode_ThreadPhase2;
    EXPECT_EQ(oo2::Decompress(args, oo2::DecodePath::Fast), 0);
}

TEST_F(Blocks, decode_in_memory_of_the_least_size_at_any_address) {
    const CapturedLog log;
    const std::ptrdiff_t least = 446'664 + 16;
    EXPECT_EQ(oo2::ScratchSizeNeeded(OodleLZ_Compressor_Kraken, 131'072), 446'664);
    EXPECT_EQ(oo2::ScratchSizeNeeded(OodleLZ_Compressor_Mermaid, args_.rawLen), 315'592);
    for (const std::size_t misalignment : {0u, 1u, 7u, 15u}) {
        Bytes memory(misalignment + static_cast<std::size_t>(least));
        args_.decoderMemory = memory.data() + misalignment;
        args_.decoderMemorySize = least;
        EXPECT_EQ(oo2::Decompress(args_, oo2::DecodePath::Fast), args_.rawLen);
        EXPECT_EQ(raw_, expected_);
    }
    args_.decoderMemorySize = least - 1;
    EXPECT_EQ(oo2::Decompress(args_, oo2::DecodePath::Fast), 0);
    EXPECT_THAT(log.Lines(oo2::kLogError),
                ElementsAre("OODLE ERROR : OodleLZ_Decompress : decoder memory given, but too small!\n"));
}

TEST_F(Blocks, tell_the_callback_after_every_quantum) {
    std::vector<std::ptrdiff_t> told;
    args_.callbackUserData = &told;
    args_.fpCallback = [](void* user, const std::uint8_t*, std::ptrdiff_t rawLen, const std::uint8_t*,
                          std::ptrdiff_t compSize, std::ptrdiff_t rawDone, std::ptrdiff_t compUsed) {
        auto& list = *static_cast<std::vector<std::ptrdiff_t>*>(user);
        list.push_back(rawDone);
        if (rawDone == rawLen) list.push_back(compUsed == compSize ? -1 : -2);
        return 0;
    };
    EXPECT_EQ(oo2::Decompress(args_, oo2::DecodePath::Fast), args_.rawLen);
    EXPECT_THAT(told, ElementsAre(kBlock, 2 * kBlock, 600'000, -1));
}

TEST_F(Blocks, with_the_rest_cut_off_leave_what_was_decoded) {
    const CapturedLog log;
    args_.compBufSize -= 1;
    EXPECT_EQ(oo2::Decompress(args_, oo2::DecodePath::Fast), 0);
    raw_.resize(2 * kBlock);
    expected_.resize(2 * kBlock);
    EXPECT_EQ(raw_, expected_);
}

int g_allocated = 0;

TEST_F(Blocks, take_memory_from_the_allocator_hooks) {
    Oodle_SetAllocatorHooks(
        [](std::ptrdiff_t bytes) { return ++g_allocated, std::malloc(static_cast<std::size_t>(bytes)); },
        [](void* memory) { --g_allocated, std::free(memory); });
    const CapturedLog log;
    EXPECT_EQ(oo2::Decompress(args_, oo2::DecodePath::Fast), args_.rawLen);
    args_.compBufSize -= 1;
    EXPECT_EQ(oo2::Decompress(args_, oo2::DecodePath::Fast), 0);
    EXPECT_EQ(g_allocated, 0);
    Oodle_SetAllocatorHooks([](std::ptrdiff_t) -> void* { return nullptr; }, nullptr);
    EXPECT_EQ(oo2::Decompress(args_, oo2::DecodePath::Fast), 0);
    Oodle_SetAllocatorHooks(nullptr, nullptr);
    EXPECT_EQ(log.Lines(oo2::kLogError).back(), "OODLE ERROR : Oodle_Core_Malloc_Failed ; 446680 bytes\n");
}

// Without fuzz safety a mix that no decoder memory fits is found out at the block that needs more.
TEST(Decompress, a_mix_with_lzb16_is_refused_safe_or_not) {
    Bytes stream = {0x8C, oo2::kDecodeLzb16};
    for (int i = 0; i < 16; ++i) stream.insert(stream.end(), {0x7F, 0xFF, 1});
    stream.insert(stream.end(), {0x0C, oo2::kDecodeKraken, 0x07, 0xFF, 0xFF, 1});
    for (const bool fuzzSafe : {true, false}) {
        const CapturedLog log;
        Bytes raw(kBlock + 1);
        const oo2::DecompressArgs args{.compBuf = stream.data(),
                                       .compBufSize = static_cast<std::ptrdiff_t>(stream.size()),
                                       .rawBuf = raw.data(),
                                       .rawLen = static_cast<std::ptrdiff_t>(raw.size()),
                                       .fuzzSafe = fuzzSafe};
        EXPECT_EQ(oo2::Decompress(args, oo2::DecodePath::Fast), 0);
        EXPECT_EQ(
            log.Lines(oo2::kLogError).front(),
            fuzzSafe ? "OODLE ERROR : OodleLZ_Decompress: Requested Fuzz Safety, saw a compressor that "
                       "can't decode Safe\n"
                     : "OODLE ERROR : Heterogenous compressor file with insufficient decoder memory size!\n");
    }
}

TEST(Lengths, beyond_the_signed_size_are_refused) {
    const CapturedLog log;
    EXPECT_TRUE(oo2::FitsSignedSize(0x7FFFFFFF, 0x7FFFFFFF));
    EXPECT_FALSE(oo2::FitsSignedSize(0x80000000, 0x7FFFFFFF));
    EXPECT_THAT(log.Lines(oo2::kLogError),
                ElementsAre("OODLE ERROR : Over 2 GB buffer size on 32 bit OS!\n"));
}

#ifdef __linux__
TEST(DefaultLog, passes_levels_0_and_1_cut_to_4095_bytes) {
    const std::string text(5000, 'x');
    testing::internal::CaptureStderr();
    oo2::Log(oo2::kLogError, "error %d\n", 1);
    oo2::Log(oo2::kLogDetail, "detail\n");
    oo2::Log(oo2::kLogInfo, "%s", text.c_str());
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "error 1\n" + text.substr(0, 4095));
}
#endif

}  // namespace
