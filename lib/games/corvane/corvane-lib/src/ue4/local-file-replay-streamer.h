// The container of a replay file: its information block and chunk table.
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
// The chunk table (chunk-table.h) follows it and ends with the file.
#pragma once

#include <cstdint>
#include <vector>

#include <nlohmann/json.hpp>

#include "games/corvane/corvane-lib/src/ue4/replay-info.h"
#include "games/corvane/corvane-lib/src/ue4/util/ue4-binary-streams.h"

namespace ue4 {

class FLocalFileNetworkReplayStreamer {
  public:
    // Reads the container from the archive's start into info and adds "ReplayFileMeta" to the document. No
    // payload is read. A file with another magic number is no failure: it has no chunks and gets no
    // "ReplayFileMeta".
    //
    //     resumeOffset   in: where the scan of the table starts, 0 for the table's beginning; out: the low 32
    //                    bits of the file's size. A later call on a file that has grown thus scans only what
    //                    was added.
    //     keyFromFile    set once a file holds a key; while it is set, the file's key is taken even if it is
    //                    all zeros
    //     key            the caller's key; in effect (FileVersion >= 6) unless the file's own key is
    //
    // A broken container throws a plain C string of static duration (type char*): what is wrong, or the
    // stream's failure text if the information block is cut short. ReplayException passes. What was read
    // before stays.
    void ReadReplayInfo(FStreamReader& archive, ReplayFileInfo& info, nlohmann::json& document,
                        std::uint32_t& resumeOffset, bool& keyFromFile, std::vector<std::uint8_t> key);
};

}  // namespace ue4
