// One replay file -> one JSON document.
//
//     "ReplayFileMeta"  object  the container's information block; absent if the file is no replay
//     "header"          object  absent if there is no header chunk, or none that this reader knows
//     "events"          array   absent if no event with a handler has a payload
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <unordered_map>
#include <vector>

#include <nlohmann/json.hpp>

#include "games/corvane/corvane-lib/src/header-chunk.h"
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
    explicit ReplayParser(std::wstring path);
    ReplayParser(const ReplayParser&) = delete;
    ReplayParser& operator=(const ReplayParser&) = delete;

    // Reads the whole replay into the document. To be called once.
    //
    //     resumePosition, resumeFlag   the caller's for each file, at first 0 and false; what for is told at
    //                                  ReadReplayInfo
    //     key                          the AES key for encrypted payloads if the file has none; may be empty
    //
    // Throws what reading throws: ReplayException (after a line on standard output), std::ios_base::failure
    // if the header is cut short, char* for a broken container. The document then holds what was read before.
    void ParseReplay(std::uint32_t& resumePosition, bool& resumeFlag, std::vector<std::uint8_t> key);

    // Null before the parse. The parser's own; callers may take it or add to it.
    nlohmann::json& Document() { return m_document.json; }
    const ue4::ReplayFileInfo& FileInfo() const { return m_fileInfo; }
    // Whether the event is of a kind that the document shows.
    bool Handles(const ue4::FLocalFileEventInfo& info) const { return FindHandler(info) != nullptr; }

  private:
    using Handler = std::function<bool(std::vector<std::uint8_t>&, const ue4::FLocalFileEventInfo&)>;

    bool ParseHeaderChunk();
    void ParseEvents();
    const Handler* FindHandler(const ue4::FLocalFileEventInfo& info) const;
    void AppendEvent(nlohmann::json event, const ue4::FLocalFileEventInfo& info);

    ue4::FLocalFileNetworkReplayStreamer m_streamer;
    ue4::ReplayFileInfo m_fileInfo;
    NetworkDemoHeader m_header;
    std::unordered_map<std::string, Handler> m_handlers;
    ue4::Document m_document;
};

}  // namespace orvel::corvane
