// Finds a stream's compressor by walking its block and quantum headers.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "oodle/oodle2/core/oodlelzcompressors.h"

namespace oo2 {

// Documented at OodleLZ_GetAllChunksCompressor.
OodleLZ_Compressor GetAllChunksCompressor(std::span<const std::uint8_t> comp, std::ptrdiff_t rawLen);

struct CompressedStep {
    std::ptrdiff_t compUsed = -1;  // -1: a header in the step could not be read
    std::ptrdiff_t rawCovered = 0;
};

// Measures the step of at most OODLELZ_BLOCK_LEN raw bytes from startRawPos on: its compressed size, block
// header included. Reads only the headers of its quanta. The last quantum may reach past the stream's end.
CompressedStep GetCompressedStepForRawStep(std::span<const std::uint8_t> comp, std::int64_t startRawPos,
                                           std::ptrdiff_t rawStep);

}  // namespace oo2
