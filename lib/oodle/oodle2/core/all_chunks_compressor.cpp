// Finds a stream's compressor by walking its block and quantum headers.
#include <algorithm>

#include "oodle/oodle2/core/compressor_sets.h"
#include "oodle/oodle2/core/decompress.h"
#include "oodle/oodle2/core/rrlzh_lzhlw_shared.h"

namespace oo2 {
namespace {

OodleLZ_Compressor CompressorAt(std::span<const std::uint8_t> comp) {
    if (comp.size() >= BlockHeader::kSize) {
        if (const auto header = ReadBlockHeader(comp)) return CompressorOf(*header);
        Fail("OODLE ERROR : LZ corruption : invalid header..\n");
    }
    Fail("OODLE ERROR : Invalid chunk compressor in OodleLZ_GetAllChunksCompressor\n");
    return OodleLZ_Compressor_Invalid;
}

// The answer for a stream that is `left` so far and goes on with `right`.
OodleLZ_Compressor Mix(OodleLZ_Compressor left, OodleLZ_Compressor right) {
    if (left == right) return left;
    const bool allNew = IsIn(kNewLzCompressors, left) && IsIn(kNewLzCompressors, right);
    return allNew ? OodleLZ_Compressor_Hydra : OodleLZ_Compressor_Count;
}

}  // namespace

CompressedStep GetCompressedStepForRawStep(const std::uint8_t* comp, std::ptrdiff_t compAvail,
                                           std::int64_t startRawPos, std::ptrdiff_t rawStep) {
    if (!Check(startRawPos % OODLELZ_BLOCK_LEN == 0,
               "OODLE ERROR : GetCompressedStepForRawStep : start pos not a quantum!\n")) {
        return {};
    }
    const std::span<const std::uint8_t> in(comp, static_cast<std::size_t>(compAvail));
    if (in.size() < BlockHeader::kSize) return {};
    const std::optional<BlockHeader> block = ReadBlockHeader(in);
    if (!block) return {};

    const auto step = static_cast<std::size_t>(std::min(rawStep, OODLELZ_BLOCK_LEN));
    std::size_t used = BlockHeader::kSize;
    if (block->memcpy) return {static_cast<std::ptrdiff_t>(used + step), static_cast<std::ptrdiff_t>(step)};

    const std::size_t quantumLen =
        HasLongQuanta(block->decodeType) ? kLongQuantumRawLen : kShortQuantumRawLen;
    std::size_t covered = 0;
    while (covered < step && used < in.size()) {
        const std::size_t rawLen = std::min(step - covered, quantumLen);
        QuantumHeader header;
        if (ReadQuantumHeader(in.subspan(used), *block, rawLen, header) != HeaderStatus::Ok) return {};
        used += header.size + header.compLen;
        covered += rawLen;
    }
    return {static_cast<std::ptrdiff_t>(used), static_cast<std::ptrdiff_t>(covered)};
}

}  // namespace oo2

OodleLZ_Compressor OodleLZ_GetAllChunksCompressor(const void* compBuf, std::ptrdiff_t compBufSize,
                                                  std::ptrdiff_t rawLen) {
    const auto* const comp = static_cast<const std::uint8_t*>(compBuf);
    const auto size = comp && compBufSize > 0 ? static_cast<std::size_t>(compBufSize) : 0;
    std::span<const std::uint8_t> rest(comp, size);
    OodleLZ_Compressor answer = oo2::CompressorAt(rest);
    std::ptrdiff_t rawPos = 0;
    while (answer != OodleLZ_Compressor_Invalid && answer != OodleLZ_Compressor_Count &&
           rawLen - rawPos > OODLELZ_BLOCK_LEN) {
        const auto left = static_cast<std::ptrdiff_t>(rest.size());
        const oo2::CompressedStep step =
            oo2::GetCompressedStepForRawStep(rest.data(), left, rawPos, OODLELZ_BLOCK_LEN);
        if (step.compUsed <= 0 || step.compUsed > left) {
            oo2::Fail(
                "OODLE ERROR : LZ corruption : insufficient comp data in OodleLZ_GetAllChunksCompressor\n");
            break;
        }
        if (step.compUsed == left || step.rawCovered < OODLELZ_BLOCK_LEN) break;
        rest = rest.subspan(static_cast<std::size_t>(step.compUsed));
        rawPos += step.rawCovered;
        const OodleLZ_Compressor next = oo2::CompressorAt(rest);
        answer = next == OodleLZ_Compressor_Invalid ? next : oo2::Mix(answer, next);
    }
    return answer;
}
