// The payload of one event. Settings: 1 byte, which kind of event; from 128 on it may be a row.
#include <array>

#include "fuzz-target.h"
#include "games/corvane/corvane-lib/src/event-kinds.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace orvel::corvane;
    constexpr std::array kNames = {"AthenaMatchStats", "AthenaMatchTeamStats", "playerElim"};
    fuzz::Settings settings({data, size});
    ue4::FLocalFileEventInfo info;
    const auto setting = settings.Take(1);
    info.Metadata = kNames[setting % kNames.size()];
    fuzz::ExactBlock payload(settings.Rest());
    fuzz::ReadsOrFails([&] {
        EventText events;
        if (setting >= 128) events.WantRows();
        std::vector<BotName> botNames;
        const bool written = WriteEvent(*FindEventKind(info), info, payload.Span(), events, &botNames);
        std::string text = events.Take();
        fuzz::Require(text.empty() == !written, "an event is written or skipped");
        if (!written) return;
        text = "[" + text;
        text.back() = ']';  // the comma after the last event
        fuzz::Require(nlohmann::json::parse(text)[0].size() >= 4, "an event has its members");
    });
    return 0;
}
