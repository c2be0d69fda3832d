// Streams of tests/data/lz: a good one gives its bytes, a broken one its log line, on both paths, in any
// memory and in phases. Small ones are also cut and changed at every byte, which must do no harm.
#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <ostream>
#include <span>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "oodle/oodle2/core/decoder_state.h"
#include "oodle/oodle2/core/decompress.h"
#include "support/captured-log.h"

namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr std::ptrdiff_t kPhaseMemory = OodleLZ_ThreadPhased_BlockDecoderMemorySizeNeeded;

struct Outcome {
    std::ptrdiff_t result = 0;
    std::uint32_t crc32 = 0;  // of the output; 0 after a failure, which may leave anything there
    std::string line;         // the first error
    bool operator==(const Outcome&) const = default;
};

std::ostream& operator<<(std::ostream& out, const Outcome& outcome) {
    return out << outcome.result << ", " << outcome.crc32 << ", \"" << outcome.line << '"';
}

struct Vector {
    std::string name;
    Bytes stream;
    std::ptrdiff_t rawLength;
    Outcome expected;
    bool hasPhases;
};

const std::vector<Vector>& AllVectors() {
    static const std::vector<Vector> vectors = [] {
        const std::filesystem::path folder = std::filesystem::path(CORVANE_TEST_DATA) / "lz";
        std::ifstream manifest(folder / "manifest.json", std::ios::binary);
        std::vector<Vector> all;
        const nlohmann::json entries = nlohmann::json::parse(manifest).at("vectors");
        for (const auto& entry : entries) {
            const std::string name = entry.at("name");
            std::ifstream file(folder / (name + ".lz"), std::ios::binary);
            const std::vector<char> chars{std::istreambuf_iterator<char>(file), {}};
            const std::ptrdiff_t length = entry.at("raw_len");
            const bool ok = entry.at("ok");
            all.push_back({name,
                           {chars.begin(), chars.end()},
                           length,
                           {ok ? length : 0, entry.value("crc32", 0u), entry.value("line", "")},
                           entry.at("phases")});
        }
        return all;
    }();
    return vectors;
}

// Small enough to be damaged at every byte.
std::vector<Vector> SmallVectors() {
    std::vector<Vector> small;
    std::ranges::copy_if(AllVectors(), std::back_inserter(small), [](const Vector& vector) {
        return vector.stream.size() <= 700 && vector.rawLength <= 20'000;
    });
    EXPECT_GE(small.size(), 100u);
    return small;
}

// The CRC-32 of gzip.
std::uint32_t Crc32(std::span<const std::uint8_t> bytes) {
    static const std::vector<std::uint32_t> table = [] {
        std::vector<std::uint32_t> entries(256);
        for (std::uint32_t i = 0; i < 256; ++i) {
            entries[i] = i;
            for (int bit = 0; bit < 8; ++bit)
                entries[i] = entries[i] >> 1 ^ (entries[i] % 2 != 0 ? 0xEDB88320 : 0);
        }
        return entries;
    }();
    std::uint32_t crc = 0xFFFFFFFF;
    for (const std::uint8_t byte : bytes) crc = crc >> 8 ^ table[(crc ^ byte) & 0xFF];
    return ~crc;
}

// Decodes in memory of the caller's, if there is any, one call for each phase.
Outcome Decode(Bytes stream, std::ptrdiff_t rawLength, oo2::DecodePath path, std::ptrdiff_t memorySize = 0,
               const std::vector<int>& phases = {OodleLZ_Decode_Unthreaded}) {
    constexpr std::size_t kGuard = 64;
    stream.shrink_to_fit();  // so that a look past its end shows under the sanitizers
    Bytes memory(static_cast<std::size_t>(memorySize), 0xEE);
    Bytes raw(static_cast<std::size_t>(rawLength) + kGuard, 0);
    const CapturedLog log;
    Outcome outcome;
    for (const int phase : phases) {
        EXPECT_TRUE(phase == phases[0] || raw == Bytes(raw.size())) << "phase 1 wrote output";
        outcome.result = oo2::Decompress({.compBuf = stream.data(),
                                          .compBufSize = std::ssize(stream),
                                          .rawBuf = raw.data(),
                                          .rawLen = rawLength,
                                          .decoderMemory = memory.empty() ? nullptr : memory.data(),
                                          .decoderMemorySize = memorySize,
                                          .threadPhase = phase},
                                         path);
    }
    EXPECT_EQ(std::count(raw.end() - kGuard, raw.end(), 0), kGuard) << "written behind the output";
    if (outcome.result != 0) outcome.crc32 = Crc32(std::span(raw).first(raw.size() - kGuard));
    const std::vector<std::string> lines = log.Lines(oo2::kLogError);
    if (!lines.empty()) outcome.line = lines[0].substr(0, lines[0].find('\n'));
    return outcome;
}

std::ptrdiff_t LeastMemory(const Vector& vector) {
    const CapturedLog log;
    const auto compressor =
        OodleLZ_GetAllChunksCompressor(vector.stream.data(), std::ssize(vector.stream), vector.rawLength);
    return oo2::ScratchSizeNeeded(compressor, vector.rawLength) + oo2::kDecoderMemorySlack;
}

TEST(Vectors, have_one_outcome_on_both_paths_and_in_any_memory) {
    for (const Vector& vector : AllVectors()) {
        SCOPED_TRACE(vector.name);
        const std::ptrdiff_t length = vector.rawLength;
        const std::ptrdiff_t least = LeastMemory(vector);
        for (const auto path : {oo2::DecodePath::Fast, oo2::DecodePath::Careful}) {
            for (const std::ptrdiff_t memory : {std::ptrdiff_t{0}, least, kPhaseMemory})
                EXPECT_EQ(Decode(vector.stream, length, path, memory), vector.expected) << memory;
        }
    }
}

TEST(Vectors, have_it_in_two_phases_too) {
    for (const Vector& vector : AllVectors()) {
        if (!vector.hasPhases) continue;
        SCOPED_TRACE(vector.name);
        EXPECT_EQ(Decode(vector.stream, vector.rawLength, oo2::DecodePath::Fast, kPhaseMemory,
                         {OodleLZ_Decode_ThreadPhase1, OodleLZ_Decode_ThreadPhase2}),
                  vector.expected);
    }
}

TEST(Vectors, are_refused_wherever_they_are_cut) {
    for (const Vector& vector : SmallVectors()) {
        if (vector.expected.result == 0) continue;
        for (Bytes cut = vector.stream; !cut.empty();) {
            cut.pop_back();
            ASSERT_EQ(Decode(cut, vector.rawLength, oo2::DecodePath::Fast).result, 0)
                << vector.name << " cut to " << cut.size();
        }
    }
}

TEST(Vectors, give_the_same_on_both_paths_whichever_byte_is_changed) {
    for (const Vector& vector : SmallVectors()) {
        for (std::size_t i = 0; i < vector.stream.size(); ++i) {
            for (const unsigned change : {0x01u, 0x80u, 0x24u + static_cast<unsigned>(i % 64)}) {
                Bytes changed = vector.stream;
                changed[i] = static_cast<std::uint8_t>(changed[i] ^ change);
                ASSERT_EQ(Decode(changed, vector.rawLength, oo2::DecodePath::Fast),
                          Decode(changed, vector.rawLength, oo2::DecodePath::Careful))
                    << vector.name << ", byte " << i << " is " << int{changed[i]};
            }
        }
    }
}

}  // namespace
