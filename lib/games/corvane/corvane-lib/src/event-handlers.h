// The payloads of the game's events, and their form in the document.
//
// Each function fills an event object, everything but its "eventMeta", from one decrypted payload. A payload
// may end with any number of bytes of padding.
#pragma once

#include <cstdint>
#include <span>

#include <nlohmann/json.hpp>

namespace orvel::corvane {

// The player's end-of-match statistics: 4 bytes that are not read, float32 accuracy, then ten uint32
// counters. False, after a line on standard output, if the payload is shorter.
bool ReadMatchStats(std::span<const std::uint8_t> payload, nlohmann::json& event);

// The team's end-of-match placement: 4 bytes that are not read, uint32 ranking, uint32 number of players.
// False, after a line on standard output, if the payload is shorter.
bool ReadMatchTeamStats(std::span<const std::uint8_t> payload, nlohmann::json& event);

// An elimination or a knock-down:
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
// read and 16 bytes; any other: nothing follows. What a short payload does not hold is 0 or "". Throws
// ReplayException for a string whose length cannot be.
void ReadElimination(std::span<const std::uint8_t> payload, nlohmann::json& event);

}  // namespace orvel::corvane
