// Event payloads that are cut. What whole ones hold is tests/js/events.test.js's business.
#include "games/corvane/corvane-lib/src/event-handlers.h"

#include <algorithm>

#include <gmock/gmock.h>

#include "support/replay-builder.h"

namespace {

using namespace corvane_test;
using nlohmann::json;
using testing::StartsWith;

json EliminationOf(const Bytes& payload) {
    json event;
    orvel::corvane::ReadElimination(payload, event);
    return event;
}

TEST(Elimination, what_a_short_payload_does_not_hold_is_zero) {
    const Bytes whole = Elimination{}.Build();
    const json full = EliminationOf(whole);
    const char* const inFileOrder[] = {"killedX", "killedY", "killedZ",   "killerX",    "killerY",
                                       "killerZ", "killed",  "killerBot", "damageType", "knocked"};
    std::size_t before = 0;
    for (std::size_t length = 0; length <= whole.size(); ++length) {
        SCOPED_TRACE(length);
        json event = EliminationOf(Prefix(whole, length));
        EXPECT_EQ(event.size(), full.size());
        if (event.contains("killedBot")) event["killed"] = event["killedBot"];  // its type is not there yet
        const auto isRead = [&](const char* key) { return event[key] == full[key]; };
        const auto end = std::ranges::find_if_not(inFileOrder, isRead);
        for (auto key = end; key != std::end(inFileOrder); ++key)
            EXPECT_TRUE(event[*key] == 0 || event[*key] == "" || event[*key] == false) << *key;
        const auto count = static_cast<std::size_t>(end - inFileOrder);
        EXPECT_GE(count, before);
        before = count;
    }
    EXPECT_EQ(before, std::size(inFileOrder));
}

TEST(Statistics, are_left_out_when_the_payload_does_not_hold_them) {
    const struct {
        bool (*read)(std::span<const std::uint8_t>, json&);
        const char* begin;
        std::size_t layoutBytes;
    } cases[] = {
        {orvel::corvane::ReadMatchStats, "[ orvel::corvane::ReadMatchStats ] ", 48},
        {orvel::corvane::ReadMatchTeamStats, "[ orvel::corvane::ReadMatchTeamStats ] ", 12},
    };
    for (const auto& c : cases) {
        for (std::size_t length = 0; length < c.layoutBytes; ++length) {
            const Bytes payload(length, 1);  // of its own size, so that a sanitizer sees every byte too many
            json event;
            testing::internal::CaptureStdout();
            EXPECT_FALSE(c.read(payload, event));
            EXPECT_TRUE(event.is_null());
            EXPECT_THAT(testing::internal::GetCapturedStdout(), StartsWith(c.begin));
        }
    }
}

}  // namespace
