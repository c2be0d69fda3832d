// Reads the network demo header and makes the document's "header".
#include "games/corvane/corvane-lib/src/header-chunk.h"

#include <array>
#include <utility>

#include "games/corvane/corvane-lib/src/ue4/util/json-object.h"
#include "util/byte-order.h"

namespace orvel::corvane {
namespace {

constexpr std::uint32_t NETWORK_DEMO_MAGIC = 0x2CF5A13D;
constexpr std::uint32_t MIN_NETWORK_DEMO_VERSION = 5;
constexpr std::uint32_t HISTORY_ENGINENETVERSION_LATEST = 23;

// The first Version that has each field.
constexpr std::uint32_t kVersionLevelList = 6;
constexpr std::uint32_t kVersionLevelTimes = 7;
constexpr std::uint32_t kVersionFlags = 9;
constexpr std::uint32_t kVersionEngineVersion = 11;
constexpr std::uint32_t kVersionGuid = 12;

// Reads a list, element by element, until the data runs out. So a broken element is reported rather than an
// impossible count.
template <typename ReadElement>
void ReadList(ue4::FStreamReader& archive, ReadElement readElement) {
    const std::int32_t count = archive.ReadInt32();
    if (count < 0) return archive.Reader().runOut();
    for (std::int32_t i = 0; i < count && !archive.Reader().fail(); ++i) readElement();
}

EngineVersion ReadEngineVersion(ue4::FStreamReader& archive) {
    std::array<char, 12> block{};
    archive.Reader().read(block.data(), block.size());
    EngineVersion version;
    version.Major = util::LoadLittleEndian<std::uint16_t>(&block[0]);
    version.Minor = util::LoadLittleEndian<std::uint16_t>(&block[2]);
    version.Patch = util::LoadLittleEndian<std::uint16_t>(&block[4]);
    version.Changelist = util::LoadLittleEndian<std::uint32_t>(&block[8]);
    archive.ReadStoredString(version.Branch);
    return version;
}

void ReadLevels(ue4::FStreamReader& archive, NetworkDemoHeader& header) {
    const auto readLevel = [&] {
        LevelNameAndTime level;
        archive.ReadStoredString(level.Name);
        if (header.Version >= kVersionLevelTimes) level.Time = archive.ReadUInt32();
        header.LevelNamesAndTimes.push_back(std::move(level));
    };
    if (header.Version < kVersionLevelList) {
        readLevel();
    } else {
        ReadList(archive, readLevel);
    }
}

}  // namespace

std::string ReadNetworkDemoHeader(ue4::FStreamReader& archive, NetworkDemoHeader& header) {
    header.Magic = archive.ReadUInt32();
    if (header.Magic != NETWORK_DEMO_MAGIC) return "Header.Magic != NETWORK_DEMO_MAGIC";
    header.Version = archive.ReadUInt32();
    if (header.Version < MIN_NETWORK_DEMO_VERSION) {
        return "Header.Version < MIN_NETWORK_DEMO_VERSION. Header.Version: " +
               std::to_string(header.Version) +
               ", MIN_NETWORK_DEMO_VERSION: " + std::to_string(MIN_NETWORK_DEMO_VERSION);
    }
    header.NetworkChecksum = archive.ReadUInt32();
    header.EngineNetworkProtocolVersion = archive.ReadUInt32();
    header.GameNetworkProtocolVersion = archive.ReadUInt32();
    if (header.EngineNetworkProtocolVersion > HISTORY_ENGINENETVERSION_LATEST) {
        return "EngineNetworkProtocolVersion != HISTORY_ENGINENETVERSION_LATEST";
    }
    if (header.Version >= kVersionGuid) header.Guid = ReadGuid(archive);
    if (header.Version >= kVersionEngineVersion) {
        header.EngineVersion = ReadEngineVersion(archive);
    } else {
        header.EngineVersion.Changelist = static_cast<std::uint32_t>(archive.ReadInt32());
    }
    ReadLevels(archive, header);
    if (header.Version >= kVersionFlags) header.Flags = archive.ReadUInt32();
    ReadList(archive, [&] { archive.ReadStoredString(header.GameSpecificData.emplace_back()); });
    return {};
}

nlohmann::json HeaderObject(const NetworkDemoHeader& header) {
    ue4::Document owner(nlohmann::json::object());
    nlohmann::json& object = owner.json;
    object["magic"] = header.Magic;
    object["NetworkVersion"] = header.Version;
    object["NetworkChecksum"] = header.NetworkChecksum;
    object["EngineNetworkVersion"] = header.EngineNetworkProtocolVersion;
    object["GameNetworkProtocolVersion"] = header.GameNetworkProtocolVersion;
    object["guid"] = FormatGuid(header.Guid);
    nlohmann::json& engine = ue4::AsObject(object["EngineVersion"]);
    engine["branch"] = ue4::WithoutWhitespace(header.EngineVersion.Branch);
    engine["major"] = header.EngineVersion.Major;
    engine["minor"] = header.EngineVersion.Minor;
    engine["patch"] = header.EngineVersion.Patch;
    engine["changelist"] = header.EngineVersion.Changelist;
    nlohmann::json& levels = object["levels"] = nlohmann::json::array();
    for (const LevelNameAndTime& level : header.LevelNamesAndTimes)
        levels.push_back(ue4::WithoutWhitespace(level.Name));
    nlohmann::json& gameData = object["GameSpecificData"] = nlohmann::json::array();
    for (const std::string& data : header.GameSpecificData) gameData.push_back(ue4::WithoutWhitespace(data));
    return std::move(owner.json);
}

}  // namespace orvel::corvane
