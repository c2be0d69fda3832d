// Reads the information block, settles the key, adds "ReplayFileMeta" and scans the chunk table.
#include "games/corvane/corvane-lib/src/ue4/local-file-replay-streamer.h"

#include <algorithm>
#include <iterator>
#include <string_view>
#include <unordered_set>
#include <utility>

#include "games/corvane/corvane-lib/src/ue4/util/json-object.h"
#include "util/console.h"

namespace ue4 {
namespace {

constexpr std::uint32_t kFileMagic = 0x1CA2E27F;

// The first FileVersion that has each field.
constexpr std::uint32_t kVersionCompressed = 2;
constexpr std::uint32_t kVersionTimestamp = 3;
constexpr std::uint32_t kVersionOrderedDataChunks = 4;
constexpr std::uint32_t kVersionEncrypted = 6;

constexpr std::int64_t kChunkHeadBytes = 8;

// In a table in file order events do not overlap, so together they fit into the file. In a hostile file they
// may overlap a thousandfold, and a small file would cost any amount of time and memory. This much overlap is
// accepted.
constexpr std::int64_t kToleratedOverlap = 1024 * 1024;

// Throws a failure of the container. All of them are thrown as a char*.
[[noreturn]] void ThrowContainerFailure(const char* staticText) { throw const_cast<char*>(staticText); }

// {0x0A, 0xFF} gives "0a ff ", with the blank at the end.
std::string HexText(const std::vector<std::uint8_t>& bytes) {
    constexpr std::string_view kDigits = "0123456789abcdef";
    std::string text;
    text.reserve(bytes.size() * 3);
    for (const std::uint8_t byte : bytes) {
        text.push_back(kDigits[byte >> 4]);
        text.push_back(kDigits[byte & 0xF]);
        text.push_back(' ');
    }
    return text;
}

nlohmann::json FileMeta(const ReplayFileInfo& info) {
    nlohmann::json meta = nlohmann::json::object();
    meta["MagicNumber"] = info.MagicNumber;
    meta["FileVersion"] = info.FileVersion;
    meta["LegthInMs"] = info.LengthInMS;  // programs that read documents know this spelling
    meta["NetworkVersion"] = info.NetworkVersion;
    meta["Changelist"] = info.Changelist;
    meta["FriendlyName"] = WithoutWhitespace(info.FriendlyName);
    meta["Timestamp"] = info.Timestamp;
    meta["TotalDataSizeInBytes"] = info.TotalDataSizeInBytes;
    meta["bIsLive"] = info.bIsLive;
    meta["bIsValid"] = info.bIsValid;  // always false: only the scan, which comes later, sets it
    meta["bCompressed"] = info.bCompressed;
    meta["bEncrypted"] = info.bEncrypted;
    meta["EncryptionKey"] = HexText(info.EncryptionKey);
    return meta;
}

void CheckDataChunks(ReplayFileInfo& info) {
    std::vector<ReplayDataChunkInfo>& chunks = info.DataChunks;
    if (info.FileVersion < kVersionOrderedDataChunks) {
        std::ranges::sort(chunks, {}, &ReplayDataChunkInfo::StartOffset);
    }
    for (auto first = chunks.begin(); first != chunks.end(); ++first) {
        for (auto second = first + 1; second != chunks.end(); ++second) {
            if (first->ChunkIndex != second->ChunkIndex && first->StartOffset < second->EndOffset &&
                second->StartOffset < first->EndOffset) {
                ThrowContainerFailure("ReadReplayInfo: Found overlapping data chunks");
            }
        }
    }
}

void CheckCheckpoints(const ReplayFileInfo& info) {
    std::unordered_set<std::string_view> ids;
    for (const FLocalFileEventInfo& checkpoint : info.Checkpoints) {
        if (!ids.insert(checkpoint.Id).second) {
            ThrowContainerFailure("ReadReplayInfo: Found duplicate checkpoint id");
        }
    }
}

}  // namespace

// Chunks of types without a row, such as 1 and 2, are passed over. To show another type in the document, add
// a row and a step that adds to m_document.
constexpr FLocalFileNetworkReplayStreamer::ChunkType FLocalFileNetworkReplayStreamer::kChunkTypes[] = {
    {0, &FLocalFileNetworkReplayStreamer::NoteHeader},
    {3, &FLocalFileNetworkReplayStreamer::ReadEvent},
    {0xFFFFFFFF, &FLocalFileNetworkReplayStreamer::ReportCleared},
};

void FLocalFileNetworkReplayStreamer::ReadReplayInfo(std::vector<std::uint8_t> key, ResumeState& resume) {
    m_info = {};
    CppUtilities::BinaryReader& reader = m_archive.Reader();
    try {
        m_info.TotalDataSizeInBytes = static_cast<std::int64_t>(reader.remaining());
        reader.clear();
        reader.seekg(0);
        if (m_info.TotalDataSizeInBytes == 0) ThrowContainerFailure("The Replay file had no data in it.\n");
        if (ReadInformationBlock(std::move(key), resume)) {
            AsObject(m_document)["ReplayFileMeta"] = FileMeta(m_info);
            if (resume.Offset != 0) reader.seekg(resume.Offset);
            ReadChunkTable();
        }
        Validate(resume);
    } catch (const std::ios_base::failure&) {
        ThrowContainerFailure(reader.failureText());
    }
}

// Returns false if the file is no replay. Then only the magic number was read.
bool FLocalFileNetworkReplayStreamer::ReadInformationBlock(std::vector<std::uint8_t> key,
                                                           ResumeState& resume) {
    m_info.MagicNumber = m_archive.ReadUInt32();
    if (m_info.MagicNumber != kFileMagic) return false;
    m_info.FileVersion = m_archive.ReadUInt32();
    m_info.LengthInMS = m_archive.ReadUInt32();
    m_info.NetworkVersion = m_archive.ReadUInt32();
    m_info.Changelist = m_archive.ReadUInt32();
    m_archive.ReadStoredString(m_info.FriendlyName);
    m_info.bIsLive = m_archive.ReadBool();
    if (m_info.FileVersion >= kVersionTimestamp) m_info.Timestamp = m_archive.ReadUInt64();
    if (m_info.FileVersion >= kVersionCompressed) m_info.bCompressed = m_archive.ReadBool();
    if (m_info.FileVersion >= kVersionEncrypted) {
        m_info.bEncrypted = m_archive.ReadBool();
        SettleKey(std::move(key), resume);
    }
    return true;
}

// The file's key wins if it has a byte other than 0, or if an earlier parse found such a key.
void FLocalFileNetworkReplayStreamer::SettleKey(std::vector<std::uint8_t> key, ResumeState& resume) {
    m_info.EncryptionKey = std::move(key);
    std::vector<std::uint8_t> fileKey = m_archive.ReadByteArray();
    const auto isSet = [](std::uint8_t byte) { return byte != 0; };
    if (std::ranges::any_of(fileKey, isSet)) resume.IsKeyFromFile = true;
    if (resume.IsKeyFromFile) m_info.EncryptionKey = std::move(fileKey);
    // Required: each information block that can hold a key prints an empty line.
    orvel::util::WriteConsole("\n");
}

void FLocalFileNetworkReplayStreamer::ReadChunkTable() {
    try {
        // Offsets are computed: asking the stream costs more.
        std::int64_t offset = m_archive.Reader().tellg();
        for (;;) {
            if (offset <= m_info.TotalDataSizeInBytes) m_info.TableEnd = offset;
            // To read on would throw, which takes as long as reading ten events.
            if (offset >= m_info.TotalDataSizeInBytes) return;
            const ReplayChunkInfo chunk = ReadChunkHead(offset);
            if (!ReadChunkPayload(chunk) || chunk.SizeInBytes < 0) return;
            offset = chunk.DataOffset + chunk.SizeInBytes;
            m_archive.Reader().seekg(offset);
        }
    } catch (const std::ios_base::failure&) {
        // A chunk that is cut, or a device that fails. Both end the table; otherwise the scan might never
        // end.
    }
}

ReplayChunkInfo FLocalFileNetworkReplayStreamer::ReadChunkHead(std::int64_t offset) {
    ReplayChunkInfo chunk;
    chunk.TypeOffset = offset;
    chunk.ChunkType = m_archive.ReadUInt32();
    chunk.SizeInBytes = m_archive.ReadInt32();
    chunk.DataOffset = offset + kChunkHeadBytes;
    m_info.Chunks.push_back(chunk);
    return chunk;
}

// Returns false if the chunk cannot belong to the table.
bool FLocalFileNetworkReplayStreamer::ReadChunkPayload(const ReplayChunkInfo& chunk) {
    const auto type = std::ranges::find(kChunkTypes, chunk.ChunkType, &ChunkType::value);
    const bool belongs = type == std::end(kChunkTypes) || (this->*type->step)(chunk);
    if (m_archive.Reader().fail())
        ThrowContainerFailure("ReadReplayInfo: Archive error after parsing chunk.\n");
    return belongs;
}

bool FLocalFileNetworkReplayStreamer::NoteHeader(const ReplayChunkInfo& /*chunk*/) {
    if (m_info.HeaderChunkIndex != -1)
        ThrowContainerFailure("ReadReplayInfo: Found multiple header chunks\n");
    m_info.HeaderChunkIndex = static_cast<std::int32_t>(m_info.Chunks.size() - 1);
    return true;
}

bool FLocalFileNetworkReplayStreamer::ReadEvent(const ReplayChunkInfo& chunk) {
    FLocalFileEventInfo event;
    event.Index = static_cast<std::int32_t>(m_info.Events.size());
    m_archive.ReadString(event.Id);
    m_archive.ReadString(event.Group);
    m_archive.ReadString(event.Metadata);
    event.Time1 = m_archive.ReadUInt32();
    event.Time2 = m_archive.ReadUInt32();
    event.SizeInBytes = m_archive.ReadInt32();
    event.DataOffset = m_archive.Reader().tellg();
    const std::int64_t end = event.DataOffset + event.SizeInBytes;
    if (event.SizeInBytes < 0 || end > m_info.TotalDataSizeInBytes) {
        ThrowContainerFailure("ReadReplayInfo: Invalid event disk size");
    }
    m_eventBytes += end - chunk.DataOffset;
    if (m_eventBytes > m_info.TotalDataSizeInBytes + kToleratedOverlap) return false;
    m_info.Events.push_back(std::move(event));
    return true;
}

bool FLocalFileNetworkReplayStreamer::ReportCleared(const ReplayChunkInfo& /*chunk*/) {
    orvel::util::WriteConsole(
        "[ ue4::FLocalFileNetworkReplayStreamer::ReadReplayInfo ] "
        "ReadReplayInfo: Skipping unknown (cleared) chunk.\n\n");
    return true;
}

void FLocalFileNetworkReplayStreamer::Validate(ResumeState& resume) {
    CheckDataChunks(m_info);
    CheckCheckpoints(m_info);
    m_info.bIsValid = true;
    resume.Offset = static_cast<std::uint32_t>(m_info.TotalDataSizeInBytes);
    // bIsValid is true here unless somebody adds a check above that does not throw; then this line reports
    // it.
    if (!m_info.bIsValid) {
        orvel::util::WriteConsole(
            "[ ue4::FLocalFileNetworkReplayStreamer::ReadReplayInfo ] INVALID REPLAY FILE\n");
    }
}

}  // namespace ue4
