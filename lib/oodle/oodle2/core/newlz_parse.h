// Phase 2 of a Kraken LZ chunk: commands, literals and offsets to raw bytes.
#pragma once

#include "oodle/oodle2/core/chunk_walk.h"
#include "oodle/oodle2/core/newlz_unpack.h"

namespace oo2 {

// Writes the chunk's raw bytes. Returns false if the streams do not give exactly these.
bool newLZ_decode_chunk_phase2(const Chunk& chunk, const ChunkStreams& streams);

}  // namespace oo2
