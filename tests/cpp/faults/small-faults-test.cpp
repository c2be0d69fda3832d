// Every small fault of a replay: cut at every byte, every byte changed, every 32-bit field at the edges.
#include <array>
#include <functional>
#include <limits>

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include "cpp/faults/replay-under-test.h"

namespace {

using namespace corvane_test;
using nlohmann::json;

constexpr std::size_t kMebibyte = 1024 * 1024;

// Far above what any of them takes, sanitizers and Wine included; far below what a person takes for a hang.
constexpr double kMaxSeconds = 5;

struct Replay {
    const char* name;
    std::vector<Section> (*sections)();
};

class SmallFaults : public testing::TestWithParam<Replay> {
  protected:
    // Reads a faulty file and checks what holds for all of them.
    static ReadResult ReadChecked(const Bytes& bytes) {
        ReadResult result = Read(bytes);
        EXPECT_TRUE(IsAllowed(result)) << result.text;
        EXPECT_LT(result.seconds, kMaxSeconds);
        // The largest payload is no larger than the file.
        EXPECT_LE(result.peakBytes, 4 * kMebibyte + 2 * bytes.size());
        return result;
    }

    const QuietOutput quiet;
    const std::vector<Section> sections = GetParam().sections();
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
            const ReadResult result =
                ReadChecked(Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length)));
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
    const std::array<std::function<std::uint8_t(std::uint8_t)>, 4> changes = {
        [](auto) { return std::uint8_t{0x00}; }, [](auto) { return std::uint8_t{0xFF}; },
        [](auto) { return std::uint8_t{0x7F}; }, [](auto old) { return static_cast<std::uint8_t>(~old); }};
    const std::string unchanged = Read(whole).text;
    std::size_t at = 0;
    for (const Section& section : sections) {
        for (std::size_t i = 0; i < section.bytes.size(); ++i, ++at) {
            for (const auto& change : changes) {
                Bytes bytes = whole;
                bytes[at] = change(bytes[at]);
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
    const std::array values = {0,
                               1,
                               -1,
                               std::numeric_limits<std::int32_t>::min(),
                               std::numeric_limits<std::int32_t>::max(),
                               fileSize - 1,
                               fileSize,
                               fileSize + 1};
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
                         testing::Values(Replay{"plain", SectionsOfReplay},
                                         Replay{"encrypted", SectionsOfEncryptedReplay}),
                         [](const auto& replay) { return std::string(replay.param.name); });

}  // namespace
