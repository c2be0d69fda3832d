// Kraken chunks: an LZ chunk from commands, or one of the two plain kinds, chosen by size.
#pragma once

#include "lz-writer/array-writer.h"
#include "lz-writer/parser.h"

namespace lz {

constexpr size_t kChunkSize = 0x20000;
constexpr size_t kMinLzChunk = 128;

// Writes the chunk of `size` bytes from `start`, header included. `commands` cover it. If `first` is set,
// nothing has been decoded since the last reset: the commands then begin at byte 8, and the first 8 bytes
// stand in front. store_growth: the share by which the chunk may grow for arrays that are stored, which
// decode faster.
Coded EncodeChunk(ByteSpan raw, size_t start, size_t size, bool first, const std::vector<Command>& commands,
                  double store_growth);

}  // namespace lz
