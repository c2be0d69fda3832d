// The replay, its reading, and what is allowed of it.
#include "cpp/faults/replay-under-test.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <exception>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "games/corvane/corvane-lib/src/replay-parser.h"
#include "support/allocation-meter.h"

namespace corvane_test {
namespace {

constexpr const char* kReadFailed = "ios_base::failbit set";

// Adds a chunk as its head and its payload.
void AddChunk(std::vector<Section>& sections, const char* name, std::uint32_t type, const Bytes& payload,
              Section section) {
    const Bytes chunk = Chunk(type, payload);
    Section head = sections.back();
    head.name = "the head of a chunk";
    head.bytes = Bytes(chunk.begin(), chunk.begin() + 8);
    head.whenCut = Outcome::Document;
    head.isInert = false;
    sections.push_back(head);
    section.name = name;
    section.bytes = payload;
    sections.push_back(section);
}

// An event chunk is its head and description, both of which may be missing, and its data, which may not.
void AddEvent(std::vector<Section>& sections, const Event& event, bool isKnown) {
    const Bytes chunk = event.Build();
    const auto data = chunk.end() - static_cast<std::ptrdiff_t>(event.data.size());
    Section section = sections.back();
    section.name = "the description of an event";
    section.bytes = Bytes(chunk.begin(), data);
    section.whenCut = Outcome::Document;
    section.isInert = false;
    sections.push_back(section);
    section.name = "the data of an event";
    section.bytes = event.data;
    section.whenCut = Outcome::ProcessEnd;
    section.failure = "ReadReplayInfo: Invalid event disk size";
    section.isInert = !isKnown;
    section.events += isKnown ? 1 : 0;
    sections.push_back(section);
}

std::vector<Section> Sections(const InfoBlock& info, const std::vector<std::pair<Event, bool>>& events) {
    std::vector<Section> sections;
    sections.push_back({"the information block", info.Build(), Outcome::ProcessEnd, kReadFailed});
    AddChunk(sections, "a network data chunk", kData, Sequence(0, 12),
             {.name = "", .bytes = {}, .whenCut = Outcome::Document, .isInert = true});
    AddChunk(sections, "the header", kHeader, Header{.levels = {"L"}, .gameData = {"G"}}.Build(),
             {.name = "", .bytes = {}, .whenCut = Outcome::Empty, .failure = kReadFailed, .hasHeader = true});
    const Section passed{
        .name = "", .bytes = {}, .whenCut = Outcome::Document, .isInert = true, .hasHeader = true};
    AddChunk(sections, "a checkpoint", kCheckpoint, Sequence(3, 9), passed);
    AddChunk(sections, "a cleared chunk", kCleared, Sequence(5, 9), passed);
    AddChunk(sections, "a chunk of an unknown type", 7, Sequence(7, 9), passed);
    for (const auto& [event, isKnown] : events) AddEvent(sections, event, isKnown);
    return sections;
}

constexpr std::array kProcessEnds = {
    "The Replay file had no data in it.\n",
    "ReadReplayInfo: Found multiple header chunks\n",
    "ReadReplayInfo: Invalid event disk size",
    "ReadReplayInfo: Archive error after parsing chunk.\n",
    "ReadReplayInfo: Found overlapping data chunks",
    "ReadReplayInfo: Found duplicate checkpoint id",
    "ios_base::failbit set",
    "ios_base::badbit set",
};

std::string TextOf(const std::wstring& path) {
    std::uint32_t resumePosition = 0;
    bool resumeFlag = false;
    orvel::corvane::ReplayParser parser(path);
    parser.ParseReplay(resumePosition, resumeFlag, {});
    return parser.Document().dump(1, ' ', false, nlohmann::json::error_handler_t::strict);
}

void Run(const std::wstring& path, ReadResult& result) {
    try {
        result.text = TextOf(path);
        result.outcome = Outcome::Document;
    } catch (const std::runtime_error& failure) {
        result.outcome = Outcome::Empty;
        result.text = failure.what();
    } catch (char* text) {
        result.outcome = Outcome::ProcessEnd;
        result.text = text;
    } catch (const nlohmann::json::type_error& failure) {
        constexpr int kInvalidUtf8 = 316;
        if (failure.id == kInvalidUtf8) result.outcome = Outcome::Refused;
        result.text = failure.what();
    } catch (const std::exception& failure) {
        result.text = failure.what();
    } catch (...) {
        result.text = "an exception of another type";
    }
}

}  // namespace

std::vector<Section> SectionsOfReplay() {
    return Sections({}, {{Event{.metadata = "playerElim", .data = Elimination{}.Build()}, true},
                         {Event{.metadata = "AthenaMatchStats", .data = MatchStats()}, true},
                         {Event{.metadata = "unknown", .data = Sequence(1, 5)}, false},
                         {Event{.group = "AthenaMatchTeamStats", .data = MatchTeamStats()}, true}});
}

// Any bytes decrypt to something, so the events hold just any: what they decrypt to is no concern here.
std::vector<Section> SectionsOfEncryptedReplay() {
    const InfoBlock info{.friendlyName = "E", .encrypted = 1, .key = Sequence(1, 16)};
    return Sections(info, {{Event{.metadata = "playerElim", .data = Sequence(0, 112)}, true},
                           {Event{.metadata = "AthenaMatchStats", .data = Sequence(3, 48)}, true}});
}

Bytes Whole(const std::vector<Section>& sections) {
    Writer writer;
    for (const Section& section : sections) writer.Add(section.bytes);
    return writer.bytes;
}

ReadResult Read(const Bytes& bytes) {
    using Clock = std::chrono::steady_clock;
    const TemporaryFile file(bytes);
    const std::wstring path = file.WidePath();
    ReadResult result;
    const AllocationMeter meter;
    const auto begin = Clock::now();
    Run(path, result);
    result.seconds = std::chrono::duration<double>(Clock::now() - begin).count();
    result.peakBytes = meter.Peak();
    return result;
}

QuietOutput::QuietOutput() { testing::internal::CaptureStdout(); }

QuietOutput::~QuietOutput() {
    const std::string output = testing::internal::GetCapturedStdout();
    if (testing::Test::HasFailure()) std::fwrite(output.data(), 1, output.size(), stdout);
}

bool IsAllowed(const ReadResult& result) {
    switch (result.outcome) {
        case Outcome::Document:
        case Outcome::Refused:
            return true;
        case Outcome::Empty:
            return result.text.starts_with("ios_base::failbit set") ||
                   result.text.ends_with(": Invalid SaveNum, corrupted FArchive.") ||
                   result.text.ends_with(": Data was encrypted, but encryption key was not set.");
        case Outcome::ProcessEnd:
            return std::ranges::count(kProcessEnds, result.text) == 1;
        default:
            return false;
    }
}

}  // namespace corvane_test
