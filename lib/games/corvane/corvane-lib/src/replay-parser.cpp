// The steps of a parse (container, header, events), and the document's text.
#include "games/corvane/corvane-lib/src/replay-parser.h"

#include <algorithm>
#include <new>
#include <string_view>
#include <utility>

#include "games/corvane/corvane-lib/src/event-kinds.h"
#include "util/console.h"

namespace orvel::corvane {

ReplayParser::ReplayParser(const std::wstring& path)
    : FArchiveReader(path, CppUtilities::LittleEndian, false) {}

void ReplayParser::ParseReplay(ue4::ResumeState& resume, std::vector<std::uint8_t> key) {
    const util::ConsoleFlush flush;
    try {
        m_streamer.ReadReplayInfo(std::move(key), resume);
        ParsePayloads();
    } catch (const ue4::ReplayException& exception) {
        util::WriteConsole("[ orvel::corvane::ReplayParser::ParseReplay ] [Replay Exception] " +
                           std::string(exception.what()) + "\n");
        // A copy: callers get exactly a ReplayException, never a class derived from it.
        throw ue4::ReplayException(exception);
    }
}

void ReplayParser::ParsePayloads() {
    EncryptionKey = FileInfo().EncryptionKey;
    if (!std::exchange(m_headerDone, true) && FileInfo().HeaderChunkIndex != -1) ParseHeaderChunk();
    if (!m_eventsDone) ParseEvents();
}

void ReplayParser::Salvage() {
    const util::ConsoleFlush flush;
    if (!m_eventsDone && m_nextEvent != 0) NoteUnread();
    while (!m_eventsDone) {
        try {
            ParsePayloads();
        } catch (const std::bad_alloc&) {
            throw;
        } catch (...) {
            NoteUnread();
        }
    }
}

void ReplayParser::NoteUnread() {
    if (m_nextEvent != 0) {
        m_facts.skipped.push_back({FileInfo().Events[m_nextEvent - 1].Index, SkipReason::Broken});
    } else {
        m_facts.headerRefusal = "the header cannot be read";
    }
}

void ReplayParser::ParseHeaderChunk() {
    // A cut chunk at the end of the table leaves the stream failed.
    Reader().clear();
    const auto index = static_cast<std::size_t>(FileInfo().HeaderChunkIndex);
    Reader().seekg(FileInfo().Chunks[index].DataOffset);
    m_facts.headerRefusal = ReadNetworkDemoHeader(*this, m_header);
    if (m_facts.headerRefusal.empty()) {
        m_document.json["header"] = HeaderObject(m_header);
    } else {
        util::WriteConsole("[ orvel::corvane::ReplayParser::ParseHeaderChunk ] " + m_facts.headerRefusal +
                           "\n");
    }
}

void ReplayParser::ParseEvents() {
    Reader().clear();
    const auto& events = FileInfo().Events;
    const auto isShown = [](const auto& info) {
        return info.SizeInBytes != 0 && FindEventKind(info) != nullptr;
    };
    if (m_nextEvent == 0) m_events.Reserve(static_cast<std::size_t>(std::ranges::count_if(events, isShown)));
    while (m_nextEvent < events.size()) ParseEvent(events[m_nextEvent++]);
    m_eventsDone = true;
}

void ReplayParser::ParseEvent(const ue4::FLocalFileEventInfo& info) {
    constexpr std::uint8_t kPlain =
        1;  // a bit without a meaning of its own: neither encrypted nor compressed
    const std::uint8_t mode = FileInfo().bEncrypted ? kPayloadEncrypted : kPlain;
    Reader().seekg(info.DataOffset);
    const std::vector<std::uint8_t>& payload =
        ReadPayload(static_cast<std::uint32_t>(info.SizeInBytes), mode);
    const auto skip = [&](SkipReason reason) { m_facts.skipped.push_back({info.Index, reason}); };

    const EventKind* kind = FindEventKind(info);
    if (kind == nullptr) return skip(SkipReason::Unknown);
    if (payload.empty())
        return skip(info.SizeInBytes == 0 ? SkipReason::TooShort : SkipReason::Undecryptable);
    if (!m_document.json.contains("events")) m_document.json["events"] = nlohmann::json::array();
    if (!WriteEvent(*kind, info, payload, m_events, m_wantsBotNames ? &m_facts.botNames : nullptr))
        skip(SkipReason::TooShort);
}

std::string ReplayParser::TakeText(nlohmann::json::error_handler_t handler) {
    const bool isStrict = handler == nlohmann::json::error_handler_t::strict;
    if (m_events.InvalidText()) {
        // The library throws for the first text that is not UTF-8. To find the right one, it needs the
        // events' first such text in the events' place.
        nlohmann::json& events = m_document.json["events"] = nlohmann::json::array();
        if (isStrict) events.push_back(*m_events.InvalidText());
    }
    std::string rest = m_document.json.dump(1, ' ', false, handler);
    std::string text = m_events.Take();
    if (text.empty()) return rest;

    // Stands nowhere else in the text: line ends inside strings are escaped.
    constexpr std::string_view kNoEvents = "\n \"events\": []";
    const std::size_t end = rest.find(kNoEvents) + kNoEvents.size() - 1;
    text.insert(0, rest, 0, end);
    text.back() = '\n';  // replaces the comma behind the last event
    text.append(" ").append(rest, end);
    return text;
}

}  // namespace orvel::corvane
