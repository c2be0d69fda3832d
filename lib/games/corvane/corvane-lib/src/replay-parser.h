// One replay file -> one JSON document.
//
//     "ReplayFileMeta"  object  the container's information block; absent if the file is no replay
//     "header"          object  absent without a header chunk, or if its magic number or version is unknown
//     "events"          array   absent if no event of a known kind has a payload
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "games/corvane/corvane-lib/src/event-text.h"
#include "games/corvane/corvane-lib/src/header-chunk.h"
#include "games/corvane/corvane-lib/src/replay-facts.h"
#include "games/corvane/corvane-lib/src/ue4/local-file-replay-streamer.h"
#include "games/corvane/corvane-lib/src/ue4/replay-info.h"
#include "games/corvane/corvane-lib/src/ue4/util/json-object.h"
#include "games/corvane/corvane-lib/src/ue4/util/ue4-binary-streams.h"

namespace orvel::corvane {

// One object serves one file, one parse, one thread. Objects share nothing. The parser is itself the archive
// over its file. The file stays open as long as the parser lives.
class ReplayParser : public ue4::FArchiveReader {
  public:
    // path: UTF-16 units, one per wchar_t. Throws std::ios_base::failure if the file cannot be opened.
    explicit ReplayParser(const std::wstring& path);
    ReplayParser(const ReplayParser&) = delete;
    ReplayParser& operator=(const ReplayParser&) = delete;

    // Call before the parse: the facts then have the names of bots too.
    void WantBotNames() { m_wantsBotNames = true; }

    // Call before the parse: eliminations are rows in the text, as event-text.h has them.
    void WantEventRows() { m_events.WantRows(); }

    // Reads the whole replay into the document. Call it once. key: the AES key if the file has none; may be
    // empty.
    //
    // Throws ReplayException (after a line on standard output), std::ios_base::failure if the header is cut
    // short, char* for a broken container. The document then holds what was read before.
    void ParseReplay(ue4::ResumeState& resume, std::vector<std::uint8_t> key);

    // Call after ParseReplay has thrown. Reads everything behind the failure that can be read. Throws only
    // std::bad_alloc.
    void Salvage();

    // The document, with an empty list as "events": the events are kept as text. Null before the parse.
    // Callers may add members.
    nlohmann::json& Document() { return m_document.json; }
    // The whole document as JSON text in UTF-8: keys sorted, one blank of indent per level, characters beyond
    // ASCII as they are. A string that is not UTF-8 throws nlohmann::json's type_error, or gets U+FFFD in it,
    // as the handler says. Call it once, and again only after it has thrown: it moves the events out.
    std::string TakeText(nlohmann::json::error_handler_t handler = nlohmann::json::error_handler_t::strict);

    const ue4::ReplayFileInfo& FileInfo() const { return m_streamer.Info(); }
    const NetworkDemoHeader& Header() const { return m_header; }
    const ReplayFacts& Facts() const { return m_facts; }

  private:
    // Reads the header and the events, each once.
    void ParsePayloads();
    // Records what the failed step has left out.
    void NoteUnread();
    void ParseHeaderChunk();
    void ParseEvents();
    void ParseEvent(const ue4::FLocalFileEventInfo& info);

    ue4::Document m_document;
    ue4::FLocalFileNetworkReplayStreamer m_streamer{*this, m_document.json};
    NetworkDemoHeader m_header;
    bool m_wantsBotNames = false;
    bool m_headerDone = false;
    std::size_t m_nextEvent = 0;
    bool m_eventsDone = false;
    EventText m_events;
    ReplayFacts m_facts;
};

}  // namespace orvel::corvane
