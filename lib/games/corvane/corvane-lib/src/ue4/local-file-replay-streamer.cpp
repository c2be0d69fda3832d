// The information block, the key in effect, and the document's "ReplayFileMeta".
#include "games/corvane/corvane-lib/src/ue4/local-file-replay-streamer.h"

#include <algorithm>
#include <string_view>
#include <unordered_set>
#include <utility>

#include "games/corvane/corvane-lib/src/ue4/chunk-table.h"
#include "games/corvane/corvane-lib/src/ue4/util/json-object.h"
#include "util/console.h"

namespace ue4 {
namespace {

constexpr std::uint32_t kFileMagic = 0x1CA2E27F;

// The first FileVersion that has a field.
constexpr std::uint32_t kVersionCompressed = 2;
constexpr std::uint32_t kVersionTimestamp = 3;
constexpr std::uint32_t kVersionOrderedDataChunks = 4;
constexpr std::uint32_t kVersionEncrypted = 6;

// The file's key wins if it is one, or if this file has had one before.
void SettleKey(FStreamReader& archive, ReplayFileInfo& info, bool& keyFromFile,
               std::vector<std::uint8_t> key) {
    info.EncryptionKey = std::move(key);
    std::vector<std::uint8_t> fileKey = archive.ReadByteArray();
    if (std::ranges::any_of(fileKey, [](std::uint8_t byte) { return byte != 0; })) keyFromFile = true;
    if (keyFromFile) info.EncryptionKey = std::move(fileKey);
    orvel::util::WriteConsole("\n");
}

// False if the file is no replay; then nothing but the magic number was read.
bool ReadInformationBlock(FStreamReader& archive, ReplayFileInfo& info, bool& keyFromFile,
                          std::vector<std::uint8_t> key) {
    info.MagicNumber = archive.ReadUInt32();
    if (info.MagicNumber != kFileMagic) return false;
    info.FileVersion = archive.ReadUInt32();
    info.LengthInMS = archive.ReadUInt32();
    info.NetworkVersion = archive.ReadUInt32();
    info.Changelist = archive.ReadUInt32();
    archive.ReadStoredString(info.FriendlyName);
    info.bIsLive = archive.ReadBool();
    if (info.FileVersion >= kVersionTimestamp) info.Timestamp = archive.ReadUInt64();
    if (info.FileVersion >= kVersionCompressed) info.bCompressed = archive.ReadBool();
    if (info.FileVersion >= kVersionEncrypted) {
        info.bEncrypted = archive.ReadBool();
        SettleKey(archive, info, keyFromFile, std::move(key));
    }
    return true;
}

// 0A FF -> "0a ff ", with the last blank.
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
    meta["LegthInMs"] = info.LengthInMS;  // the document's readers know it under this spelling
    meta["NetworkVersion"] = info.NetworkVersion;
    meta["Changelist"] = info.Changelist;
    meta["FriendlyName"] = WithoutWhitespace(info.FriendlyName);
    meta["Timestamp"] = info.Timestamp;
    meta["TotalDataSizeInBytes"] = info.TotalDataSizeInBytes;
    meta["bIsLive"] = info.bIsLive;
    meta["bIsValid"] = info.bIsValid;
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

void Validate(ReplayFileInfo& info, std::uint32_t& resumeOffset) {
    CheckDataChunks(info);
    CheckCheckpoints(info);
    info.bIsValid = true;
    resumeOffset = static_cast<std::uint32_t>(info.TotalDataSizeInBytes);
    if (!info.bIsValid) {
        orvel::util::WriteConsole(
            "[ ue4::FLocalFileNetworkReplayStreamer::ReadReplayInfo ] INVALID REPLAY FILE\n");
    }
}

}  // namespace

void FLocalFileNetworkReplayStreamer::ReadReplayInfo(FStreamReader& archive, ReplayFileInfo& info,
                                                     nlohmann::json& document, std::uint32_t& resumeOffset,
                                                     bool& keyFromFile, std::vector<std::uint8_t> key) {
    info = {};
    CppUtilities::BinaryReader& reader = archive.Reader();
    try {
        info.TotalDataSizeInBytes = static_cast<std::int64_t>(reader.remaining());
        reader.clear();
        reader.seekg(0);
        if (info.TotalDataSizeInBytes == 0) ThrowContainerFailure("The Replay file had no data in it.\n");
        if (ReadInformationBlock(archive, info, keyFromFile, std::move(key))) {
            AsObject(document)["ReplayFileMeta"] = FileMeta(info);
            if (resumeOffset != 0) reader.seekg(resumeOffset);
            ReadChunkTable(archive, info);
        }
        Validate(info, resumeOffset);
    } catch (const std::ios_base::failure&) {
        ThrowContainerFailure(reader.failureText());
    }
}

}  // namespace ue4
