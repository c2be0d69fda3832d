// Streams with known contents: every good one gives its bytes, every broken one is refused.
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "oodle/oodle2/core/decoder_state.h"
#include "oodle/oodle2/core/decompress.h"
#include "support/captured-log.h"

namespace {

const std::filesystem::path kFolder = std::filesystem::path(CORVANE_TEST_DATA) / "lz";

struct Vector {
    std::string name;
    bool ok;
    std::ptrdiff_t rawLength;
    std::uint32_t crc32;
};

std::vector<Vector> AllVectors() {
    std::ifstream file(kFolder / "manifest.json", std::ios::binary);
    std::vector<Vector> vectors;
    const nlohmann::json manifest = nlohmann::json::parse(file);
    for (const auto& entry : manifest.at("vectors")) {
        vectors.push_back({entry.at("name"), entry.at("ok"), entry.at("raw_len"), entry.value("crc32", 0u)});
    }
    return vectors;
}

// As gzip and `crc32` have it.
std::uint32_t Crc32(const std::vector<std::uint8_t>& bytes) {
    std::uint32_t table[256];
    for (std::uint32_t i = 0; i < 256; ++i) {
        table[i] = i;
        for (int bit = 0; bit < 8; ++bit) table[i] = table[i] >> 1 ^ (table[i] % 2 != 0 ? 0xEDB88320 : 0);
    }
    std::uint32_t crc = 0xFFFFFFFF;
    for (const std::uint8_t byte : bytes) crc = crc >> 8 ^ table[(crc ^ byte) & 0xFF];
    return ~crc;
}

class Vectors : public testing::TestWithParam<Vector> {
  protected:
    void SetUp() override { ASSERT_FALSE(stream_.empty()); }

    std::ptrdiff_t Decode(oo2::DecodePath path, int phase = OodleLZ_Decode_Unthreaded) {
        return oo2::Decompress({.compBuf = stream_.data(),
                                .compBufSize = std::ssize(stream_),
                                .rawBuf = raw_.data(),
                                .rawLen = std::ssize(raw_),
                                .decoderMemory = memory_.empty() ? nullptr : memory_.data(),
                                .decoderMemorySize = std::ssize(memory_),
                                .threadPhase = phase},
                               path);
    }
    void ExpectItsBytesOrRefusal(std::ptrdiff_t decoded) {
        EXPECT_EQ(decoded, GetParam().ok ? GetParam().rawLength : 0);
        if (GetParam().ok) {
            EXPECT_EQ(Crc32(raw_), GetParam().crc32);
        }
        EXPECT_EQ(log_.Lines(oo2::kLogError).empty(), GetParam().ok) << "a refusal has a line";
    }

    std::ifstream file_{kFolder / (GetParam().name + ".lz"), std::ios::binary};
    const std::vector<char> chars_{std::istreambuf_iterator<char>(file_), {}};
    // Exactly as long as the stream, so that a look past its end shows under the sanitizers.
    const std::vector<std::uint8_t> stream_{chars_.begin(), chars_.end()};
    std::vector<std::uint8_t> raw_ =
        std::vector<std::uint8_t>(static_cast<std::size_t>(GetParam().rawLength));
    std::vector<std::uint8_t> memory_;
    const CapturedLog log_;
};

TEST_P(Vectors, on_the_fast_path) { ExpectItsBytesOrRefusal(Decode(oo2::DecodePath::Fast)); }

TEST_P(Vectors, on_the_careful_path) { ExpectItsBytesOrRefusal(Decode(oo2::DecodePath::Careful)); }

TEST_P(Vectors, in_memory_of_the_least_size_and_in_more) {
    const auto compressor =
        OodleLZ_GetAllChunksCompressor(stream_.data(), std::ssize(stream_), GetParam().rawLength);
    const std::ptrdiff_t least =
        oo2::ScratchSizeNeeded(compressor, GetParam().rawLength) + oo2::kDecoderMemorySlack;
    for (const std::ptrdiff_t size : {least, OodleLZ_ThreadPhased_BlockDecoderMemorySizeNeeded}) {
        memory_.assign(static_cast<std::size_t>(size), 0xEE);
        ExpectItsBytesOrRefusal(Decode(oo2::DecodePath::Fast));
    }
}

TEST_P(Vectors, in_two_phases) {
    if (GetParam().rawLength > OODLELZ_BLOCK_LEN || GetParam().name.starts_with("frame_lzb16")) return;
    memory_.resize(OodleLZ_ThreadPhased_BlockDecoderMemorySizeNeeded);
    Decode(oo2::DecodePath::Fast, OodleLZ_Decode_ThreadPhase1);
    EXPECT_EQ(raw_, std::vector<std::uint8_t>(raw_.size())) << "phase 1 wrote output";
    ExpectItsBytesOrRefusal(Decode(oo2::DecodePath::Fast, OodleLZ_Decode_ThreadPhase2));
}

INSTANTIATE_TEST_SUITE_P(Lz, Vectors, testing::ValuesIn(AllVectors()),
                         [](const auto& vector) { return vector.param.name; });

}  // namespace
