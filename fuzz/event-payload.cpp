// The payload of one event. Settings: 1 byte, which event.
#include "fuzz-target.h"
#include "games/corvane/corvane-lib/src/event-handlers.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace orvel::corvane;
    fuzz::Settings settings({data, size});
    const std::uint32_t kind = settings.Take(1) % 3;
    fuzz::ExactBlock payload(settings.Rest());
    nlohmann::json event;
    fuzz::ReadsOrFails([&] {
        if (kind == 0) {
            fuzz::Require(ReadMatchStats(payload.Span(), event) == (payload.size() >= 48), "48 bytes do");
        } else if (kind == 1) {
            fuzz::Require(ReadMatchTeamStats(payload.Span(), event) == (payload.size() >= 12), "12 bytes do");
        } else {
            ReadElimination(payload.Span(), event);
            fuzz::Require(event.size() == 11, "an elimination has all its members");
        }
        event.dump();
    });
    return 0;
}
