// The LZ decoder's two entries: one decodes a stream into a buffer of known length, one names a stream's
// compressor. Any number of threads may call them at once: a call keeps all its state in its own decoder
// memory.
#pragma once

#include <cstddef>
#include <cstdint>

#include "oodle/oodle2/core/oodlebase.h"

// The block length: every 262,144 raw bytes a block begins, with its own header.
inline constexpr std::ptrdiff_t OODLELZ_BLOCK_LEN = 0x40000;

// The least decoderMemorySize of a thread-phased call.
inline constexpr std::ptrdiff_t OodleLZ_ThreadPhased_BlockDecoderMemorySizeNeeded = 894'200;

enum OodleLZ_Compressor : int {
    OodleLZ_Compressor_Invalid = -1,
    OodleLZ_Compressor_LZH = 0,
    OodleLZ_Compressor_LZHLW = 1,
    OodleLZ_Compressor_LZNIB = 2,
    OodleLZ_Compressor_None = 3,
    OodleLZ_Compressor_LZB16 = 4,
    OodleLZ_Compressor_LZBLW = 5,
    OodleLZ_Compressor_LZA = 6,
    OodleLZ_Compressor_LZNA = 7,
    OodleLZ_Compressor_Kraken = 8,
    OodleLZ_Compressor_Mermaid = 9,
    OodleLZ_Compressor_BitKnit = 10,
    OodleLZ_Compressor_Selkie = 11,
    OodleLZ_Compressor_Hydra = 12,  // stands for a mix of the new compressors
    OodleLZ_Compressor_Leviathan = 13,
    OodleLZ_Compressor_Count = 14,  // as an answer: a mix that no single decoder fits
};

enum OodleLZ_Decode_ThreadPhase : int {
    OodleLZ_Decode_ThreadPhase1 = 1,
    OodleLZ_Decode_ThreadPhase2 = 2,
    OodleLZ_Decode_Unthreaded = 3,
};

// Called after every quantum with the number of bytes done. A result of 1 ends the decoding; the call then
// fails unless all was done.
using OodleLZ_DecodeCallback = int (*)(void* userData, const std::uint8_t* rawBuf, std::ptrdiff_t rawLen,
                                       const std::uint8_t* compBuf, std::ptrdiff_t compBufSize,
                                       std::ptrdiff_t rawDone, std::ptrdiff_t compUsed);

// Decodes the stream of compBufSize bytes at compBuf into exactly rawLen bytes at rawBuf. Returns rawLen, or
// 0 after a failure, which the log hook reports; rawBuf then holds what was decoded before. Compressed bytes
// behind the rawLen-th raw byte are ignored.
//
//   fuzzSafe           nonzero refuses compressors whose decoders are not safe against corrupt input
//   checkCRC           nonzero asks that check values be verified. This decoder skips them but cannot compute
//                      them, so a quantum that carries one then fails rather than pass unverified.
//   verbosity          above 2 logs each block and quantum
//   decBufBase         null, or the begin of the window. What stands between it and rawBuf is a dictionary, a
//                      multiple of OODLELZ_BLOCK_LEN long
//   decBufSize         bytes from the window's begin to its end; 0 or less: up to the end of rawBuf
//   fpCallback         null, or the progress callback, given callbackUserData
//   decoderMemory      null, or decoderMemorySize bytes of scratch that the caller owns; with null the
//                      memory is allocated and freed in the call. The result is the same either way.
//   threadPhase        OodleLZ_Decode_Unthreaded does everything. The phases decode one block of up to
//                      OODLELZ_BLOCK_LEN raw bytes. Phase 1 unpacks into decoderMemory what needs no earlier
//                      output, and never touches rawBuf. Phase 2, called afterwards with the same arguments
//                      and that memory, writes rawBuf. So phase 1 of a block may run while phase 2 of the
//                      block before it does.
std::ptrdiff_t OodleLZ_Decompress(const void* compBuf, std::ptrdiff_t compBufSize, void* rawBuf,
                                  std::ptrdiff_t rawLen, int fuzzSafe, int checkCRC, int verbosity,
                                  void* decBufBase, std::ptrdiff_t decBufSize,
                                  OodleLZ_DecodeCallback fpCallback, void* callbackUserData,
                                  void* decoderMemory, std::ptrdiff_t decoderMemorySize, int threadPhase);

// Names the compressor of a stream that decodes to rawLen bytes, from its headers alone:
// OodleLZ_Compressor_Hydra if its blocks mix new compressors, OodleLZ_Compressor_Count for any other mix,
// OodleLZ_Compressor_Invalid (logged) if a header cannot be read.
OodleLZ_Compressor OodleLZ_GetAllChunksCompressor(const void* compBuf, std::ptrdiff_t compBufSize,
                                                  std::ptrdiff_t rawLen);
