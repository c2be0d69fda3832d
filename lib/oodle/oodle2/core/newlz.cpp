#include "oodle/oodle2/core/newlz.h"

#include "oodle/oodle2/core/chunk_walk.h"
#include "oodle/oodle2/core/newlz_parse.h"
#include "oodle/oodle2/core/newlz_unpack.h"

namespace oo2 {

std::ptrdiff_t Kraken_DecodeOneQuantum(const Quantum& quantum) {
    return DecodeChunks<ChunkStreams>(quantum, &newLZ_unpack_chunk, &newLZ_decode_chunk_phase2);
}

}  // namespace oo2
