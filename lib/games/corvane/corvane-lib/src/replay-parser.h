// One replay file -> one JSON document.
//
//     "ReplayFileMeta"  object  the container's information block; absent if the file is no replay
//     "header"          object  absent if there is no header chunk, or none that this reader knows
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

// Serves one file and one parse, on one thread; parsers share nothing. It is itself the archive over its
// file, which stays open while the parser lives.
class ReplayParser : public ue4::FArchiveReader {
  public:
    // path: UTF-16 units, one per wchar_t. Throws std::ios_base::failure if the file cannot be opened.
    explicit ReplayParser(const std::wstring& path);
    ReplayParser(const ReplayParser&) = delete;
    ReplayParser& operator=(const ReplayParser&) = delete;

    // Before the parse: the facts are to have the names of bots as well.
    void WantBotNames() { m_wantsBotNames = true; }

    // Reads the whole replay into the document. To be called once. key: the AES key for encrypted payloads if
    // the file has none; may be empty.
    //
    // Throws what reading throws: ReplayException (after a line on standard output), std::ios_base::failure
    // if the header is cut short, char* for a broken container. The document then holds what was read before.
    void ParseReplay(ue4::ResumeState& resume, std::vector<std::uint8_t> key);

    // After a ParseReplay that has thrown: reads what it has not come to, and throws nothing but
    // std::bad_alloc. The document then holds all that can be read.
    void Salvage();

    // The document, but that "events" is an empty list: its elements are kept as text. Null before the parse.
    // Callers may add members.
    nlohmann::json& Document() { return m_document.json; }
    // The whole document as JSON text in UTF-8: keys sorted, one blank of indent for each level, characters
    // beyond ASCII as they are. The events are moved into it, so it can be taken once. The document's first
    // string that is not UTF-8 throws nlohmann::json's type_error, or gets U+FFFD in it if the handler says
    // so.
    std::string TakeText(nlohmann::json::error_handler_t handler = nlohmann::json::error_handler_t::strict);

    const ue4::ReplayFileInfo& FileInfo() const { return m_streamer.Info(); }
    const NetworkDemoHeader& Header() const { return m_header; }
    const ReplayFacts& Facts() const { return m_facts; }

  private:
    // The header and the events, each once.
    void ParsePayloads();
    // What the step that has failed leaves out.
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
