// The steps of a parse: container, header, events.
#include "games/corvane/corvane-lib/src/replay-parser.h"

#include <utility>

#include "util/console.h"

namespace orvel::corvane {

ReplayParser::ReplayParser(std::wstring path) : FArchiveReader(path, CppUtilities::LittleEndian, false) {}

void ReplayParser::ParseReplay(std::uint32_t& resumePosition, bool& resumeFlag,
                               std::vector<std::uint8_t> key) {
    try {
        m_streamer.ReadReplayInfo(*this, m_fileInfo, m_document, resumePosition, resumeFlag, std::move(key));
        EncryptionKey = m_fileInfo.EncryptionKey;
        // The scan of the chunk table ended by running into the end of the file.
        Reader().clear();
        if (m_fileInfo.HeaderChunkIndex != -1) ParseHeaderChunk();
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
    m_document["header"] = HeaderObject(m_header);
    return true;
}

}  // namespace orvel::corvane
