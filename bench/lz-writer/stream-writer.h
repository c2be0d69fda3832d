// Streams: block and quantum headers, and the compressor that the benchmarks call.
#pragma once

#include "lz-writer/chunk-writer.h"

namespace lz {

constexpr size_t kBlockSize = 0x40000;

struct CompressOptions {
    ParseOptions parse;
    double store_growth = 0;  // see EncodeChunk
};

// No block may be incompressible.
Coded Compress(ByteSpan raw, const CompressOptions& options = {});

}  // namespace lz
