// The container of a replay file: its information block and its table of chunks.
//
// Information block, from offset 0 (encodings as in ue4-binary-streams.h):
//
//     MagicNumber     uint32   0x1CA2E27F
//     FileVersion     uint32
//     LengthInMS      uint32
//     NetworkVersion  uint32
//     Changelist      uint32
//     FriendlyName    string
//     bIsLive         boolean
//     Timestamp       uint64       FileVersion >= 3
//     bCompressed     boolean      FileVersion >= 2
//     bEncrypted      boolean      FileVersion >= 6
//     EncryptionKey   byte array   FileVersion >= 6
//
// The chunks follow, one behind the other, up to the end of the file:
//
//     ChunkType    uint32   0 header, 1 and 2 network data and checkpoints, 3 event, 0xFFFFFFFF cleared
//     SizeInBytes  int32    of the payload
//     payload
//
// The payload of an event chunk begins with the event's description:
//
//     Id           string
//     Group        string
//     Metadata     string
//     Time1        uint32
//     Time2        uint32
//     SizeInBytes  int32    of the event's data, which follows
#pragma once

#include <cstdint>
#include <vector>

#include <nlohmann/json.hpp>

#include "games/corvane/corvane-lib/src/ue4/replay-info.h"
#include "games/corvane/corvane-lib/src/ue4/util/ue4-binary-streams.h"

namespace ue4 {

// What one parse of a growing file leaves for the next. These defaults are for the first parse.
struct ResumeState {
    // Where the scan of the table starts; 0: at the first chunk. A parse sets it to the low 32 bits of the
    // file's size.
    std::uint32_t Offset = 0;
    // The file has had a key. From then on the file's key is used even if it is all zeros.
    bool IsKeyFromFile = false;
};

class FLocalFileNetworkReplayStreamer {
  public:
    // Both must outlive this object.
    FLocalFileNetworkReplayStreamer(FStreamReader& archive, nlohmann::json& document)
        : m_archive(archive), m_document(document) {}

    // Reads the container from the archive's start and adds "ReplayFileMeta" to the document. Of payloads
    // only event descriptions are read. A file with another magic number is no failure: it has no chunks and
    // gets no "ReplayFileMeta".
    //
    // key: the caller's. It is used if FileVersion >= 6 and the file has no key of its own.
    //
    // The table ends with the file, even in the middle of a chunk (the game may still be writing it). It also
    // ends at the first chunk that cannot belong to it: a chunk of negative size, a chunk that cannot be
    // sought past, or an event with which all events together exceed the file's size by more than a mebibyte.
    //
    // A broken container throws a char* to a static C string: what is wrong, or the stream's failure text if
    // the information block is cut short. ReplayException passes through. What was read before stays.
    void ReadReplayInfo(std::vector<std::uint8_t> key, ResumeState& resume);

    // The container as read; defaults before ReadReplayInfo.
    const ReplayFileInfo& Info() const { return m_info; }

  private:
    // Called at the start of a chunk's payload. Returns false if the chunk cannot belong to the table.
    using PayloadStep = bool (FLocalFileNetworkReplayStreamer::*)(const ReplayChunkInfo& chunk);
    struct ChunkType {
        std::uint32_t value;
        PayloadStep step;
    };
    static const ChunkType kChunkTypes[];

    bool ReadInformationBlock(std::vector<std::uint8_t> key, ResumeState& resume);
    void SettleKey(std::vector<std::uint8_t> key, ResumeState& resume);

    void ReadChunkTable();
    ReplayChunkInfo ReadChunkHead(std::int64_t offset);
    bool ReadChunkPayload(const ReplayChunkInfo& chunk);
    bool NoteHeader(const ReplayChunkInfo& chunk);
    bool ReadEvent(const ReplayChunkInfo& chunk);
    bool ReportCleared(const ReplayChunkInfo& chunk);

    void Validate(ResumeState& resume);

    FStreamReader& m_archive;
    nlohmann::json& m_document;
    ReplayFileInfo m_info;
    std::int64_t m_eventBytes = 0;  // of all events so far, with their descriptions
};

}  // namespace ue4
