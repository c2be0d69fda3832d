#include "oodle/oodle2/core/oodlelzcompressors.h"

#include "oodle/oodle2/core/all_chunks_compressor.h"
#include "oodle/oodle2/core/decompress.h"

std::ptrdiff_t OodleLZ_Decompress(const void* compBuf, std::ptrdiff_t compBufSize, void* rawBuf,
                                  std::ptrdiff_t rawLen, int fuzzSafe, int checkCRC, int verbosity,
                                  void* decBufBase, std::ptrdiff_t decBufSize,
                                  OodleLZ_DecodeCallback fpCallback, void* callbackUserData,
                                  void* decoderMemory, std::ptrdiff_t decoderMemorySize, int threadPhase) {
    return oo2::Decompress({.compBuf = static_cast<const std::uint8_t*>(compBuf),
                            .compBufSize = compBufSize,
                            .rawBuf = static_cast<std::uint8_t*>(rawBuf),
                            .rawLen = rawLen,
                            .fuzzSafe = fuzzSafe != 0,
                            .checkCRC = checkCRC != 0,
                            .verbosity = verbosity,
                            .decBufBase = static_cast<std::uint8_t*>(decBufBase),
                            .decBufSize = decBufSize,
                            .fpCallback = fpCallback,
                            .callbackUserData = callbackUserData,
                            .decoderMemory = decoderMemory,
                            .decoderMemorySize = decoderMemorySize,
                            .threadPhase = threadPhase},
                           oo2::DecodePath::Fast);
}

OodleLZ_Compressor OodleLZ_GetAllChunksCompressor(const void* compBuf, std::ptrdiff_t compBufSize,
                                                  std::ptrdiff_t rawLen) {
    const std::size_t size = compBuf && compBufSize > 0 ? static_cast<std::size_t>(compBufSize) : 0;
    return oo2::GetAllChunksCompressor({static_cast<const std::uint8_t*>(compBuf), size}, rawLen);
}
