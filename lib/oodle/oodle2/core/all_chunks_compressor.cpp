#include "oodle/oodle2/core/all_chunks_compressor.h"

#include <algorithm>

#include "oodle/oodle2/core/compressor_sets.h"
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

// The answer for a stream whose first part gives `left` and whose next part gives `right`.
OodleLZ_Compressor Mix(OodleLZ_Compressor left, OodleLZ_Compressor right) {
    if (left == right) return left;
    const bool allNew = IsIn(kNewLzCompressors, left) && IsIn(kNewLzCompressors, right);
    return allNew ? OodleLZ_Compressor_Hydra : OodleLZ_Compressor_Count;
}

}  // namespace

CompressedStep GetCompressedStepForRawStep(std::span<const std::uint8_t> comp, std::int64_t startRawPos,
                                           std::ptrdiff_t rawStep) {
    if (!Check(startRawPos % OODLELZ_BLOCK_LEN == 0,
               "OODLE ERROR : GetCompressedStepForRawStep : start pos not a quantum!\n")) {
        return {};
    }
    if (comp.size() < BlockHeader::kSize) return {};
    const std::optional<BlockHeader> block = ReadBlockHeader(comp);
    if (!block) return {};

    const auto step = static_cast<std::size_t>(std::min(rawStep, OODLELZ_BLOCK_LEN));
    std::size_t used = BlockHeader::kSize;
    if (block->memcpy) return {static_cast<std::ptrdiff_t>(used + step), static_cast<std::ptrdiff_t>(step)};

    const std::size_t quantumLen =
        HasLongQuanta(block->decodeType) ? kLongQuantumRawLen : kShortQuantumRawLen;
    std::size_t covered = 0;
    while (covered < step && used < comp.size()) {
        const std::size_t rawLen = std::min(step - covered, quantumLen);
        QuantumHeader header;
        if (ReadQuantumHeader(comp.subspan(used), *block, rawLen, header) != HeaderStatus::Ok) return {};
        used += header.size + header.compLen;
        covered += rawLen;
    }
    return {static_cast<std::ptrdiff_t>(used), static_cast<std::ptrdiff_t>(covered)};
}

OodleLZ_Compressor GetAllChunksCompressor(std::span<const std::uint8_t> comp, std::ptrdiff_t rawLen) {
    OodleLZ_Compressor answer = CompressorAt(comp);
    std::ptrdiff_t rawPos = 0;
    while (answer != OodleLZ_Compressor_Invalid && answer != OodleLZ_Compressor_Count &&
           rawLen - rawPos > OODLELZ_BLOCK_LEN) {
        const CompressedStep step = GetCompressedStepForRawStep(comp, rawPos, OODLELZ_BLOCK_LEN);
        if (step.compUsed <= 0 || step.compUsed > std::ssize(comp)) {
            Fail("OODLE ERROR : LZ corruption : insufficient comp data in OodleLZ_GetAllChunksCompressor\n");
            break;
        }
        if (step.compUsed == std::ssize(comp) || step.rawCovered < OODLELZ_BLOCK_LEN) break;
        comp = comp.subspan(static_cast<std::size_t>(step.compUsed));
        rawPos += step.rawCovered;
        const OodleLZ_Compressor next = CompressorAt(comp);
        answer = next == OodleLZ_Compressor_Invalid ? next : Mix(answer, next);
    }
    return answer;
}

}  // namespace oo2
