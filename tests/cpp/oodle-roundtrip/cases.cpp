// Builds the streams: chunks whose contents and forms are drawn at random.
#include "cases.h"

#include <deque>

#include "support/lz/sample-data.h"

namespace lz {
namespace {

template <typename T, size_t kCount>
T Pick(Random& random, const T (&from)[kCount]) {
    return from[random.Below(kCount)];
}

// Any array coding, with others inside it to any depth.
ArrayOptions DrawArray(Random& random) {
    static std::deque<ArrayOptions> inner;  // outlives all that points into it
    ArrayOptions options;
    options.type = static_cast<ArrayType>(random.Below(6));
    options.long_header = random.Below(4) == 0;
    options.huffman.description = static_cast<HuffmanOptions::Description>(random.Below(4));
    if (random.Below(2) == 0) options.huffman.f = random.Below(4);
    options.huffman.split = options.type == ArrayType::huffman_split;
    options.huffman.descending = random.Below(4) == 0;
    options.tans.table = static_cast<TansOptions::Table>(random.Below(3));
    options.tans.table_bits = 8 + random.Below(4);
    options.tans.q = random.Below(8);
    options.run_length_prefix = static_cast<RunLengthPrefix>(random.Below(3));
    options.multi.layout = static_cast<MultiOptions::Layout>(random.Below(3));
    options.multi.arrays = 2 + random.Below(14);
    options.multi.end_length = random.Below(2) == 0;
    if (random.Below(3) == 0) {
        options.type = Pick(random, {ArrayType::run_length, ArrayType::multi});
        options.inner = &inner.emplace_back(DrawArray(random));
    }
    return options;
}

// `symbols` of them, each half as frequent as the one before.
Bytes MakeGeometric(uint32_t symbols, size_t size) {
    Bytes out;
    for (size_t i = 1; i <= size; ++i) {
        const uint32_t rank = std::min(static_cast<uint32_t>(std::countr_zero(i)), symbols - 1);
        out.push_back(static_cast<uint8_t>(200 - 7 * rank));
    }
    return out;
}

// Runs around the borders of the run-length commands, with literals of as many lengths between them.
Bytes MakeRuns(Random& random) {
    Bytes out;
    for (int i = 0; i < 12; ++i) {
        for (uint32_t literals = Pick(random, {0U, 5U, 15U, 16U, 35U, 70U}); literals > 0; --literals)
            out.push_back(static_cast<uint8_t>('a' + random.Below(20)));
        out.insert(out.end(), Pick(random, {4U, 15U, 16U, 127U, 128U, 300U, 5000U}),
                   static_cast<uint8_t>(random.Below(3)));
    }
    return out;
}

// All 256 symbols, unequally often.
Bytes MakeSkewed(Random& random) {
    Bytes out;
    for (unsigned i = 0; i < 256; ++i) out.push_back(static_cast<uint8_t>(i));
    while (out.size() < 1500) out.push_back(static_cast<uint8_t>(random.Skewed(256)));
    return out;
}

Bytes DrawArrayContents(Random& random) {
    switch (random.Below(6)) {
        case 0:
            return MakeRuns(random);
        case 1:
            return MakeSkewed(random);
        case 2:
            return Bytes(90, static_cast<uint8_t>(random.Below(256)));
        case 3:
            return MakeGeometric(2 + random.Below(10), 600);
        default:
            return MakeText(400 + random.Below(500), random.Next());
    }
}

struct Pieces {
    Bytes raw;
    std::vector<Command> commands;
};

// Bytes that come from commands of few kinds, so that even short arrays of them are worth coding. Only with a
// modulus can a distance be below 8.
Pieces DrawPieces(Random& random, bool near) {
    const uint32_t nearest = near ? 1 : 8;
    const uint32_t distances[] = {nearest, nearest + random.Below(7), 9 + random.Below(40), 200};
    const uint32_t runs[] = {0, 1, 2, Pick(random, {3U, 5U, 30U})};
    const uint32_t lengths[] = {Pick(random, {3U, 4U, 15U, 16U}), Pick(random, {17U, 18U, 40U}),
                                Pick(random, {2U, 41U, 271U, 272U, 335U, 900U})};
    Pieces pieces{MakeText(8, random.Next()), {}};
    Bytes& raw = pieces.raw;
    const auto put_literals = [&](uint32_t run) {
        for (; run > 0; --run) raw.push_back(static_cast<uint8_t>('a' + random.Skewed(6)));
    };
    for (uint32_t left = 10 + random.Below(200); left > 0; --left) {
        Command command{runs[random.Skewed(4)], lengths[random.Skewed(3)], distances[random.Skewed(4)]};
        put_literals(command.run);
        if (command.distance > raw.size()) command.distance = 8;
        for (uint32_t i = 0; i < command.length; ++i) raw.push_back(raw[raw.size() - command.distance]);
        pieces.commands.push_back(command);
    }
    // A long match leaves at least 8 bytes, be they literals or of a short match.
    if (random.Below(2) == 0) {
        put_literals(8 + random.Below(2));
        return pieces;
    }
    pieces.commands.push_back({0, 8, 8});
    for (int i = 0; i < 8; ++i) raw.push_back(raw[raw.size() - 8]);
    put_literals(random.Below(2));
    return pieces;
}

ChunkOptions DrawChunk(Random& random) {
    ChunkOptions options;
    options.kind = ChunkOptions::Kind::lz;
    options.literals = Pick(random, {ChunkOptions::Literals::raw, ChunkOptions::Literals::sub});
    options.modulus = Pick(random, {0U, 1U, 12U});
    options.count_byte = random.Below(2) == 0;
    options.repeat_as_new = random.Below(8) == 0;
    for (ArrayOptions* array : {&options.literal_array, &options.command_array, &options.offset_array,
                                &options.low_offset_array, &options.excess_array})
        *array = DrawArray(random);
    return options;
}

// One chunk in one quantum, unless its forms need more room than its bytes.
void AddChunk(std::vector<Case>& cases, const std::string& name, const Pieces& pieces,
              const ChunkOptions& options) {
    const Bytes& raw = pieces.raw;
    const Coded chunk = EncodeChunk(raw, 0, raw.size(), true, pieces.commands, options);
    if (chunk.size() >= raw.size()) return;
    Coded out;
    AppendBlock(out, chunk);
    cases.push_back({name, raw, std::move(out.bytes), std::move(out.forms)});
}

}  // namespace

const std::vector<Case>& AllCases() {
    static const std::vector<Case> cases = [] {
        std::vector<Case> all;
        for (uint32_t seed = 0; seed < 200; ++seed) {
            Random random(seed);
            ChunkOptions array;
            array.kind = ChunkOptions::Kind::array;
            array.literal_array = DrawArray(random);
            AddChunk(all, "array " + std::to_string(seed), {DrawArrayContents(random), {}}, array);
            const ChunkOptions chunk = DrawChunk(random);
            AddChunk(all, "chunk " + std::to_string(seed), DrawPieces(random, chunk.modulus != 0), chunk);
        }
        // Nothing but matches.
        Bytes period = MakeText(8);
        for (size_t i = 0; i < 152; ++i) period.push_back(period[i]);
        ChunkOptions chunk;
        chunk.kind = ChunkOptions::Kind::lz;
        AddChunk(all, "no literals", {period, {{0, 144, 8}, {0, 8, 16}}}, chunk);

        for (const Bytes& raw : {MakeText(kChunkSize + 100), MakeMixed(600'000)}) {
            Coded out = Compress(raw);
            all.push_back({"several chunks", raw, std::move(out.bytes), std::move(out.forms)});
        }
        return all;
    }();
    return cases;
}

}  // namespace lz
