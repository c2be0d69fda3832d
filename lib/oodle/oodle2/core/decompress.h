// OodleLZ_Decompress with its arguments as a record and the choice of path, for tests that compare the paths.
#pragma once

#include "oodle/oodle2/core/oodlelzcompressors.h"
#include "oodle/oodle2/core/quantum.h"

namespace oo2 {

// The arguments of OodleLZ_Decompress, by its names.
struct DecompressArgs {
    const std::uint8_t* compBuf = nullptr;
    std::ptrdiff_t compBufSize = 0;
    std::uint8_t* rawBuf = nullptr;
    std::ptrdiff_t rawLen = 0;
    bool fuzzSafe = true;
    bool checkCRC = false;
    int verbosity = 0;
    std::uint8_t* decBufBase = nullptr;
    std::ptrdiff_t decBufSize = 0;
    OodleLZ_DecodeCallback fpCallback = nullptr;
    void* callbackUserData = nullptr;
    void* decoderMemory = nullptr;
    std::ptrdiff_t decoderMemorySize = 0;
    int threadPhase = OodleLZ_Decode_Unthreaded;
};

std::ptrdiff_t Decompress(const DecompressArgs& args, DecodePath path);

struct CompressedStep {
    std::ptrdiff_t compUsed = -1;  // -1: a header of the step could not be read
    std::ptrdiff_t rawCovered = 0;
};

// The compressed bytes, block header included, that the step of at most OODLELZ_BLOCK_LEN raw bytes from
// startRawPos on takes, from its quanta's headers alone; the last may reach past the stream's end.
CompressedStep GetCompressedStepForRawStep(const std::uint8_t* comp, std::ptrdiff_t compAvail,
                                           std::int64_t startRawPos, std::ptrdiff_t rawStep);

}  // namespace oo2
