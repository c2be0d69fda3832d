// Streams of the writer decode to what they were made from, whichever way the decoder is asked to work.
#include <iterator>
#include <sstream>

#include <gtest/gtest.h>

#include "decode.h"
#include "support/lz/sample-data.h"

namespace lz {
namespace {

// Every form that a decoder of these streams must know. What a stream contains is noted as it is written.
constexpr const char* kForms =
    "array:coded-long array:coded-short array:empty array:stored-long array:stored-short "
    "block:check block:memcpy block:mixed-types block:no-reset block:reset block:reset-later "
    "block:several block:type10 block:type12 block:type2 block:type6 "
    "chunk:array chunk:lz-raw chunk:lz-sub chunk:stored "
    "huff:dense huff:dense-f0 huff:dense-f1 huff:dense-f2 huff:dense-f3 huff:dense-first-unused "
    "huff:dense-first-used huff:one-symbol-type2 huff:one-symbol-type4 huff:second-f0 huff:second-f1 "
    "huff:second-f2 huff:second-f3 huff:second-n1 huff:second-n256 huff:sparse huff:sparse-ascending "
    "huff:sparse-single huff:sparse-unordered huff:sparse-w0 huff:sparse-w1 huff:sparse-w2 "
    "huff:sparse-w3 huff:sparse-w4 "
    "lz:cmds-empty lz:cmds-type0 lz:cmds-type1 lz:cmds-type2 lz:cmds-type3 lz:cmds-type4 lz:cmds-type5 "
    "lz:code-high lz:code-low lz:excess-count lz:excess-count-2 lz:excess-empty lz:excess-type0 "
    "lz:excess-type1 lz:excess-type2 lz:excess-type3 lz:excess-type4 lz:excess-type5 lz:first8 "
    "lz:index0 lz:index1 lz:index2 lz:index3 lz:index3-recent lz:last-literals lz:literals-after-near-match "
    "lz:lits-empty "
    "lz:lits-type0 lz:lits-type1 lz:lits-type2 lz:lits-type3 lz:lits-type4 lz:lits-type5 lz:long-excess "
    "lz:long-excess-both-readers lz:long-match-at-limit lz:match-excess lz:no-excess-count lz:no-first8 "
    "lz:no-last-literals lz:offs-empty lz:offs-type0 lz:offs-type1 lz:offs-type2 lz:offs-type3 "
    "lz:offs-type4 lz:offs-type5 lz:offs2-type0 lz:offs2-type1 lz:offs2-type2 lz:offs2-type3 "
    "lz:offs2-type4 lz:offs2-type5 lz:offset<8 lz:offsets-m1 lz:offsets-m>1 lz:offsets-single "
    "lz:overlap lz:run-excess lz:short-match-in-last-8 "
    "multi:bit15-clear multi:bit15-set multi:concat multi:end-with-length "
    "nested:1 nested:2 nested:3 nested:4 "
    "quantum:check-bytes quantum:kraken quantum:long-coded quantum:long-memset "
    "quantum:long-special-stored quantum:long-stored-by-length quantum:long-whole "
    "quantum:short-last-chunk quantum:short-memset quantum:short-special-stored "
    "quantum:short-stored-by-length quantum:short-whole quantum:two-chunks "
    "rle:cmd-0 rle:cmd-1 rle:cmd-2 rle:cmd-fill rle:cmd-lits rle:cmd-set rle:coded-all "
    "rle:coded-then-raw rle:one-byte rle:raw "
    "runs:P-even runs:P-odd runs:several "
    "tans:L10 tans:L11 tans:L8 tans:L9 tans:Q0 tans:Q1 tans:Q2 tans:Q3 tans:Q4 tans:Q5 tans:Q6 tans:Q7 "
    "tans:count-1 tans:dense tans:sparse "
    "type0 type1 type2 type3 type4 type5 "
    "whole:groups0 whole:groups1 whole:groups2 ";

// What is listed and missing, and what occurs without being listed.
Forms Differences(const Forms& decoded) {
    std::istringstream names(kForms);
    const Forms listed{std::istream_iterator<std::string>(names), {}};
    Forms different;
    std::set_symmetric_difference(decoded.begin(), decoded.end(), listed.begin(), listed.end(),
                                  std::inserter(different, different.end()));
    return different;
}

TEST(OodleRoundTrip, DecodesEveryForm) {
    Forms decoded;
    for (const Case& example : AllCases()) {
        const std::optional<Bytes> raw = Decode(example.stream, example.raw.size());
        ASSERT_TRUE(raw.has_value()) << example.name;
        ASSERT_TRUE(*raw == example.raw) << example.name;
        decoded.insert(example.forms.begin(), example.forms.end());
    }
    EXPECT_EQ(Differences(decoded), Forms{});
}

TEST(OodleRoundTrip, CarefulPathGivesTheSame) {
    for (const Case& example : AllCases()) {
        const std::optional<Bytes> raw = Decode(example.stream, example.raw.size(), Path::careful);
        EXPECT_TRUE(raw.has_value() && *raw == example.raw) << example.name;
    }
}

TEST(OodleRoundTrip, PhasesGiveWhatAnUnthreadedCallGives) {
    for (const Case& example : AllCases()) {
        if (example.forms.contains("block:type2")) continue;  // cannot be decoded in phases
        const std::optional<Bytes> raw = DecodeInPhases(example);
        EXPECT_TRUE(raw.has_value() && *raw == example.raw) << example.name;
    }
}

// The benchmarks measure decode speed on these streams; a lazy writer would flatter the decoder.
TEST(OodleRoundTrip, SizesCompareWithZstd) {
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
        const Compressed out = Compress(raw);
        EXPECT_LT(out.bytes.size(), zstd_size * 115 / 100) << name;
        RecordProperty(name, std::to_string(out.bytes.size()));
        EXPECT_TRUE(Decode(out.bytes, raw.size()) == raw) << name;
    }
}

}  // namespace
}  // namespace lz
