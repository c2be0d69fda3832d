// Kraken chunks: an LZ chunk from commands, or one of the two plain kinds, chosen by size.
#pragma once

#include "lz-writer/array-writer.h"
#include "lz-writer/parser.h"

namespace lz {

constexpr size_t kChunkSize = 0x20000;
constexpr size_t kMinLzChunk = 128;

// The chunk of `size` bytes from `start`, with its header, from commands that cover it (from byte 8 on when
// `first` is set: nothing has been decoded since the last reset, and the first 8 bytes go ahead of all).
// store_growth: the share of the chunk by which it may grow for arrays that are stored instead of coded, and
// so faster to decode.
Coded EncodeChunk(ByteSpan raw, size_t start, size_t size, bool first, const std::vector<Command>& commands,
                  double store_growth);

}  // namespace lz
