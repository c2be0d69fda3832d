// The tables of the kinds of event, and the functions that read and write events by these tables.
#include "games/corvane/corvane-lib/src/event-kinds.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <string>
#include <utility>

#include "games/corvane/corvane-lib/src/ue4/util/ue4-binary-streams.h"
#include "util/byte-order.h"
#include "util/console.h"

namespace orvel::corvane {

// One member of an event: its key, its type, and the place of its value.
struct EventMember {
    enum Type : std::uint8_t { Name, Times, Float, UInt32, Byte, IsOne, Account, Bot };

    std::string_view name;
    Type type;
    std::size_t place = 0;  // index of its first byte in EventValues::numbers; Account, Bot: index in players
    MemberKey key{name};
};

namespace {

// Adds the two members that every event has, and sorts all by key, which is the document's order.
template <std::size_t Count>
constexpr auto Members(const EventMember (&own)[Count]) {
    static_assert(Count + 2 <= EventText::kMostMembers);
    std::array<EventMember, Count + 2> all{EventMember{"evtName", EventMember::Name},
                                           EventMember{"eventMeta", EventMember::Times}};
    std::copy(own, own + Count, all.begin() + 2);
    std::sort(all.begin(), all.end(), [](const auto& a, const auto& b) { return a.key < b.key; });
    return all;
}

constexpr auto kMatchStats = Members({
    {"accuracy", EventMember::Float, 4},
    {"assists", EventMember::UInt32, 8},
    {"kills", EventMember::UInt32, 12},
    {"weapon_damage", EventMember::UInt32, 16},
    {"other_damage", EventMember::UInt32, 20},
    {"revives", EventMember::UInt32, 24},
    {"damage_taken", EventMember::UInt32, 28},
    {"damage_to_structures", EventMember::UInt32, 32},
    {"materials_gathered", EventMember::UInt32, 36},
    {"materials_used", EventMember::UInt32, 40},
    {"total_traveled", EventMember::UInt32, 44},
});

constexpr auto kMatchTeamStats = Members({
    {"finalRanking", EventMember::UInt32, 4},
    {"totalPlayers", EventMember::UInt32, 8},
});

constexpr auto kElimination = Members({
    {"killedX", EventMember::Float, 0},
    {"killedY", EventMember::Float, 4},
    {"killedZ", EventMember::Float, 8},
    {"killerX", EventMember::Float, 12},
    {"killerY", EventMember::Float, 16},
    {"killerZ", EventMember::Float, 20},
    {"damageType", EventMember::Byte, 24},
    {"knocked", EventMember::IsOne, 25},
    {"killed", EventMember::Account, 0},
    {"killedBot", EventMember::Bot, 0},
    {"killer", EventMember::Account, 1},
    {"killerBot", EventMember::Bot, 1},
});

}  // namespace

struct EventKind {
    std::string_view name;
    std::span<const EventMember> members;
    // Only for a payload with fixed places: the fewest bytes it may have, and the name of its reader in lines
    // on standard output.
    std::size_t payloadBytes = 0;
    const char* reader = nullptr;
    bool isInEachMatch = false;  // a match without one gets a warning
    // May be a row (event-text.h). One kind only: client/event-rows.js takes each row for an elimination, and
    // its values by their numbers in the order of the keys.
    bool mayBeRow = false;
};

namespace {

// A statistics event is a row here and a table of members above.
constexpr EventKind kKinds[] = {
    {.name = "playerElim", .members = kElimination, .mayBeRow = true},
    {"AthenaMatchStats", kMatchStats, 48, "ReadMatchStats", true},
    {"AthenaMatchTeamStats", kMatchTeamStats, 12, "ReadMatchTeamStats", true},
};

constexpr std::uint8_t kUnnamedBot = 3;
constexpr std::uint8_t kNamedBot = 16;
constexpr std::uint8_t kAccount = 17;

struct Player {
    std::uint8_t type = 0;
    bool hasAccount = false;
    std::array<std::uint8_t, 16> account{};
    std::string name;  // as the file has it
};

// The values of an event. numbers is the payload itself; for an elimination, what ReadElimination has put
// together.
struct EventValues {
    std::span<const std::uint8_t> numbers;
    std::array<Player, 2> players;  // the eliminated one and the eliminator
};

constexpr std::size_t kEliminationNumbers = 29;

void ReadPlayer(ue4::PayloadReader& reader, Player& player) {
    player.type = reader.ReadByte();
    if (player.type == kNamedBot) {
        reader.ReadStoredString(player.name);
    } else if (player.type == kAccount) {
        reader.Skip(1);
        const std::span<const std::uint8_t> account = reader.ReadBytes(player.account.size());
        std::ranges::copy(account, player.account.begin());
        player.hasAccount = !account.empty();
    }
}

// Reads the fields in order. Fields that the payload does not hold stay 0.
void ReadElimination(std::span<const std::uint8_t> payload, std::span<std::uint8_t> numbers,
                     std::array<Player, 2>& players) {
    ue4::PayloadReader reader(payload);
    const auto readNumber = [&](std::size_t place, std::size_t bytes) {
        std::ranges::copy(reader.ReadBytes(bytes), &numbers[place]);
    };
    // A negative length becomes a length that no payload has.
    reader.Skip(static_cast<std::uint64_t>(std::int64_t{reader.ReadInt32()}));
    reader.Skip(8);
    for (std::size_t place = 0; place < 12; place += 4) readNumber(place, 4);
    reader.Skip(28);
    for (std::size_t place = 12; place < 24; place += 4) readNumber(place, 4);
    reader.Skip(12);
    for (Player& player : players) ReadPlayer(reader, player);
    readNumber(24, 1);
    readNumber(25, 4);
}

std::string DocumentName(const Player& player) {
    if (player.type == kUnnamedBot) return "Unnamed Bot";
    return ue4::WithoutWhitespace(player.name);
}

// In the document, an empty name may also be that of an unknown player.
bool IsExactInDocument(const Player& player) {
    return !player.name.empty() && DocumentName(player) == player.name;
}

void AddBotNames(const std::array<Player, 2>& players, std::size_t event, std::vector<BotName>& botNames) {
    constexpr std::array kKeys = {"killedBot", "killerBot"};
    for (std::size_t i = 0; i < players.size(); ++i) {
        const Player& player = players[i];
        if (player.type == kNamedBot && !IsExactInDocument(player))
            botNames.push_back({event, kKeys[i], player.name});
    }
}

// A player has two keys. Writes the member only if its key is the one for the player's type.
void WritePlayer(const EventMember& member, const Player& player, EventText& text) {
    const bool isAccount = player.type == kAccount;
    if (isAccount != (member.type == EventMember::Account)) return text.Omit();
    if (isAccount) {
        text.WriteHex(member.key, std::span(player.account).first(player.hasAccount ? 16U : 0U));
    } else {
        text.Write(member.key, DocumentName(player));
    }
}

void WriteMember(const EventMember& member, const EventKind& kind, const ue4::FLocalFileEventInfo& info,
                 const EventValues& values, EventText& text) {
    switch (member.type) {
        case EventMember::Name:
            return text.Write(member.key, kind.name);
        case EventMember::Times:
            return text.WriteTimes(info.Time1, info.Time2);
        case EventMember::Float:
            return text.Write(
                member.key,
                std::bit_cast<float>(util::LoadLittleEndian<std::uint32_t>(&values.numbers[member.place])));
        case EventMember::UInt32:
            return text.Write(member.key,
                              util::LoadLittleEndian<std::uint32_t>(&values.numbers[member.place]));
        case EventMember::Byte:
            return text.Write(member.key, std::uint32_t{values.numbers[member.place]});
        case EventMember::IsOne:
            return text.Write(member.key,
                              util::LoadLittleEndian<std::uint32_t>(&values.numbers[member.place]) == 1);
        case EventMember::Account:
        case EventMember::Bot:
            return WritePlayer(member, values.players[member.place], text);
    }
}

bool HoldsLayout(const EventKind& kind, std::span<const std::uint8_t> payload) {
    if (payload.size() >= kind.payloadBytes) return true;
    util::WriteConsole("[ orvel::corvane::" + std::string(kind.reader) + " ] Skipping event: payload of " +
                       std::to_string(payload.size()) + " bytes, " + std::to_string(kind.payloadBytes) +
                       " expected.\n");
    return false;
}

}  // namespace

const EventKind* FindEventKind(const ue4::FLocalFileEventInfo& info) {
    for (const std::string* name : {&info.Metadata, &info.Group}) {
        const auto* kind = std::ranges::find(kKinds, *name, &EventKind::name);
        if (kind != std::end(kKinds)) return kind;
    }
    return nullptr;
}

std::string_view NameOf(const EventKind& kind) { return kind.name; }

std::vector<std::string_view> MissingStatistics(const ue4::ReplayFileInfo& info) {
    std::vector<std::string_view> names;
    for (const EventKind& kind : kKinds) {
        const auto isOfKind = [&](const auto& event) { return FindEventKind(event) == &kind; };
        if (kind.isInEachMatch && std::ranges::none_of(info.Events, isOfKind)) names.push_back(kind.name);
    }
    return names;
}

bool WriteEvent(const EventKind& kind, const ue4::FLocalFileEventInfo& info,
                std::span<const std::uint8_t> payload, EventText& text, std::vector<BotName>* botNames) {
    std::array<std::uint8_t, kEliminationNumbers> numbers{};
    EventValues values{payload, {}};
    if (kind.payloadBytes != 0) {
        if (!HoldsLayout(kind, payload)) return false;
    } else {
        values.numbers = numbers;
        ReadElimination(payload, numbers, values.players);
        if (botNames != nullptr) AddBotNames(values.players, text.EventCount(), *botNames);
    }
    text.BeginEvent(kind.mayBeRow);
    for (const EventMember& member : kind.members) WriteMember(member, kind, info, values, text);
    text.EndEvent();
    return true;
}

}  // namespace orvel::corvane
