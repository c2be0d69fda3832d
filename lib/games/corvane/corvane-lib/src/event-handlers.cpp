// Decoding of the three kinds of event.
#include "games/corvane/corvane-lib/src/event-handlers.h"

#include <bit>
#include <string>

#include "games/corvane/corvane-lib/src/guid.h"
#include "games/corvane/corvane-lib/src/ue4/util/json-object.h"
#include "games/corvane/corvane-lib/src/ue4/util/ue4-binary-streams.h"
#include "util/console.h"

namespace orvel::corvane {
namespace {

std::uint32_t WordAt(std::span<const std::uint8_t> payload, std::size_t offset) {
    return payload[offset] | static_cast<std::uint32_t>(payload[offset + 1]) << 8 |
           static_cast<std::uint32_t>(payload[offset + 2]) << 16 |
           static_cast<std::uint32_t>(payload[offset + 3]) << 24;
}

bool HoldsLayout(std::span<const std::uint8_t> payload, std::size_t layoutBytes, const char* function) {
    if (payload.size() >= layoutBytes) return true;
    util::WriteConsole("[ orvel::corvane::" + std::string(function) + " ] Skipping event: payload of " +
                       std::to_string(payload.size()) + " bytes, " + std::to_string(layoutBytes) +
                       " expected.\n");
    return false;
}

struct Position {
    float X = 0;
    float Y = 0;
    float Z = 0;
};

Position ReadPosition(ue4::FStreamReader& archive) {
    Position position;
    position.X = archive.ReadFloat();
    position.Y = archive.ReadFloat();
    position.Z = archive.ReadFloat();
    return position;
}

constexpr std::uint8_t kUnnamedBot = 3;
constexpr std::uint8_t kNamedBot = 16;
constexpr std::uint8_t kPlayer = 17;

struct PlayerId {
    std::uint8_t type = 0;
    std::string text;
};

PlayerId ReadPlayerId(ue4::FStreamReader& archive) {
    PlayerId id;
    id.type = archive.ReadByte();
    if (id.type == kUnnamedBot) {
        id.text = "Unnamed Bot";
    } else if (id.type == kNamedBot) {
        archive.ReadString(id.text);
    } else if (id.type == kPlayer) {
        archive.Reader().skip(1);
        const Guid player = ReadGuid(archive);
        if (!archive.Reader().fail()) id.text = FormatGuid(player);
    }
    return id;
}

// The keys of one of the two participants, in the document's order.
struct ParticipantKeys {
    const char* player;
    const char* bot;
    const char* x;
    const char* y;
    const char* z;
};

constexpr ParticipantKeys kKilled{"killed", "killedBot", "killedX", "killedY", "killedZ"};
constexpr ParticipantKeys kKiller{"killer", "killerBot", "killerX", "killerY", "killerZ"};

void AppendMember(nlohmann::json::object_t& members, const char* key, nlohmann::json value) {
    members.emplace_hint(members.end(), key, std::move(value));
}

void AppendParticipant(nlohmann::json::object_t& members, const ParticipantKeys& keys,
                       const Position& position, PlayerId id) {
    AppendMember(members, id.type == kPlayer ? keys.player : keys.bot, std::move(id.text));
    AppendMember(members, keys.x, double{position.X});
    AppendMember(members, keys.y, double{position.Y});
    AppendMember(members, keys.z, double{position.Z});
}

}  // namespace

bool ReadMatchStats(std::span<const std::uint8_t> payload, nlohmann::json& event) {
    if (!HoldsLayout(payload, 48, "ReadMatchStats")) return false;
    ue4::AsObject(event)["evtName"] = "AthenaMatchStats";
    event["accuracy"] = double{std::bit_cast<float>(WordAt(payload, 4))};
    event["assists"] = WordAt(payload, 8);
    event["kills"] = WordAt(payload, 12);
    event["weapon_damage"] = WordAt(payload, 16);
    event["other_damage"] = WordAt(payload, 20);
    event["revives"] = WordAt(payload, 24);
    event["damage_taken"] = WordAt(payload, 28);
    event["damage_to_structures"] = WordAt(payload, 32);
    event["materials_gathered"] = WordAt(payload, 36);
    event["materials_used"] = WordAt(payload, 40);
    event["total_traveled"] = WordAt(payload, 44);
    return true;
}

bool ReadMatchTeamStats(std::span<const std::uint8_t> payload, nlohmann::json& event) {
    if (!HoldsLayout(payload, 12, "ReadMatchTeamStats")) return false;
    ue4::AsObject(event)["evtName"] = "AthenaMatchTeamStats";
    event["finalRanking"] = WordAt(payload, 4);
    event["totalPlayers"] = WordAt(payload, 8);
    return true;
}

void ReadElimination(std::span<const std::uint8_t> payload, nlohmann::json& event) {
    ue4::FDataReader archive(payload.data(), payload.size(), CppUtilities::LittleEndian);
    CppUtilities::BinaryReader& reader = archive.Reader();
    // A negative length becomes one that no payload holds.
    reader.skip(static_cast<std::uint64_t>(std::int64_t{archive.ReadInt32()}));
    reader.skip(8);
    const Position killed = ReadPosition(archive);
    reader.skip(28);
    const Position killer = ReadPosition(archive);
    reader.skip(12);
    PlayerId killedId = ReadPlayerId(archive);
    PlayerId killerId = ReadPlayerId(archive);
    const std::uint8_t damageType = archive.ReadByte();
    const bool knocked = archive.ReadUInt32() == 1;

    // In the order of the keys, so that each finds its place at the end at once.
    auto& members = ue4::AsObject(event).get_ref<nlohmann::json::object_t&>();
    AppendMember(members, "damageType", damageType);
    AppendMember(members, "evtName", "playerElim");
    AppendParticipant(members, kKilled, killed, std::move(killedId));
    AppendParticipant(members, kKiller, killer, std::move(killerId));
    AppendMember(members, "knocked", knocked);
}

}  // namespace orvel::corvane
