// Kraken chunks: an LZ chunk from commands, or one of the two plain kinds, chosen by size or forced.
#pragma once

#include "support/lz/array-writer.h"
#include "support/lz/parser.h"

namespace lz {

constexpr size_t kChunkSize = 0x20000;
constexpr size_t kMinLzChunk = 128;

struct ChunkOptions {
    enum class Kind { cheapest, lz, array };
    enum class Literals { cheapest, raw, sub };
    Kind kind = Kind::cheapest;
    Literals literals = Literals::cheapest;
    std::optional<unsigned> modulus;  // of the offsets, 1 to 128; 0: the single form; none: cheapest
    std::optional<bool> count_byte;   // long excesses in a section of their own; none: cheapest
    double store_growth = 0;          // of the chunk, for arrays stored instead of coded: faster to decode
    bool repeat_as_new = false;       // send recent distances as new offsets
    ArrayOptions literal_array;
    ArrayOptions command_array;
    ArrayOptions offset_array;
    ArrayOptions low_offset_array;  // remainders, when the modulus is above 1
    ArrayOptions excess_array;
};

// The chunk of `size` bytes from `start`, with its header, from commands that cover it (from byte 8 on when
// `first` is set: nothing has been decoded since the last reset, and the first 8 bytes go ahead of all). What
// cannot be had as the forced kind is stored.
Coded EncodeChunk(ByteSpan raw, size_t start, size_t size, bool first, const std::vector<Command>& commands,
                  const ChunkOptions& options);

}  // namespace lz
