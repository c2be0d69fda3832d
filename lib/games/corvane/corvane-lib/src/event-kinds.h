// The kinds of event that the document shows, one table for each: its name, and its members with their types
// and places in the payload. A payload may end with any number of bytes of padding.
//
// "AthenaMatchStats" (the player's end-of-match statistics) and "AthenaMatchTeamStats" (the team's placement)
// are words at fixed places.
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
// Ids by type: 3 an unnamed bot, nothing follows; 16 a named bot, a string; 17 a player, one byte that is not
// read and 16 bytes; any other: nothing follows. What a short payload does not hold is 0 or "".
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

// The kind of an event: that of its metadata if it names one, else that of its group. Null: neither does.
const EventKind* FindEventKind(const ue4::FLocalFileEventInfo& info);

std::string_view NameOf(const EventKind& kind);

// The names of the kinds of statistics of which there is no event. A match has one of each at its end.
std::vector<std::string_view> MissingStatistics(const ue4::ReplayFileInfo& info);

// Writes the event whose decrypted payload this is, and adds the names of its bots (if botNames is not null).
// False, after a line on standard output, if the payload is too short for a kind with fixed places. Throws
// ReplayException for a string whose length cannot be.
bool WriteEvent(const EventKind& kind, const ue4::FLocalFileEventInfo& info,
                std::span<const std::uint8_t> payload, EventText& text, std::vector<BotName>* botNames);

}  // namespace orvel::corvane
