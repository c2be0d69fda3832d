// The three kinds of event payload, whole and cut.
#include "games/corvane/corvane-lib/src/event-handlers.h"

#include <limits>

#include <gmock/gmock.h>

#include "games/corvane/corvane-lib/src/ue4/util/ue4-binary-streams.h"
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

TEST(Elimination, becomes_an_event) {
    const json expected = {{"evtName", "playerElim"},
                           {"killedX", 1.0},
                           {"killedY", 2.0},
                           {"killedZ", 3.0},
                           {"killed", "000102030405060708090a0b0c0d0e0f"},
                           {"killerX", 4.0},
                           {"killerY", 5.0},
                           {"killerZ", 6.5},
                           {"killerBot", "Bot"},
                           {"damageType", 7},
                           {"knocked", true}};
    EXPECT_EQ(EliminationOf(Elimination{}.Build()), expected);
    EXPECT_EQ(EliminationOf(Join({Elimination{}.Build(), Bytes(13, 13)})),
              expected);  // padding of a decrypted one
    for (const std::size_t skipped : {0UL, 1UL, 5000UL, 300'000UL}) {
        EXPECT_EQ(EliminationOf(Elimination{.skipped = Bytes(skipped, 0xEE)}.Build()), expected) << skipped;
    }
}

TEST(Elimination, what_a_short_payload_does_not_hold_is_zero) {
    const Bytes whole = Elimination{}.Build();
    const json full = EliminationOf(whole);
    const char* const inFileOrder[] = {"killedX", "killedY", "killedZ",   "killerX",    "killerY",
                                       "killerZ", "killed",  "killerBot", "damageType", "knocked"};
    std::size_t before = 0;
    for (std::size_t length = 0; length <= whole.size(); ++length) {
        SCOPED_TRACE(length);
        const json event = EliminationOf(Prefix(whole, length));
        EXPECT_EQ(event.size(), full.size());
        std::size_t known = 0;
        bool ended = false;
        for (const char* key : inFileOrder) {
            const bool isId = std::string_view(key) == "killed";
            const json& value = isId && !event.contains("killed") ? event["killedBot"] : event[key];
            const bool read = value == full[key];
            EXPECT_FALSE(read && ended) << key << " behind the cut";
            EXPECT_TRUE(read || value == 0 || value == "" || value == false) << key << ": " << value;
            ended = !read;
            known += read ? 1 : 0;
        }
        EXPECT_GE(known, before);
        before = known;
    }
    EXPECT_EQ(before, std::size(inFileOrder));
}

TEST(Elimination, a_hostile_length_reads_nothing_and_takes_no_time) {
    for (const std::int32_t length : {-1, INT32_MIN, INT32_MAX, 6, 1000}) {
        Writer payload;
        payload.I32(length).Fill(5);
        const json event = EliminationOf(payload.bytes);
        EXPECT_EQ(event["killedX"], 0.0) << length;
        EXPECT_EQ(event["killedBot"], "") << length;
    }
    const Bytes badName = Writer().U8(16).I32(INT32_MIN).bytes;
    EXPECT_THROW(EliminationOf(Elimination{.killer = badName}.Build()), ue4::ReplayException);
}

TEST(Statistics, are_read_in_place_when_the_payload_holds_them) {
    const json stats = {{"evtName", "AthenaMatchStats"},
                        {"accuracy", 0.5},
                        {"assists", 1},
                        {"kills", 2},
                        {"weapon_damage", 3},
                        {"other_damage", 4},
                        {"revives", 5},
                        {"damage_taken", 6},
                        {"damage_to_structures", 7},
                        {"materials_gathered", 8},
                        {"materials_used", 9},
                        {"total_traveled", 10}};
    const json teamStats = {{"evtName", "AthenaMatchTeamStats"}, {"finalRanking", 3}, {"totalPlayers", 100}};
    struct Case {
        bool (*read)(std::span<const std::uint8_t>, json&);
        const char* begin;
        Bytes payload;
        json event;
    };
    const Case cases[] = {
        {orvel::corvane::ReadMatchStats, "[ orvel::corvane::ReadMatchStats ] ", MatchStats(), stats},
        {orvel::corvane::ReadMatchTeamStats, "[ orvel::corvane::ReadMatchTeamStats ] ", MatchTeamStats(),
         teamStats},
    };
    for (const Case& c : cases) {
        for (std::size_t length = 0; length <= c.payload.size() + 4; ++length) {
            SCOPED_TRACE(length);
            Bytes payload = c.payload;
            payload.resize(length);
            payload.shrink_to_fit();  // so that the sanitizer sees every byte too many
            json event;
            testing::internal::CaptureStdout();
            const bool good = c.read(payload, event);
            const std::string output = testing::internal::GetCapturedStdout();
            EXPECT_EQ(good, length >= c.payload.size());
            EXPECT_EQ(event, good ? c.event : json());
            EXPECT_THAT(output, StartsWith(good ? "" : c.begin));
            EXPECT_EQ(std::ranges::count(output, '\n'), good ? 0 : 1);
        }
    }
}

}  // namespace
