// The replay, its reading, and the outcomes that are allowed.
#include "cpp/faults/replay-under-test.h"

#include <algorithm>
#include <array>
#include <exception>

#include <nlohmann/json.hpp>

#include "games/corvane/corvane-lib/src/replay-parser.h"
#include "support/allocation-meter.h"

namespace corvane_test {
namespace {

constexpr const char* kReadFailed = "ios_base::failbit set";

// Cut anywhere, a file has what stands before the cut; what a section says of itself holds for the next ones.
class SectionList {
  public:
    explicit SectionList(const InfoBlock& info) {
        sections = {{"the information block", info.Build(), Outcome::ProcessEnd, kReadFailed}};
    }

    void AddPassedChunk(const char* name, std::uint32_t type, const Bytes& payload) {
        AddHead(type, payload);
        Add(name, payload).isInert = true;
    }
    void AddHeader(const Bytes& payload) {
        AddHead(kHeader, payload);
        Section& section = Add("the header", payload);
        section.whenCut = Outcome::Empty;
        section.failure = kReadFailed;
        section.hasHeader = true;
    }
    // Its head and description may be missing, its data may not.
    void AddEvent(const Event& event, bool isKnown = true) {
        const Bytes chunk = event.Build();
        Add("the description of an event", Prefix(chunk, chunk.size() - event.data.size()));
        Section& section = Add("the data of an event", event.data);
        section.whenCut = Outcome::ProcessEnd;
        section.failure = "ReadReplayInfo: Invalid event disk size";
        section.isInert = !isKnown;
        section.events += isKnown ? 1 : 0;
    }

    std::vector<Section> sections;

  private:
    Section& Add(const char* name, const Bytes& bytes) {
        const Section& before = sections.back();
        sections.push_back({.name = name,
                            .bytes = bytes,
                            .whenCut = Outcome::Document,
                            .hasHeader = before.hasHeader,
                            .events = before.events});
        return sections.back();
    }
    void AddHead(std::uint32_t type, const Bytes& payload) {
        Add("the head of a chunk", Prefix(Chunk(type, payload), 8));
    }
};

constexpr std::array kProcessEnds = {
    "The Replay file had no data in it.\n",
    "ReadReplayInfo: Found multiple header chunks\n",
    "ReadReplayInfo: Invalid event disk size",
    "ReadReplayInfo: Archive error after parsing chunk.\n",
    "ReadReplayInfo: Found overlapping data chunks",
    "ReadReplayInfo: Found duplicate checkpoint id",
    kReadFailed,
};

bool IsNamedFailure(const std::string& text) {
    return text.starts_with(kReadFailed) || text.ends_with(": Invalid SaveNum, corrupted FArchive.") ||
           text.ends_with(": Data was encrypted, but encryption key was not set.");
}

}  // namespace

std::vector<Section> SectionsOfReplay() {
    SectionList list({});
    list.AddPassedChunk("a network data chunk", kData, Sequence(0, 12));
    list.AddHeader(Header{.levels = {"L"}, .gameData = {"G"}}.Build());
    list.AddPassedChunk("a checkpoint", kCheckpoint, Sequence(3, 9));
    list.AddPassedChunk("a cleared chunk", kCleared, Sequence(5, 9));
    list.AddPassedChunk("a chunk of an unknown type", 7, Sequence(7, 9));
    list.AddEvent({.metadata = "playerElim", .data = Elimination{}.Build()});
    list.AddEvent({.metadata = "AthenaMatchStats", .data = MatchStats()});
    list.AddEvent({.metadata = "unknown", .data = Sequence(1, 5)}, false);
    list.AddEvent({.group = "AthenaMatchTeamStats", .data = MatchTeamStats()});
    return list.sections;
}

// Any bytes decrypt to something, so the events hold arbitrary bytes. What these decrypt to does not matter
// here.
std::vector<Section> SectionsOfEncryptedReplay() {
    SectionList list({.friendlyName = "E", .encrypted = 1, .key = Sequence(1, 16)});
    list.AddHeader(Header{.levels = {"L"}, .gameData = {"G"}}.Build());
    list.AddEvent({.metadata = "playerElim", .data = Sequence(0, 112)});
    list.AddEvent({.metadata = "AthenaMatchStats", .data = Sequence(3, 48)});
    return list.sections;
}

Bytes Whole(const std::vector<Section>& sections) {
    Writer writer;
    for (const Section& section : sections) writer.Add(section.bytes);
    return writer.bytes;
}

ReadResult ReadFile(const std::wstring& path) {
    ReadResult result;
    try {
        ue4::ResumeState resume;
        orvel::corvane::ReplayParser parser(path);
        parser.ParseReplay(resume, {});
        result.text = parser.TakeText();
        result.outcome = Outcome::Document;
    } catch (const std::runtime_error& failure) {
        result.text = failure.what();
        if (IsNamedFailure(result.text)) result.outcome = Outcome::Empty;
    } catch (char* text) {
        result.text = text;
        if (std::ranges::count(kProcessEnds, result.text) == 1) result.outcome = Outcome::ProcessEnd;
    } catch (const nlohmann::json::type_error& failure) {
        constexpr int kInvalidUtf8 = 316;
        if (failure.id == kInvalidUtf8) result.outcome = Outcome::Refused;
        result.text = failure.what();
    } catch (const std::bad_alloc&) {
        throw;
    } catch (const std::exception& failure) {
        result.text = failure.what();
    }
    return result;
}

ReadResult Read(const Bytes& bytes) {
    const TemporaryFile file(bytes);
    const std::wstring path = file.WidePath();
    const AllocationMeter meter;
    ReadResult result = ReadFile(path);
    result.peakBytes = meter.Peak();
    return result;
}

}  // namespace corvane_test
