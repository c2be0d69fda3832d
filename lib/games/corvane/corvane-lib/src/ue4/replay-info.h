// The contents of a replay's container: its information block and its table of chunks.
#pragma once

#include <cstdint>
#include <deque>
#include <string>
#include <vector>

namespace ue4 {

// One chunk of the table. Offsets are from the file's start.
struct ReplayChunkInfo {
    std::uint32_t ChunkType = 0;
    std::int32_t SizeInBytes = 0;  // of the payload, as stored: may be negative in a broken file
    std::int64_t TypeOffset = 0;   // where the chunk begins
    std::int64_t DataOffset = 0;   // where its payload begins
};

// One event: its description from the start of the chunk's payload, and where its data lies.
struct FLocalFileEventInfo {
    std::int32_t Index = 0;  // among the events, not among the chunks
    std::string Id;
    std::string Group;
    std::string Metadata;
    std::uint32_t Time1 = 0;  // milliseconds into the replay
    std::uint32_t Time2 = 0;
    std::int32_t SizeInBytes = 0;  // of the data, which lies within the file
    std::int64_t DataOffset = 0;
};

// One chunk of recorded network data: the bytes from StartOffset up to, not including, EndOffset.
struct ReplayDataChunkInfo {
    std::int32_t ChunkIndex = 0;
    std::int64_t StartOffset = 0;
    std::int64_t EndOffset = 0;
};

// All of this for one file. Fields that the file's version does not have keep their defaults.
struct ReplayFileInfo {
    std::uint32_t FileVersion = 0;
    std::uint32_t MagicNumber = 0;
    std::uint32_t LengthInMS = 0;
    std::uint32_t NetworkVersion = 0;
    std::uint32_t Changelist = 0;
    std::string FriendlyName;     // as stored, with its whitespace
    std::uint64_t Timestamp = 0;  // as the game wrote it
    std::int64_t TotalDataSizeInBytes = 0;
    bool bIsLive = false;  // the game is still recording
    bool bIsValid = false;
    bool bCompressed = false;
    bool bEncrypted = false;
    std::vector<std::uint8_t> EncryptionKey;  // the key in effect for the payloads
    std::int32_t HeaderChunkIndex = -1;       // in Chunks; -1: none
    // Where the first chunk begins that is not wholly in the file, or could not be read. Without such a
    // chunk, the file's size.
    std::int64_t TableEnd = 0;
    // In file order. Not vectors: a vector that grows takes up to three times the memory for a moment.
    std::deque<ReplayChunkInfo> Chunks;
    std::deque<FLocalFileEventInfo> Events;
    std::vector<FLocalFileEventInfo> Checkpoints;  // always empty in this reader
    std::vector<ReplayDataChunkInfo> DataChunks;   // always empty in this reader
};

}  // namespace ue4
