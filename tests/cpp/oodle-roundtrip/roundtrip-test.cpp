// Streams of the writer decode to what they were made from, and damaged ones do no harm, on both of the
// decoder's paths.
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <sstream>

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include "cases.h"
#include "oodle/oodle2/core/decompress.h"
#include "support/lz/sample-data.h"

namespace lz {
namespace {

// Every form of chunks that a decoder must know. What a stream contains is noted as it is written.
constexpr const char* kForms =
    "array:coded-long array:coded-short array:empty array:stored-long array:stored-short chunk:array "
    "chunk:lz-raw chunk:lz-sub chunk:stored huff:dense huff:dense-f0 huff:dense-f1 huff:dense-f2 "
    "huff:dense-f3 huff:dense-first-unused huff:dense-first-used huff:one-symbol-type2 "
    "huff:one-symbol-type4 huff:second-f0 huff:second-f1 huff:second-f2 huff:second-f3 huff:second-n1 "
    "huff:second-n256 huff:sparse huff:sparse-ascending huff:sparse-single huff:sparse-unordered "
    "huff:sparse-w0 huff:sparse-w1 huff:sparse-w2 huff:sparse-w3 huff:sparse-w4 lz:cmds-empty "
    "lz:cmds-type0 lz:cmds-type1 lz:cmds-type2 lz:cmds-type3 lz:cmds-type4 lz:cmds-type5 lz:code-high "
    "lz:code-low lz:excess-count lz:excess-count-2 lz:excess-empty lz:excess-type0 lz:excess-type1 "
    "lz:excess-type2 lz:excess-type3 lz:excess-type4 lz:excess-type5 lz:first8 lz:index0 lz:index1 "
    "lz:index2 lz:index3 lz:index3-recent lz:last-literals lz:literals-after-near-match lz:lits-empty "
    "lz:lits-type0 lz:lits-type1 lz:lits-type2 lz:lits-type3 lz:lits-type4 lz:lits-type5 lz:long-excess "
    "lz:long-excess-both-readers lz:long-match-at-limit lz:match-excess lz:no-excess-count lz:no-first8 "
    "lz:no-last-literals lz:offs-empty lz:offs-type0 lz:offs-type1 lz:offs-type2 lz:offs-type3 "
    "lz:offs-type4 lz:offs-type5 lz:offs2-type0 lz:offs2-type1 lz:offs2-type2 lz:offs2-type3 "
    "lz:offs2-type4 lz:offs2-type5 lz:offset<8 lz:offsets-m1 lz:offsets-m>1 lz:offsets-single lz:overlap "
    "lz:run-excess lz:short-match-in-last-8 multi:bit15-clear multi:bit15-set multi:concat "
    "multi:end-with-length nested:1 nested:2 nested:3 nested:4 rle:cmd-0 rle:cmd-1 rle:cmd-2 "
    "rle:cmd-fill rle:cmd-lits rle:cmd-set rle:coded-all rle:coded-then-raw rle:one-byte rle:raw "
    "runs:P-even runs:P-odd runs:several tans:L10 tans:L11 tans:L8 tans:L9 tans:Q0 tans:Q1 tans:Q2 "
    "tans:Q3 tans:Q4 tans:Q5 tans:Q6 tans:Q7 tans:count-1 tans:dense tans:sparse type0 type1 type2 type3 "
    "type4 type5 ";

// The forms of the good streams in tests/data/lz, whose bytes have a test of their own.
Forms FormsOfVectors() {
    std::ifstream file(std::filesystem::path(CORVANE_TEST_DATA) / "lz" / "manifest.json");
    const nlohmann::json manifest = nlohmann::json::parse(file);
    Forms forms;
    for (const auto& vector : manifest["vectors"]) {
        if (vector["ok"]) forms.merge(vector["forms"].get<Forms>());
    }
    return forms;
}

// The bytes, or nothing when the decoder refuses the stream. A sanitizer sees an access outside the stream or
// before the output; a write behind the output is seen everywhere.
std::optional<Bytes> Decode(const Bytes& stream, size_t raw_size, oo2::DecodePath path) {
    constexpr size_t kGuard = 64;
    constexpr uint8_t kGuardByte = 0xA7;
    const Bytes exact(stream.begin(), stream.end());
    Bytes out(raw_size + kGuard, kGuardByte);
    const ptrdiff_t result = oo2::Decompress({.compBuf = exact.data(),
                                              .compBufSize = std::ssize(exact),
                                              .rawBuf = out.data(),
                                              .rawLen = static_cast<ptrdiff_t>(raw_size)},
                                             path);
    const auto guard = out.begin() + static_cast<ptrdiff_t>(raw_size);
    EXPECT_EQ(std::count(guard, out.end(), kGuardByte), ptrdiff_t{kGuard}) << "written behind the output";
    EXPECT_TRUE(result == 0 || result == static_cast<ptrdiff_t>(raw_size)) << result;
    if (result == 0) return std::nullopt;
    out.resize(raw_size);
    return out;
}

// The decoder reports every broken stream; there are tens of thousands here.
void Discard(int, const char*, int, const char*, ...) {}

class OodleRoundTrip : public testing::Test {
  protected:
    void SetUp() override { Oodle_SetLogHook(Discard); }
    void TearDown() override { Oodle_SetLogHook(nullptr); }

    // At least 40, each small enough to be damaged at every byte.
    static std::vector<Case> SmallCases() {
        std::vector<Case> cases;
        for (const Case& example : AllCases()) {
            if (example.stream.size() <= 700 && example.raw.size() <= 20'000) cases.push_back(example);
        }
        EXPECT_GE(cases.size(), 40u);
        return cases;
    }
};

TEST_F(OodleRoundTrip, every_form_is_decoded_on_both_paths) {
    std::istringstream names(kForms);
    const Forms listed{std::istream_iterator<std::string>(names), {}};
    Forms missing = listed;
    for (const Case& example : AllCases()) {
        SCOPED_TRACE(example.name);
        EXPECT_TRUE(Decode(example.stream, example.raw.size(), oo2::DecodePath::Fast) == example.raw);
        EXPECT_TRUE(Decode(example.stream, example.raw.size(), oo2::DecodePath::Careful) == example.raw);
        EXPECT_THAT(listed, testing::IsSupersetOf(example.forms));
        for (const std::string& form : example.forms) missing.erase(form);
    }
    for (const std::string& form : FormsOfVectors()) missing.erase(form);
    EXPECT_EQ(missing, Forms{});
}

TEST_F(OodleRoundTrip, every_cut_stream_is_refused) {
    for (const Case& example : SmallCases()) {
        Bytes stream = example.stream;
        while (!stream.empty()) {
            stream.pop_back();
            ASSERT_FALSE(Decode(stream, example.raw.size(), oo2::DecodePath::Fast))
                << example.name << " cut to " << stream.size();
        }
    }
}

TEST_F(OodleRoundTrip, of_every_changed_byte_both_paths_make_the_same) {
    for (const Case& example : SmallCases()) {
        Bytes stream = example.stream;
        for (size_t i = 0; i < stream.size(); ++i) {
            for (const unsigned change : {0x01U, 0x80U, 0xFFU, 0x24U + static_cast<unsigned>(i % 64)}) {
                stream[i] = static_cast<uint8_t>(example.stream[i] ^ change);
                ASSERT_TRUE(Decode(stream, example.raw.size(), oo2::DecodePath::Fast) ==
                            Decode(stream, example.raw.size(), oo2::DecodePath::Careful))
                    << example.name << ", byte " << i << " is " << int{stream[i]};
            }
            stream[i] = example.stream[i];
        }
    }
}

// The benchmarks measure decode speed on these streams; a lazy writer would flatter the decoder.
TEST_F(OodleRoundTrip, the_writers_sizes_compare_with_zstd) {
    constexpr size_t kSize = 500'000;
    const struct {
        const char* name;
        Bytes raw;
        size_t zstd_size;  // zstd 1.5.4: `zstd -9 -c FILE | wc -c` of the same bytes
    } sets[] = {{"text", MakeText(kSize), 161'102},
                {"records", MakeRecords(kSize), 193'120},
                {"samples", MakeSamples(kSize), 295'690},
                {"mixed", MakeMixed(kSize), 166'860}};
    for (const auto& [name, raw, zstd_size] : sets) {
        const Coded out = Compress(raw);
        EXPECT_LT(out.bytes.size(), zstd_size * 115 / 100) << name;
        EXPECT_TRUE(Decode(out.bytes, raw.size(), oo2::DecodePath::Fast) == raw) << name;
    }
}

}  // namespace
}  // namespace lz
