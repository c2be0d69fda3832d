// What the container of a replay file says: its information block and its table of chunks.
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

// One event: the description at the start of an event chunk's payload, and where the event's own data lies.
struct FLocalFileEventInfo {
    std::int32_t Index = 0;  // the position among the events, not among the chunks
    std::string Id;
    std::string Group;
    std::string Metadata;
    std::uint32_t Time1 = 0;  // milliseconds into the replay
    std::uint32_t Time2 = 0;
    std::int32_t SizeInBytes = 0;  // of the data; the data lies within the file
    std::int64_t DataOffset = 0;
};

// One chunk of recorded network data: the half-open range of bytes that it covers.
struct ReplayDataChunkInfo {
    std::int32_t ChunkIndex = 0;
    std::int64_t StartOffset = 0;
    std::int64_t EndOffset = 0;
};

// Everything above for one file. Fields that the file's version does not have keep their defaults.
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
    // Where the first chunk begins that does not lie wholly within the file, or could not be read; the file's
    // size if there is none.
    std::int64_t TableEnd = 0;
    // In file order. No vectors, which as they grow take up to three times as much for a moment.
    std::deque<ReplayChunkInfo> Chunks;
    std::deque<FLocalFileEventInfo> Events;
    std::vector<FLocalFileEventInfo> Checkpoints;  // this reader fills neither checkpoints
    std::vector<ReplayDataChunkInfo> DataChunks;   // nor data chunks
};

}  // namespace ue4
