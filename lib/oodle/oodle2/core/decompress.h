// OodleLZ_Decompress with its arguments as a struct and a choice of path.
#pragma once

#include <cstddef>
#include <cstdint>

#include "oodle/oodle2/core/decode_context.h"
#include "oodle/oodle2/core/oodlelzcompressors.h"

namespace oo2 {

// The arguments of OodleLZ_Decompress, under the same names.
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

}  // namespace oo2
