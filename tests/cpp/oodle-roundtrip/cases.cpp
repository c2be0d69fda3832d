// Builds the streams: one array each for the array codings, one chunk each for the chunk layouts, then whole
// streams.
#include "cases.h"

#include "support/lz/sample-data.h"

namespace lz {
namespace {

using Description = HuffmanOptions::Description;
using Kind = ChunkOptions::Kind;
using Layout = MultiOptions::Layout;

constexpr uint32_t kDistances[] = {9, 8, 24, 11, 48, 30, 200};
constexpr uint32_t kNearDistances[] = {1, 7, 6, 5, 4, 3, 2};

struct Pieces {
    Bytes raw;
    std::vector<Command> commands;
};

// Bytes that come from commands of few kinds, so that even short command and offset arrays are worth coding.
Pieces MakePieces(size_t count, std::span<const uint32_t> distances, std::span<const uint32_t> lengths,
                  uint64_t seed) {
    static constexpr uint32_t kRuns[] = {3, 0, 5, 1, 2, 30};
    Random random(seed);
    Pieces pieces{MakeText(8, seed), {}};
    Bytes& raw = pieces.raw;
    const auto put_literals = [&](uint32_t run) {
        for (; run > 0; --run) raw.push_back(static_cast<uint8_t>('a' + random.Skewed(6)));
    };
    for (size_t i = 0; i < count; ++i) {
        Command command{kRuns[random.Skewed(std::size(kRuns))], 0, 0};
        put_literals(command.run);
        command.length = lengths[random.Skewed(static_cast<uint32_t>(lengths.size()))];
        const uint32_t distance = distances[random.Skewed(static_cast<uint32_t>(distances.size()))];
        command.distance = distance <= raw.size() ? distance : 8;
        for (uint32_t j = 0; j < command.length; ++j) raw.push_back(raw[raw.size() - command.distance]);
        pieces.commands.push_back(command);
    }
    put_literals(9);
    return pieces;
}

// `count` symbols, each half as frequent as the one before it: code lengths up to count - 1.
Bytes MakeGeometric(unsigned count, size_t size) {
    Bytes out;
    for (size_t i = 1; out.size() < size; ++i) {
        const unsigned rank = std::min(static_cast<unsigned>(std::countr_zero(i)), count - 1);
        out.push_back(static_cast<uint8_t>(200 - 7 * rank));
    }
    return out;
}

// All 256 symbols, unequally often.
Bytes MakeSkewed(size_t size) {
    Random random(3);
    Bytes out;
    for (unsigned i = 0; i < 256; ++i) out.push_back(static_cast<uint8_t>(i));
    while (out.size() < size) out.push_back(static_cast<uint8_t>(random.Skewed(256)));
    return out;
}

// Runs and literal stretches around the borders of the run-length commands.
Bytes MakeRuns(size_t literals) {
    Random random(5);
    Bytes out;
    size_t turn = 0;
    for (const size_t run : {4U, 15U, 16U, 128U, 127U, 131U, 300U, 5000U, 9U, 12U, 200U}) {
        const size_t stretch = run == 9 ? literals : turn++ * 5 % 36;
        for (size_t i = 0; i < stretch; ++i)
            out.push_back(static_cast<uint8_t>('a' + (random.Next() + i) % 20));
        out.insert(out.end(), run, static_cast<uint8_t>(turn % 3));
    }
    return out;
}

// Every 8th byte counts up on its own: nothing to match, but "sub" literals with distance 8 are all alike.
Bytes MakeRamps(size_t size) {
    Bytes out;
    for (size_t i = 0; i < size; ++i)
        out.push_back(static_cast<uint8_t>(i / 8 * (1 + i % 3 / 2) + i % 8 * 31));
    return out;
}

class CaseList {
  public:
    // One chunk in one quantum.
    void AddChunk(const std::string& name, const Bytes& raw, const std::vector<Command>& commands,
                  const ChunkOptions& options) {
        StreamWriter out;
        out.BeginBlock({});
        Coded chunk = EncodeChunk(raw, 0, raw.size(), true, commands, options);
        chunk.Note("quantum:kraken");
        out.Quantum(chunk);
        Add(name, raw, out);
    }
    void AddParsed(const std::string& name, const Bytes& raw, const ChunkOptions& options) {
        AddChunk(name, raw, Parser(raw, {}).Parse(8, raw.size(), 0), options);
    }
    void AddArray(const std::string& name, const Bytes& raw, const ArrayOptions& array) {
        ChunkOptions options;
        options.kind = Kind::array;
        options.literal_array = array;
        AddChunk(name, raw, {}, options);
    }
    void Add(const std::string& name, const Bytes& raw, const CompressOptions& options) {
        Compressed out = Compress(raw, options);
        cases.push_back({name, raw, std::move(out.bytes), std::move(out.forms), std::move(out.blocks)});
    }
    void Add(const std::string& name, const Bytes& raw, const StreamWriter& out) {
        cases.push_back({name, raw, out.stream().bytes, out.stream().forms, out.blocks()});
    }

    std::vector<Case> cases;
};

ArrayOptions Forced(ArrayType type) {
    ArrayOptions options;
    options.type = type;
    return options;
}

ArrayOptions Huffman(Description description, std::optional<unsigned> f = {}, bool split = false) {
    ArrayOptions options = Forced(split ? ArrayType::huffman_split : ArrayType::huffman);
    options.huffman = {description, f, split, false};
    return options;
}

ArrayOptions Tans(TansOptions::Table table, std::optional<unsigned> table_bits,
                  std::optional<unsigned> q = {}) {
    ArrayOptions options = Forced(ArrayType::tans);
    options.tans = {table, table_bits, q};
    return options;
}

ArrayOptions Multi(Layout layout, unsigned arrays, const ArrayOptions* inner = nullptr) {
    ArrayOptions options = Forced(ArrayType::multi);
    options.multi = {layout, arrays, layout == Layout::packed_indices};
    options.inner = inner;
    return options;
}

ArrayOptions RunLength(RunLengthPrefix prefix, const ArrayOptions* inner = nullptr) {
    ArrayOptions options = Forced(ArrayType::run_length);
    options.run_length_prefix = prefix;
    options.inner = inner;
    return options;
}

void AddHuffman(CaseList& list) {
    for (unsigned f = 0; f < 4; ++f) {
        const std::string tail = "-f" + std::to_string(f);
        list.AddArray("huffman-dense" + tail, MakeText(400, f), Huffman(Description::dense, f, f == 1));
        list.AddArray("huffman-second" + tail, MakeText(400, f + 10),
                      Huffman(Description::second, f, f == 2));
    }
    for (const unsigned symbols : {2U, 3U, 5U, 9U, 10U}) {
        ArrayOptions options = Huffman(Description::sparse);
        options.huffman.descending = symbols == 5;
        list.AddArray("huffman-sparse-" + std::to_string(symbols), MakeGeometric(symbols, 600), options);
    }
    list.AddArray("huffman-one-symbol", Bytes(90, 7), Huffman(Description::sparse));
    list.AddArray("huffman-one-symbol-split", Bytes(90, 0), Huffman(Description::second, 1, true));
    list.AddArray("huffman-all-symbols", MakeSkewed(1500), Huffman(Description::second));
    list.AddArray("huffman-all-symbols-dense", MakeSkewed(1500), Huffman(Description::dense, {}, true));
}

void AddTans(CaseList& list) {
    for (unsigned q = 0; q < 8; ++q) {
        const unsigned table_bits = 8 + q % 4;
        list.AddArray("tans-dense-" + std::to_string(q), MakeText(400, q + 20),
                      Tans(TansOptions::Table::dense, table_bits, q));
        if (q < 4) {
            list.AddArray("tans-sparse-" + std::to_string(q), MakeGeometric(2 + 2 * q, 300 + q),
                          Tans(TansOptions::Table::sparse, table_bits));
        }
    }
}

void AddLayers(CaseList& list) {
    static const ArrayOptions tans = Tans(TansOptions::Table::cheapest, {});
    static const ArrayOptions inner_runs = RunLength(RunLengthPrefix::all, &tans);
    static const ArrayOptions inner_packed = Multi(Layout::packed_indices, 3, &inner_runs);
    static const ArrayOptions inner_joined = Multi(Layout::joined, 2, &inner_packed);
    const Bytes runs = MakeRuns(70);
    list.AddArray("runs", runs, RunLength(RunLengthPrefix::none));
    list.AddArray("runs-coded-front", MakeRuns(600), RunLength(RunLengthPrefix::literals));
    list.AddArray("runs-all-coded", runs, RunLength(RunLengthPrefix::all));
    list.AddArray("runs-one-byte", Bytes(20, 9), RunLength(RunLengthPrefix::none));
    list.AddArray("multi-joined", MakeText(500), Multi(Layout::joined, 5));
    list.AddArray("multi-plain-indices", MakeText(900), Multi(Layout::plain_indices, 7));
    list.AddArray("multi-many-sources", MakeGeometric(3, 4000), Multi(Layout::plain_indices, 63));
    list.AddArray("multi-packed-indices", MakeText(900), Multi(Layout::packed_indices, 15));
    list.AddArray("nested", MakeRuns(500), Multi(Layout::plain_indices, 2, &inner_joined));
}

ChunkOptions AllArrays(const ArrayOptions& array) {
    ChunkOptions options;
    options.kind = Kind::lz;
    options.literal_array = options.command_array = options.offset_array = array;
    options.low_offset_array = options.excess_array = array;
    return options;
}

// Every array type in every place of a chunk, with the layouts of offsets and excesses in turn.
void AddChunkLayouts(CaseList& list) {
    const ArrayOptions arrays[] = {Forced(ArrayType::stored),
                                   Tans(TansOptions::Table::cheapest, {}),
                                   Huffman(Description::cheapest),
                                   RunLength(RunLengthPrefix::all),
                                   Huffman(Description::cheapest, {}, true),
                                   Multi(Layout::joined, 2)};
    static constexpr uint32_t kLengths[] = {17, 20, 3, 4, 16, 40};
    for (size_t i = 0; i < std::size(arrays); ++i) {
        ChunkOptions options = AllArrays(arrays[i]);
        options.literals = i % 2 == 0 ? ChunkOptions::Literals::raw : ChunkOptions::Literals::sub;
        for (const unsigned modulus : {0U, 1U, 12U}) {
            options.modulus = modulus;
            options.count_byte = (i + modulus) % 2 == 0;
            const Pieces pieces = MakePieces(i < 5 ? 150 : 400, kDistances, kLengths, i);
            list.AddChunk("arrays" + std::to_string(i) + "-modulus" + std::to_string(modulus), pieces.raw,
                          pieces.commands, options);
        }
    }
}

void AddChunkShapes(CaseList& list) {
    ChunkOptions options = AllArrays({});
    list.AddChunk("ramps-without-commands", MakeRamps(300), {}, options);
    Bytes period = MakeText(8);
    for (size_t i = 0; i < 152; ++i) period.push_back(period[i]);
    list.AddChunk("no-literals", period, {{0, 144, 8}, {0, 8, 16}}, options);
    static constexpr uint32_t kLongLengths[] = {272, 271, 900, 17, 335, 5000};
    const Pieces pieces = MakePieces(50, kDistances, kLongLengths, 9);
    list.AddChunk("long-excesses", pieces.raw, pieces.commands, options);
    options.count_byte = true;
    list.AddChunk("long-excesses-in-own-section", pieces.raw, pieces.commands, options);
    options.count_byte.reset();
    options.repeat_as_new = true;
    list.AddParsed("recent-sent-as-new", MakeRecords(900), options);
    options.repeat_as_new = false;
    static constexpr uint32_t kLengths[] = {3, 17, 18, 30, 16, 41, 100};
    const Pieces nearby = MakePieces(90, kNearDistances, kLengths, 4);
    options.literals = ChunkOptions::Literals::raw;
    list.AddChunk("near-matches", nearby.raw, nearby.commands, options);
    options.literals = ChunkOptions::Literals::sub;
    list.AddChunk("near-matches-sub", nearby.raw, nearby.commands, options);
    options.kind = Kind::stored;
    Bytes tail(kChunkSize, 5);
    tail.push_back(6);
    StreamWriter out;
    out.BeginBlock({});
    Coded chunks = EncodeChunk(tail, 0, kChunkSize, true, {}, {});
    chunks.Append(EncodeChunk(tail, kChunkSize, 1, false, {}, options));
    out.Quantum(chunks);
    list.Add("stored-chunk-of-one-byte", tail, out);
}

void AddFrames(CaseList& list) {
    const Bytes noise = MakeNoise(300);
    StreamWriter out;
    out.BeginBlock({.memcpy = true});
    out.Memcpy(noise);
    list.Add("memcpy", noise, out);

    StreamWriter special;
    special.BeginBlock({.check = true});
    special.StoredSpecial(noise);
    list.Add("stored-special-checked", noise, special);

    StreamWriter by_length;
    by_length.BeginBlock({.reset = false, .type = DecodeType::mermaid});
    by_length.StoredByLength(noise);
    list.Add("stored-by-length", noise, by_length);

    StreamWriter fill;
    fill.BeginBlock({.check = true, .type = DecodeType::leviathan});
    fill.Memset(0xAB);
    list.Add("memset", Bytes(700, 0xAB), fill);

    Bytes raw = MakeNoise(16384);
    StreamWriter small_quanta;
    small_quanta.BeginBlock({.type = DecodeType::lzb16});
    small_quanta.StoredSpecial(raw);
    small_quanta.WholeMatch(5000);
    for (size_t i = 0; i < 16384; ++i) raw.push_back(raw[raw.size() - 5000]);
    small_quanta.Memset(3);
    raw.insert(raw.end(), 16384, 3);
    small_quanta.StoredByLength(noise);
    raw.insert(raw.end(), noise.begin(), noise.end());
    list.Add("short-quantum-headers", raw, small_quanta);

    CompressOptions options;
    options.check = true;
    list.Add("text-checked", MakeText(600), options);
}

// A window of 9 MB: whole matches with one and two groups and offsets of the second range. The bytes between
// are memsets.
void AddFar(CaseList& list) {
    constexpr size_t kOneGroupBlock = 4;
    constexpr size_t kTwoGroupsBlock = 18;
    constexpr size_t kLastBlock = 34;
    Bytes raw = MakeText(3000);
    raw.resize(kBlockSize);
    StreamWriter out;
    out.BeginBlock({});
    Parser parser(raw, {});
    out.Quantum(EncodeQuantum(parser, raw, 0, kBlockSize, 0, {}));
    for (size_t block = 1; block < kLastBlock; ++block) {
        out.BeginBlock({.reset = false});
        if (block == kOneGroupBlock || block == kTwoGroupsBlock) {
            out.WholeMatch(block * kBlockSize);
            raw.insert(raw.end(), raw.begin(), raw.begin() + kBlockSize);
        } else {
            out.Memset(0);
            raw.resize(raw.size() + kBlockSize);
        }
    }
    std::vector<Command> commands;
    for (uint32_t i = 0; i < 12; ++i) {
        commands.push_back({2, 20 + i, static_cast<uint32_t>(kLastBlock * kBlockSize - 100 * i)});
        raw.insert(raw.end(), 2, 'x');
        for (uint32_t j = 0; j < commands[i].length; ++j)
            raw.push_back(raw[raw.size() - commands[i].distance]);
    }
    raw.insert(raw.end(), 8, 'y');
    out.BeginBlock({.reset = false});
    const size_t start = kLastBlock * kBlockSize;
    ChunkOptions options;
    options.modulus = 0;
    out.Quantum(EncodeChunk(raw, start, raw.size() - start, false, commands, options));
    list.Add("far", raw, out);
}

// Streams as the compressor makes them by default.
void AddLarge(CaseList& list) {
    list.Add("text", MakeText(kChunkSize + 100), CompressOptions{});
    list.Add("records", MakeRecords(200'000), CompressOptions{});
    list.Add("samples", MakeSamples(200'000), CompressOptions{});
    CompressOptions options;
    options.check = true;
    list.Add("mixed-blocks", MakeMixed(600'000), options);
    options.reset_blocks = true;
    list.Add("mixed-blocks-reset", MakeMixed(600'000, 2), options);

    StreamWriter out;
    Bytes raw(kBlockSize, 1);
    const Bytes text = MakeText(20'000);
    out.BeginBlock({.type = DecodeType::leviathan});
    out.Memset(1);
    raw.insert(raw.end(), text.begin(), text.end());
    out.BeginBlock({});
    Parser parser(raw, {});
    out.Quantum(EncodeQuantum(parser, raw, kBlockSize, raw.size(), kBlockSize, {}));
    list.Add("mixed-types", raw, out);
}

}  // namespace

const std::vector<Case>& AllCases() {
    static const std::vector<Case> cases = [] {
        CaseList list;
        AddHuffman(list);
        AddTans(list);
        AddLayers(list);
        AddChunkLayouts(list);
        AddChunkShapes(list);
        AddFrames(list);
        AddLarge(list);
        AddFar(list);
        return list.cases;
    }();
    return cases;
}

}  // namespace lz
