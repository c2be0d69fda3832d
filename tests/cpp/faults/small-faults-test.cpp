// Every small fault of a replay: cut at every byte, every byte changed, every 32-bit field at the edges. A
// read that never ends ends with the time limit of the whole program.
#include <array>

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include "cpp/faults/replay-under-test.h"

namespace {

using namespace corvane_test;
using nlohmann::json;

constexpr std::size_t kMebibyte = 1024 * 1024;

using Sections = std::vector<Section>;

class SmallFaults : public testing::TestWithParam<std::pair<const char*, Sections>> {
  protected:
    // Reads a faulty file and checks what holds for all of them.
    static ReadResult ReadChecked(const Bytes& bytes) {
        ReadResult result = Read(bytes);
        EXPECT_NE(result.outcome, Outcome::Forbidden) << result.text;
        if (result.outcome == Outcome::Document) {
            EXPECT_EQ(json::parse(result.text).dump(1), result.text);
        }
        // The largest payload is no larger than the file.
        EXPECT_LE(result.peakBytes, 4 * kMebibyte + 2 * bytes.size());
        return result;
    }

    const QuietOutput quiet;
    const Sections sections = GetParam().second;
    const Bytes whole = Whole(sections);
};

// What the sections that lie wholly within the file put into the document.
void ExpectDocument(const json& document, const Section& lastWhole) {
    EXPECT_TRUE(document.contains("ReplayFileMeta"));
    EXPECT_EQ(document.contains("header"), lastWhole.hasHeader);
    const std::size_t events = document.contains("events") ? document["events"].size() : 0;
    EXPECT_EQ(events, lastWhole.events);
}

TEST_P(SmallFaults, a_cut_at_any_byte_does_what_its_section_says) {
    std::size_t begin = 0;
    for (std::size_t i = 0; i < sections.size(); begin += sections[i++].bytes.size()) {
        for (std::size_t length = begin; length < begin + sections[i].bytes.size(); ++length) {
            SCOPED_TRACE(std::to_string(length) + " bytes, in " + sections[i].name);
            const ReadResult result = ReadChecked(Prefix(whole, length));
            if (length == 0) {
                EXPECT_EQ(result.text, "The Replay file had no data in it.\n");
                continue;
            }
            ASSERT_EQ(result.outcome, sections[i].whenCut) << result.text;
            if (result.outcome == Outcome::Document) {
                ExpectDocument(json::parse(result.text), sections[i - 1]);
            } else {
                EXPECT_THAT(result.text, testing::StartsWith(sections[i].failure));
            }
        }
    }
    ExpectDocument(json::parse(ReadChecked(whole).text), sections.back());
}

TEST_P(SmallFaults, a_changed_byte_fails_by_name_and_one_without_meaning_changes_nothing) {
    const std::string unchanged = Read(whole).text;
    std::size_t at = 0;
    for (const Section& section : sections) {
        for (std::size_t i = 0; i < section.bytes.size(); ++i, ++at) {
            for (const int changed : {0x00, 0xFF, 0x7F, ~whole[at]}) {
                Bytes bytes = whole;
                bytes[at] = static_cast<std::uint8_t>(changed);
                SCOPED_TRACE("byte " + std::to_string(at) + " of " + section.name + " is " +
                             std::to_string(bytes[at]));
                const ReadResult result = ReadChecked(bytes);
                if (section.isInert) {
                    EXPECT_EQ(result.text, unchanged);
                }
            }
        }
    }
}

TEST_P(SmallFaults, a_32_bit_field_at_the_edges_fails_by_name) {
    const auto fileSize = static_cast<std::int32_t>(whole.size());
    const std::array values = {0, 1, -1, INT32_MIN, INT32_MAX, fileSize - 1, fileSize, fileSize + 1};
    // At every byte, since strings put the fields anywhere.
    for (std::size_t at = 0; at + 4 <= whole.size(); ++at) {
        for (const std::int32_t value : values) {
            SCOPED_TRACE("offset " + std::to_string(at) + " holds " + std::to_string(value));
            const Bytes field = Writer().I32(value).bytes;
            Bytes bytes = whole;
            std::copy(field.begin(), field.end(), bytes.begin() + static_cast<std::ptrdiff_t>(at));
            ReadChecked(bytes);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(, SmallFaults,
                         testing::Values(std::pair("plain", SectionsOfReplay()),
                                         std::pair("encrypted", SectionsOfEncryptedReplay())),
                         [](const auto& replay) { return std::string(replay.param.first); });

}  // namespace
