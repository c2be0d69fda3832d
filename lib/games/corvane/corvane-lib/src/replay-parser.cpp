// The steps of a parse: container, header, events.
#include "games/corvane/corvane-lib/src/replay-parser.h"

#include <utility>

#include "games/corvane/corvane-lib/src/event-handlers.h"
#include "util/console.h"

namespace orvel::corvane {

ReplayParser::ReplayParser(std::wstring path) : FArchiveReader(path, CppUtilities::LittleEndian, false) {
    m_handlers["AthenaMatchStats"] = [this](auto& payload, const auto& info) {
        nlohmann::json event;
        if (ReadMatchStats(payload, event)) AppendEvent(std::move(event), info);
        return true;
    };
    m_handlers["AthenaMatchTeamStats"] = [this](auto& payload, const auto& info) {
        nlohmann::json event;
        if (ReadMatchTeamStats(payload, event)) AppendEvent(std::move(event), info);
        return true;
    };
    m_handlers["playerElim"] = [this](auto& payload, const auto& info) {
        nlohmann::json event;
        ReadElimination(payload, event);
        AppendEvent(std::move(event), info);
        return true;
    };
}

void ReplayParser::ParseReplay(std::uint32_t& resumePosition, bool& resumeFlag,
                               std::vector<std::uint8_t> key) {
    try {
        m_streamer.ReadReplayInfo(*this, m_fileInfo, m_document.json, resumePosition, resumeFlag,
                                  std::move(key));
        EncryptionKey = m_fileInfo.EncryptionKey;
        // The scan of the chunk table ended by running into the end of the file.
        Reader().clear();
        if (m_fileInfo.HeaderChunkIndex != -1) ParseHeaderChunk();
        ParseEvents();
    } catch (const ue4::ReplayException& exception) {
        util::WriteConsole("[ orvel::corvane::ReplayParser::ParseReplay ] [Replay Exception] " +
                           std::string(exception.what()) + "\n");
        throw ue4::ReplayException(exception);
    }
}

bool ReplayParser::ParseHeaderChunk() {
    const auto index = static_cast<std::size_t>(m_fileInfo.HeaderChunkIndex);
    Reader().seekg(m_fileInfo.Chunks[index].DataOffset);
    if (!ReadNetworkDemoHeader(*this, m_header)) return false;
    m_document.json["header"] = HeaderObject(m_header);
    return true;
}

void ReplayParser::ParseEvents() {
    constexpr std::uint8_t kPlain = 1;
    const std::uint8_t mode = m_fileInfo.bEncrypted ? kPayloadEncrypted : kPlain;
    for (const ue4::FLocalFileEventInfo& info : m_fileInfo.Events) {
        Reader().seekg(info.DataOffset);
        std::vector<std::uint8_t> payload = ReadPayload(static_cast<std::uint32_t>(info.SizeInBytes), mode);
        const Handler* handler = payload.empty() ? nullptr : FindHandler(info);
        if (handler == nullptr) continue;
        if (!m_document.json.contains("events")) m_document.json["events"] = nlohmann::json::array();
        (*handler)(payload, info);
    }
}

const ReplayParser::Handler* ReplayParser::FindHandler(const ue4::FLocalFileEventInfo& info) const {
    for (const std::string* name : {&info.Metadata, &info.Group}) {
        const auto entry = m_handlers.find(*name);
        if (entry != m_handlers.end()) return &entry->second;
    }
    return nullptr;
}

void ReplayParser::AppendEvent(nlohmann::json event, const ue4::FLocalFileEventInfo& info) {
    nlohmann::json& meta = ue4::AsObject(event["eventMeta"]);
    meta["time1"] = info.Time1;
    meta["time2"] = info.Time2;
    m_document.json["events"].push_back(std::move(event));
}

}  // namespace orvel::corvane
