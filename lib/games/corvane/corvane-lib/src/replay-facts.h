// What a parse learns besides the document.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace orvel::corvane {

enum class SkipReason : std::uint8_t {
    Undecryptable,
    TooShort,  // for its kind, or empty
    Unknown,   // neither its metadata nor its group names a kind
    Broken,    // reading it failed
};

// An event that the document does not show.
struct SkippedEvent {
    std::int32_t index;  // among the file's events
    SkipReason reason;
};

// A bot's name as the file has it, where the document does not say as much: it has names without whitespace,
// and unknown players without a name.
struct BotName {
    std::size_t event;     // the position in the document's "events"
    std::string_view key;  // "killedBot" or "killerBot"
    std::string text;
};

struct ReplayFacts {
    std::vector<SkippedEvent> skipped;
    std::vector<BotName> botNames;
    std::string
        headerRefusal;  // why there is a header chunk but no "header"; empty: there is one, or no chunk
};

}  // namespace orvel::corvane
