// The network demo header: the payload of a replay's header chunk. It is never encrypted nor compressed.
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
// A list is an int32 count, then as many elements. The 12 bytes: uint16 Major, Minor, Patch, 2 bytes without
// meaning, uint32 Changelist.
#pragma once

#include <cstdint>
#include <deque>
#include <string>

#include <nlohmann/json.hpp>

#include "games/corvane/corvane-lib/src/guid.h"
#include "games/corvane/corvane-lib/src/ue4/util/ue4-binary-streams.h"

namespace orvel::corvane {

// Strings are as stored; the document has them without their whitespace.
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
    // No vectors, which as they grow take up to three times as much for a moment.
    std::deque<LevelNameAndTime> LevelNamesAndTimes;
    std::uint32_t Flags = 0;
    std::deque<std::string> GameSpecificData;
};

// Reads the header at the archive's position. Returns what is wrong if its magic number or a version is not
// one that this reader knows, else nothing; what was read until then stays. A list is read until its elements
// or the data run out; memory is taken for what is there, never for the count.
std::string ReadNetworkDemoHeader(ue4::FStreamReader& archive, NetworkDemoHeader& header);

// The document's "header".
nlohmann::json HeaderObject(const NetworkDemoHeader& header);

}  // namespace orvel::corvane
