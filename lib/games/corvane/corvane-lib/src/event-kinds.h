// The kinds of event that the document shows. Each kind has a table: its name, and its members with their
// types and places in the payload. A payload may be longer than its fields.
//
// "AthenaMatchStats" (the player's figures at the end of the match) and "AthenaMatchTeamStats" (the team's
// place) have 4-byte fields at fixed places.
//
// "playerElim", an elimination or a knock-down:
//
//     length N                int32, then N bytes that are not read
//     8 bytes                 not read
//     eliminated's position   float32 X, Y, Z
//     28 bytes                not read
//     eliminator's position   float32 X, Y, Z
//     12 bytes                not read
//     eliminated player       a type byte, then the id that it selects
//     eliminator              likewise
//     damage type             1 byte
//     knocked                 uint32, 1 if the player was only knocked down
//
// Ids by type: 3, an unnamed bot, no bytes; 16, a named bot, a string; 17, a player with an account, one byte
// that is not read, then 16 bytes; any other type, no bytes. Fields missing from a short payload read 0 or
// "".
#pragma once

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "games/corvane/corvane-lib/src/event-text.h"
#include "games/corvane/corvane-lib/src/replay-facts.h"
#include "games/corvane/corvane-lib/src/ue4/replay-info.h"

namespace orvel::corvane {

struct EventKind;

// Returns the kind that the event's metadata names, else the kind that its group names, else null.
const EventKind* FindEventKind(const ue4::FLocalFileEventInfo& info);

std::string_view NameOf(const EventKind& kind);

// The names of the kinds that each whole match has and this replay does not.
std::vector<std::string_view> MissingStatistics(const ue4::ReplayFileInfo& info);

// Writes one event from its decrypted payload, and appends the names of its bots to botNames unless that is
// null. Returns false, after a line on standard output, if the kind has fixed places and the payload is too
// short. Throws ReplayException for an impossible string length.
bool WriteEvent(const EventKind& kind, const ue4::FLocalFileEventInfo& info,
                std::span<const std::uint8_t> payload, EventText& text, std::vector<BotName>* botNames);

}  // namespace orvel::corvane
