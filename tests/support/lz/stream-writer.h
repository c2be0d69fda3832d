// Streams: block and quantum headers, and the compressor that tests and benchmarks call.
#pragma once

#include "support/lz/chunk-writer.h"

namespace lz {

constexpr size_t kBlockSize = 0x40000;

// A block of one coded quantum, whose payload must be smaller than the raw bytes. The first one is a reset.
void AppendBlock(Coded& stream, const Coded& payload);

struct CompressOptions {
    ParseOptions parse;
    ChunkOptions chunk;
};

// No block may be incompressible.
Coded Compress(ByteSpan raw, const CompressOptions& options = {});

}  // namespace lz
