// Streams with known contents: every good one gives its bytes, every broken one is refused.
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "oodle/oodle2/core/decompress.h"
#include "oodle/oodle2/core/oodlelzcompressors.h"
#include "support/captured-log.h"
#include "support/sha256.h"

namespace {

const std::filesystem::path kFolder = std::filesystem::path(CORVANE_TEST_DATA) / "lz";

struct Vector {
    std::string name;
    bool ok;
    std::ptrdiff_t rawLength;
    std::string sha256;
};

std::vector<Vector> AllVectors() {
    std::ifstream file(kFolder / "manifest.json", std::ios::binary);
    std::vector<Vector> vectors;
    const nlohmann::json manifest = nlohmann::json::parse(file);
    for (const auto& entry : manifest.at("vectors")) {
        vectors.push_back({entry.at("name"), entry.at("ok"), entry.at("raw_len"), entry.value("sha256", "")});
    }
    return vectors;
}

class Vectors : public testing::TestWithParam<Vector> {
  protected:
    // Exactly as long as the stream, so that a look past its end shows under the sanitizers.
    void SetUp() override {
        const std::string name = GetParam().name + ".lz";
        std::ifstream file(kFolder / name, std::ios::binary);
        const std::string bytes{std::istreambuf_iterator<char>(file), {}};
        m_streamLength = static_cast<std::ptrdiff_t>(bytes.size());
        ASSERT_GT(m_streamLength, 0) << name;
        m_stream = std::make_unique<std::uint8_t[]>(bytes.size());
        std::memcpy(m_stream.get(), bytes.data(), bytes.size());
        m_raw = std::make_unique<std::uint8_t[]>(static_cast<std::size_t>(GetParam().rawLength));
    }

    std::ptrdiff_t Decode(int phase, std::span<std::uint8_t> memory = {}) {
        return OodleLZ_Decompress(m_stream.get(), m_streamLength, m_raw.get(), GetParam().rawLength, 1, 0, 0,
                                  nullptr, 0, nullptr, nullptr, memory.data(),
                                  static_cast<std::ptrdiff_t>(memory.size()), phase);
    }

    std::string RawDigest() const {
        return Sha256({m_raw.get(), static_cast<std::size_t>(GetParam().rawLength)});
    }

    std::unique_ptr<std::uint8_t[]> m_stream;
    std::ptrdiff_t m_streamLength = 0;
    std::unique_ptr<std::uint8_t[]> m_raw;
    CapturedLog m_log;
};

TEST_P(Vectors, give_their_bytes_or_are_refused) {
    const std::ptrdiff_t decoded = Decode(OodleLZ_Decode_Unthreaded);
    if (GetParam().ok) {
        EXPECT_EQ(decoded, GetParam().rawLength);
        EXPECT_EQ(RawDigest(), GetParam().sha256);
        EXPECT_EQ(m_log.Lines(oo2::kLogError), std::vector<std::string>{});
    } else {
        EXPECT_EQ(decoded, 0);
        EXPECT_NE(m_log.Lines(oo2::kLogError), std::vector<std::string>{});
    }
}

TEST_P(Vectors, give_the_same_on_the_careful_path) {
    const oo2::DecompressArgs args{.compBuf = m_stream.get(),
                                   .compBufSize = m_streamLength,
                                   .rawBuf = m_raw.get(),
                                   .rawLen = GetParam().rawLength};
    EXPECT_EQ(oo2::Decompress(args, oo2::DecodePath::Careful), GetParam().ok ? GetParam().rawLength : 0);
    if (GetParam().ok) {
        EXPECT_EQ(RawDigest(), GetParam().sha256);
    }
}

TEST_P(Vectors, in_two_phases_give_the_same) {
    if (GetParam().rawLength > OODLELZ_BLOCK_LEN || GetParam().name.starts_with("frame_lzb16")) return;
    std::vector<std::uint8_t> memory(OodleLZ_ThreadPhased_BlockDecoderMemorySizeNeeded);
    Decode(OodleLZ_Decode_ThreadPhase1, memory);
    const std::ptrdiff_t decoded = Decode(OodleLZ_Decode_ThreadPhase2, memory);
    EXPECT_EQ(decoded, GetParam().ok ? GetParam().rawLength : 0);
    if (GetParam().ok) {
        EXPECT_EQ(RawDigest(), GetParam().sha256);
    }
}

INSTANTIATE_TEST_SUITE_P(Lz, Vectors, testing::ValuesIn(AllVectors()),
                         [](const auto& vector) { return vector.param.name; });

}  // namespace
