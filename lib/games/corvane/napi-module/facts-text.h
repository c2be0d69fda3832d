// What a reading learns besides the document, as JSON text.
//
//     end        "complete"  the table of chunks ends with the file
//                "cut"       the file ends inside a chunk, or the table could not be read to its end
//                "live"      the file says that the game is still recording
//                "failed"    reading failed, and not because the file ends too early
//     fileBytes  the file's size
//     cutAt      where the chunk begins that is not wholly in the file; null: none
//     failure    { code, reason } of the failure before a salvage; else null
//     skipped    [{ name, count, reason }] of events that the document lacks; reason: "undecryptable",
//                "tooShort", "unknown", "broken"; name: the kind's; if unknown, group and metadata
//     warnings   what else is missing or unusual, a text each
//     texts      { FriendlyName, branch, levels, GameSpecificData, names } as the file has them, with their
//                whitespace; names: [position in "events", "killedBot" or "killerBot", text] of named bots
//                whose name the document changes or leaves empty
#pragma once

#include <optional>
#include <string>

#include "games/corvane/corvane-lib/src/replay-parser.h"
#include "games/corvane/napi-module/replay-failure.h"

namespace orvel::corvane {

// The text is UTF-8. Bytes of the file that are not UTF-8 become U+FFFD.
std::string FactsText(const ReplayParser& parser, const std::optional<ReadFailure>& failure);

}  // namespace orvel::corvane
