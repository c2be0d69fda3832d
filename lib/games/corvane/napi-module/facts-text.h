// What a reading knows beside the document, as JSON text.
//
//     end        "complete"  the table of chunks ends with the file
//                "cut"       the file ends within a chunk, or its table cannot be read on
//                "live"      the file says that the game is still recording
//                "failed"    reading failed, and not because the file ends too early
//     fileBytes  the file's size
//     cutAt      where the chunk begins that the file does not hold as a whole; null: none
//     failure    { code, reason } of what a salvaged document was read in spite of; else null
//     skipped    [{ name, count, reason }] of events that the document lacks; reason: "undecryptable",
//                "tooShort", "unknown", "broken"; name: the kind's, of an unknown one its group and metadata
//     warnings   what else is missing or unusual, a text each
//     texts      { FriendlyName, branch, levels, GameSpecificData, names } as the file has them, with their
//                whitespace; names: [position in "events", "killedBot" or "killerBot", text] of named bots
#pragma once

#include <optional>
#include <string>

#include "games/corvane/corvane-lib/src/replay-parser.h"
#include "games/corvane/napi-module/replay-failure.h"

namespace orvel::corvane {

// In UTF-8; what is not UTF-8 in the file is U+FFFD here.
std::string FactsText(const ReplayParser& parser, const std::optional<ReadFailure>& failure);

}  // namespace orvel::corvane
