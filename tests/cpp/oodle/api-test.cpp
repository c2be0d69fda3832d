// What OodleLZ_Decompress promises of several blocks: dictionary, callback, memory, phases, and the hooks.
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "oodle/oodle2/core/all_chunks_compressor.h"
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

std::ptrdiff_t Decode(const oo2::DecompressArgs& args) {
    return oo2::Decompress(args, oo2::DecodePath::Fast);
}

// A stream of three blocks, Kraken, whole match and Kraken, and what it decodes to.
class Blocks : public testing::Test {
  protected:
    void SetUp() override {
        ASSERT_FALSE(stream_.empty());
        args_ = {.compBuf = stream_.data(),
                 .compBufSize = std::ssize(stream_),
                 .rawBuf = raw_.data(),
                 .rawLen = std::ssize(raw_)};
        ASSERT_EQ(Decode(args_), args_.rawLen);
        expected_ = raw_;
        raw_.assign(raw_.size(), 0);
    }

    // Calls decode for each block, with the blocks before it as its dictionary.
    void ForEachBlock(const std::function<void(oo2::DecompressArgs)>& decode) {
        std::ptrdiff_t compPos = 0;
        for (std::ptrdiff_t rawPos = 0; rawPos < args_.rawLen; rawPos += kBlock) {
            oo2::DecompressArgs args = args_;
            args.compBuf += compPos;
            args.compBufSize -= compPos;
            args.rawBuf += rawPos;
            args.rawLen = std::min(kBlock, args_.rawLen - rawPos);
            args.decBufBase = raw_.data();
            decode(args);
            const std::span<const std::uint8_t> rest =
                std::span(stream_).subspan(static_cast<std::size_t>(compPos));
            compPos += oo2::GetCompressedStepForRawStep(rest, rawPos, args.rawLen).compUsed;
        }
    }

    const Bytes stream_ = ReadVector("blocks_kraken_whole_kraken.lz");
    Bytes raw_ = Bytes(600'000);
    Bytes expected_;
    oo2::DecompressArgs args_;
    const CapturedLog log_;
};

TEST_F(Blocks, decode_one_by_one_with_the_others_as_dictionary) {
    ForEachBlock([](const oo2::DecompressArgs& args) { EXPECT_EQ(Decode(args), args.rawLen); });
    EXPECT_EQ(raw_, expected_);
    EXPECT_EQ(oo2::GetCompressedStepForRawStep(stream_, 1, kBlock).compUsed, -1);
}

TEST_F(Blocks, phase_1_of_all_blocks_may_run_before_phase_2_of_the_first) {
    std::vector<Bytes> memories(3, Bytes(OodleLZ_ThreadPhased_BlockDecoderMemorySizeNeeded));
    for (const int phase : {OodleLZ_Decode_ThreadPhase1, OodleLZ_Decode_ThreadPhase2}) {
        EXPECT_EQ(raw_, Bytes(raw_.size())) << "phase 1 wrote output";
        auto memory = memories.begin();
        ForEachBlock([&](oo2::DecompressArgs args) {
            args.decoderMemorySize = std::ssize(*memory);
            args.decoderMemory = memory++->data();
            args.threadPhase = phase;
            EXPECT_EQ(Decode(args), args.rawLen);
        });
    }
    EXPECT_EQ(raw_, expected_);
}

TEST_F(Blocks, decode_in_memory_of_the_least_size_at_any_address) {
    constexpr std::ptrdiff_t kLeast = 446'664 + 16;
    EXPECT_EQ(oo2::ScratchSizeNeeded(OodleLZ_Compressor_Kraken, 131'072), 446'664);
    EXPECT_EQ(oo2::ScratchSizeNeeded(OodleLZ_Compressor_Mermaid, args_.rawLen), 315'592);
    for (const std::size_t misalignment : {0u, 1u, 15u}) {
        Bytes memory(misalignment + std::size_t{kLeast});
        raw_.assign(raw_.size(), 0);
        args_.decoderMemory = memory.data() + misalignment;
        args_.decoderMemorySize = kLeast;
        EXPECT_EQ(Decode(args_), args_.rawLen);
        EXPECT_EQ(raw_, expected_);
        args_.decoderMemorySize = kLeast - 1;
        EXPECT_EQ(Decode(args_), 0);
        EXPECT_EQ(log_.Lines(oo2::kLogError).back(),
                  "OODLE ERROR : OodleLZ_Decompress : decoder memory given, but too small!\n");
    }
}

TEST_F(Blocks, tell_the_callback_after_every_quantum) {
    std::vector<std::ptrdiff_t> told;
    args_.callbackUserData = &told;
    args_.fpCallback = [](void* user, const std::uint8_t*, std::ptrdiff_t rawLen, const std::uint8_t*,
                          std::ptrdiff_t compSize, std::ptrdiff_t rawDone, std::ptrdiff_t compUsed) {
        auto& list = *static_cast<std::vector<std::ptrdiff_t>*>(user);
        list.push_back(rawDone);
        if (rawLen > kBlock && rawDone == rawLen) list.push_back(compUsed - compSize);
        return 0;
    };
    EXPECT_EQ(Decode(args_), args_.rawLen);
    ForEachBlock(Decode);
    EXPECT_THAT(told, ElementsAre(kBlock, 2 * kBlock, 600'000, 0, kBlock, kBlock, 600'000 - 2 * kBlock));
}

TEST_F(Blocks, with_the_rest_cut_off_leave_what_was_decoded) {
    args_.compBufSize -= 1;
    EXPECT_EQ(Decode(args_), 0);
    raw_.resize(2 * kBlock);
    expected_.resize(2 * kBlock);
    EXPECT_EQ(raw_, expected_);
}

TEST(Phases, the_second_takes_what_the_first_left_of_the_same_block_only) {
    const CapturedLog log;
    constexpr std::ptrdiff_t kRawLen = 128;
    const Bytes stream = ReadVector("lz_least.lz"), copy = stream;
    Bytes raw(2 * kBlock), memory(OodleLZ_ThreadPhased_BlockDecoderMemorySizeNeeded);
    const auto decode = [&](const Bytes& of, int phase, std::ptrdiff_t dictionary = 0) {
        return OodleLZ_Decompress(of.data(), std::ssize(of), raw.data() + dictionary, kRawLen, 1, 0, 0,
                                  raw.data(), 0, nullptr, nullptr, memory.data(), std::ssize(memory), phase);
    };
    EXPECT_EQ(decode(stream, OodleLZ_Decode_ThreadPhase2), 0);
    EXPECT_EQ(decode(stream, OodleLZ_Decode_ThreadPhase1), kRawLen);
    EXPECT_EQ(decode(stream, OodleLZ_Decode_ThreadPhase2, kBlock), 0);
    EXPECT_EQ(decode(copy, OodleLZ_Decode_ThreadPhase2), 0);
    EXPECT_EQ(decode(stream, OodleLZ_Decode_ThreadPhase2), kRawLen);
}

int g_allocated = 0;

TEST_F(Blocks, take_memory_from_the_allocator_hooks) {
    Oodle_SetAllocatorHooks(
        [](std::ptrdiff_t bytes) { return ++g_allocated, std::malloc(static_cast<std::size_t>(bytes)); },
        [](void* memory) { --g_allocated, std::free(memory); });
    EXPECT_EQ(Decode(args_), args_.rawLen);
    args_.compBufSize -= 1;
    EXPECT_EQ(Decode(args_), 0);
    EXPECT_EQ(g_allocated, 0);
    Oodle_SetAllocatorHooks([](std::ptrdiff_t) -> void* { return nullptr; }, nullptr);
    EXPECT_EQ(Decode(args_), 0);
    Oodle_SetAllocatorHooks(nullptr, nullptr);
    EXPECT_EQ(log_.Lines(oo2::kLogError).back(), "OODLE ERROR : Oodle_Core_Malloc_Failed ; 446680 bytes\n");
}

TEST(Lengths, beyond_the_signed_size_are_refused) {
    const CapturedLog log;
    EXPECT_TRUE(oo2::FitsSignedSize(0x7FFFFFFF, 0x7FFFFFFF));
    EXPECT_FALSE(oo2::FitsSignedSize(0x80000000, 0x7FFFFFFF));
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
