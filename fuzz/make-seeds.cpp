// Writes the seed corpora: make_seeds FOLDER (fuzz/corpus). Each input is what its target's settings and the
// test writers make of it, so every format is there in a valid form for the fuzzer to break.
#include "make-seeds.h"

#include <cstdint>
#include <string>

#include "support/replay-builder.h"

namespace {

using namespace corvane_test;
using fuzz::Seeds;

Bytes Eliminations(const std::string& metadata) {
    return Join({Event{.metadata = metadata, .data = Elimination{}.Build()}.Build(),
                 Event{.metadata = metadata,
                       .data = Elimination{.skipped = {}, .killed = NoId(3), .killer = NoId(9)}.Build()}
                     .Build()});
}

Bytes EveryChunk() {
    return Join({Chunk(kData, Sequence(0, 20)), Chunk(kHeader, Header{}.Build()), Chunk(kCleared, {}),
                 Chunk(kCheckpoint, Sequence(9, 5)), Chunk(77, {}), Eliminations("playerElim"),
                 Event{.metadata = "AthenaMatchStats", .data = MatchStats()}.Build(),
                 Event{.group = "AthenaMatchTeamStats", .metadata = "", .data = MatchTeamStats()}.Build()});
}

void AddContainers(const Seeds& container, const Seeds& replay) {
    for (const std::uint32_t version : {1U, 2U, 3U, 5U, 6U, 7U}) {
        const Bytes file = Join({InfoBlock{.version = version}.Build(), EveryChunk()});
        container.Add("version-" + std::to_string(version), Join({{0}, file}));
        replay.Add("version-" + std::to_string(version), Join({{0}, file}));
    }
    const Bytes info = InfoBlock{.encrypted = 1, .key = Sequence(1, 16)}.Build();
    const Bytes encrypted = Join({info, Event{.metadata = "playerElim", .data = Sequence(0, 112)}.Build()});
    container.Add("key-in-file", Join({{0}, encrypted}));
    replay.Add("key-in-file", Join({{0}, encrypted}));
    const Bytes keyless = Join({InfoBlock{.encrypted = 1, .key = Bytes(16)}.Build(), EveryChunk()});
    container.Add("key-from-caller", Join({{6}, keyless}));
    replay.Add("key-from-caller", Join({{1}, keyless}));
    replay.Add("no-key", Join({{0}, InfoBlock{.encrypted = 1}.Build(), EveryChunk()}));
    const Bytes resume = Writer().U8(1).U32(static_cast<std::uint32_t>(info.size())).bytes;
    container.Add("resumed", Join({resume, info, EveryChunk()}));
    container.Add("resumed-past-the-end", Join({{1, 0xFF, 0xFF, 0xFF, 0xFF}, info}));
    const Bytes wide =
        Writer().U32(0x1CA2E27F).U32(6).U32(0).U32(0).U32(0).Str16(u"N\u00E4me\xD83D\xDE00").bytes;
    container.Add("utf-16-name", Join({{0}, wide, Writer().U32(1).U64(7).U32(0).U32(0).U32(0).bytes}));
    replay.Add("no-replay", Join({{0}, InfoBlock{.magic = 1}.Build()}));
}

void AddHeaders(const Seeds& seeds) {
    for (const std::uint32_t version : {4U, 5U, 6U, 7U, 9U, 11U, 12U, 14U}) {
        const Header header{.version = version,
                            .levels = version < 6 ? std::vector<std::string>{"Level"}
                                                  : std::vector<std::string>{"First", "Second"}};
        seeds.Add("version-" + std::to_string(version), header.Build());
    }
    seeds.Add("other-magic", Header{.magic = 7}.Build());
    seeds.Add("newer-engine", Header{.engineVersion = 24}.Build());
}

void AddEvents(const Seeds& seeds) {
    seeds.Add("match-stats", Join({{0}, MatchStats()}));
    seeds.Add("team-stats", Join({{1}, MatchTeamStats()}));
    seeds.Add("elimination", Join({{2}, Elimination{}.Build()}));
    seeds.Add("elimination-padded", Join({{2}, Elimination{.knocked = 0}.Build(), Bytes(13, 13)}));
    const Bytes wideName = Writer().U8(16).Str16(u"B\u00F6t").bytes;
    seeds.Add("elimination-utf-16", Join({{2}, Elimination{.killed = wideName, .killer = NoId(3)}.Build()}));
}

void AddAes(const Seeds& seeds) {
    constexpr std::size_t kKeyBytes[] = {16, 24, 32, 20};
    for (const std::uint8_t flags : Bytes{0, 1, 2, 3, 4, 5, 6, 8, 12}) {
        const std::size_t keyBytes = kKeyBytes[flags & 3];
        const Bytes capacity = Writer().U8(flags).U16(64).bytes;
        seeds.Add("flags-" + std::to_string(flags), Join({capacity, Sequence(7, keyBytes), Sequence(0, 64)}));
    }
    seeds.Add("no-whole-block", Join({{0, 64, 0}, Sequence(7, 16), Sequence(0, 20)}));
    seeds.Add("capacity-too-small", Join({{0, 15, 0}, Sequence(0, 16), Sequence(0, 16)}));
}

void AddText(const Seeds& seeds) {
    seeds.Add("units", Writer().U16('a').U16(0xE9).U16(0x20AC).U16(0xD83D).U16(0xDE00).bytes);
    seeds.Add("unpaired", Writer().U16(0xDE00).U16(0xD83D).U16(0xD83D).U16('x').U16(0xDC80).bytes);
    const std::string utf8 = "a\u00E9\u20AC\U0001F600";
    seeds.Add("utf-8", Bytes(utf8.begin(), utf8.end()));
    seeds.Add("broken-utf-8", {0xC3, 0xE2, 0x82, 0xF0, 0x9F, 0x98, 0xED, 0xA0, 0x80, 0xC0, 0x80, 0xFF});
}

}  // namespace

int main(int count, char** arguments) {
    if (count != 2) return 2;
    const std::string corpus = arguments[1];
    AddContainers(Seeds(corpus, "container"), Seeds(corpus, "replay"));
    AddHeaders(Seeds(corpus, "header-chunk"));
    AddEvents(Seeds(corpus, "event-payload"));
    AddAes(Seeds(corpus, "aes"));
    AddText(Seeds(corpus, "text"));
    fuzz::AddLzSeeds(corpus);
    return 0;
}
