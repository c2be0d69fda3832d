// The network demo header: the payload of a replay's header chunk. It is neither encrypted nor compressed.
//
//     Magic                         uint32   0x2CF5A13D
//     Version                       uint32   5 at least
//     NetworkChecksum               uint32
//     EngineNetworkProtocolVersion  uint32   23 at most
//     GameNetworkProtocolVersion    uint32
//     Guid                          16 bytes                         Version >= 12
//     EngineVersion                 12 bytes (below), string Branch  Version >= 11
//     Changelist                    int32                            Version < 11
//     level name                    string                           Version < 6
//     level names                   list of string                   Version 6
//     level names and times         list of string, uint32           Version >= 7
//     Flags                         uint32                           Version >= 9
//     GameSpecificData              list of string
//
// A list is an int32 count, then its elements. The 12 bytes are: uint16 Major, Minor and Patch, 2 unused
// bytes, uint32 Changelist.
#pragma once

#include <cstdint>
#include <deque>
#include <string>

#include <nlohmann/json.hpp>

#include "games/corvane/corvane-lib/src/guid.h"
#include "games/corvane/corvane-lib/src/ue4/util/ue4-binary-streams.h"

namespace orvel::corvane {

// Strings are as stored. The document has them without whitespace.
struct EngineVersion {
    std::uint16_t Major = 0;
    std::uint16_t Minor = 0;
    std::uint16_t Patch = 0;
    std::uint32_t Changelist = 0;
    std::string Branch;
};

struct LevelNameAndTime {
    std::string Name;
    std::uint32_t Time = 0;  // milliseconds into the replay
};

struct NetworkDemoHeader {
    std::uint32_t Magic = 0;
    std::uint32_t Version = 0;
    std::uint32_t NetworkChecksum = 0;
    std::uint32_t EngineNetworkProtocolVersion = 0;
    std::uint32_t GameNetworkProtocolVersion = 0;
    corvane::Guid Guid;
    corvane::EngineVersion EngineVersion;
    // Not a vector: a vector that grows takes up to three times the memory for a moment.
    std::deque<LevelNameAndTime> LevelNamesAndTimes;
    std::uint32_t Flags = 0;
    std::deque<std::string> GameSpecificData;
};

// Reads the header at the archive's position. Returns an empty string, or what is wrong with the magic number
// or a version; the fields before it are then already read. A list ends with its count or with the data.
// Memory follows the data, never the count.
std::string ReadNetworkDemoHeader(ue4::FStreamReader& archive, NetworkDemoHeader& header);

// The document's "header".
nlohmann::json HeaderObject(const NetworkDemoHeader& header);

}  // namespace orvel::corvane
