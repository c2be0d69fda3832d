#include "oodle/oodle2/core/oodlelzcompressors.h"

#include <cstring>
#include <new>

#include "oodle/oodle2/core/compressor_sets.h"
#include "oodle/oodle2/core/decoder_state.h"
#include "oodle/oodle2/core/decompress.h"

namespace oo2 {
namespace {

constexpr std::ptrdiff_t kStackScratchLimit = 0x8000;

// One call of OodleLZ_Decompress, its steps in the order in which they fail.
class Call {
  public:
    Call(const DecompressArgs& args, DecodePath path) : args_(args), path_(path) {}

    bool Prepare();
    std::ptrdiff_t RunInSomeMemory();

  private:
    bool ArgumentsAreGood() const;
    bool FindWindow();
    bool PhaseIsPossible();
    std::ptrdiff_t RunIn(OodleLZDecoderState& state);
    bool Loop(OodleLZDecoderState& state);
    bool TellCallback() const;

    DecompressArgs args_;
    const DecodePath path_;
    OodleLZ_Compressor compressor_ = OodleLZ_Compressor_Invalid;
    std::uint8_t* windowBase_ = nullptr;
    std::int64_t backup_ = 0;  // bytes of dictionary before rawBuf
    std::int64_t rawEnd_ = 0;  // positions count from windowBase_
    std::int64_t windowEnd_ = 0;
    std::int64_t rawPos_ = 0;
    std::ptrdiff_t compPos_ = 0;
};

bool Call::ArgumentsAreGood() const {
    return Check(args_.rawBuf != nullptr, "OODLE ERROR : bad parameter : decodeTo != 0\n") &&
           Check(args_.compBuf != nullptr, "OODLE ERROR : bad parameter : compBuf != 0\n") &&
           Check(args_.rawLen > 0, "OODLE ERROR : OodleLZ_Decompress: asked for len 0\n");
}

bool Call::FindWindow() {
    windowBase_ = args_.decBufBase ? args_.decBufBase : args_.rawBuf;
    const auto base = reinterpret_cast<std::uintptr_t>(windowBase_);
    const auto begin = reinterpret_cast<std::uintptr_t>(args_.rawBuf);
    if (!Check(base <= begin && (begin - base) % OODLELZ_BLOCK_LEN == 0,
               "OODLE ERROR : OodleLZ_Decompress: dictionary backup distance must be a multiple of "
               "OODLELZ_BLOCK_LEN\n")) {
        return false;
    }
    backup_ = static_cast<std::int64_t>(begin - base);
    rawPos_ = backup_;
    if (!FitsSignedSize(args_.rawLen, kSignedSizeLimit - backup_)) return false;
    rawEnd_ = backup_ + args_.rawLen;
    windowEnd_ = args_.decBufSize > 0 ? args_.decBufSize : rawEnd_;
    return true;
}

bool Call::PhaseIsPossible() {
    if (args_.threadPhase == 0) {
        Log(kLogDetail, "OodleLZ_Decompress: threadPhase 0! fixing it to OodleLZ_Decode_Unthreaded\n");
        args_.threadPhase = OodleLZ_Decode_Unthreaded;
    }
    if (args_.threadPhase == OodleLZ_Decode_Unthreaded) return true;
    if (args_.threadPhase != OodleLZ_Decode_ThreadPhase1 &&
        args_.threadPhase != OodleLZ_Decode_ThreadPhase2) {
        return Fail(
            "OODLE ERROR : assertion failed : %s\n",
            "threadPhase == OodleLZ_Decode_ThreadPhase1 || threadPhase == OodleLZ_Decode_ThreadPhase2");
    }
    return Check(IsIn(kNewLzCompressors, compressor_),
                 "OODLE ERROR : OodleLZ_Decompress: asked for threaded decode but "
                 "!OodleLZ_Compressor_CanDecodeThreadPhased\n") &&
           Check(args_.decoderMemory != nullptr &&
                     args_.decoderMemorySize >= OodleLZ_ThreadPhased_BlockDecoderMemorySizeNeeded,
                 "OODLE ERROR : OodleLZ_Decompress: asked for threaded decode but decoderMemory < "
                 "OodleLZ_ThreadPhased_BlockDecoderMemorySizeNeeded\n");
}

bool Call::Prepare() {
    if (!ArgumentsAreGood() || !FindWindow()) return false;
    compressor_ = OodleLZ_GetAllChunksCompressor(args_.compBuf, args_.compBufSize, args_.rawLen);
    if (compressor_ == OodleLZ_Compressor_Invalid) return false;
    if (args_.fuzzSafe && !IsIn(kFuzzSafeCompressors, compressor_)) {
        return Fail(
            "OODLE ERROR : OodleLZ_Decompress: Requested Fuzz Safety, saw a compressor that can't decode "
            "Safe\n");
    }
    return PhaseIsPossible() &&
           Check(!IsIn(kLegacyCompressors, compressor_),
                 "OODLE ERROR : OodleLZ_Decompress: asked to decode Legacy compressor; not supported!\n");
}

std::ptrdiff_t Call::RunInSomeMemory() {
    const std::ptrdiff_t needed = ScratchSizeNeeded(compressor_, rawEnd_) + kDecoderMemorySlack;
    if (args_.decoderMemory) {
        if (!Check(args_.decoderMemorySize >= needed,
                   "OODLE ERROR : OodleLZ_Decompress : decoder memory given, but too small!\n")) {
            return 0;
        }
        return RunIn(*PlaceDecoderState(args_.decoderMemory, args_.decoderMemorySize));
    }
    if (needed - kDecoderMemorySlack < kStackScratchLimit) {
        // Whatever needs so little needs the state alone.
        std::uint8_t memory[kStateSize + kDecoderMemorySlack];
        return RunIn(*PlaceDecoderState(memory, sizeof(memory)));
    }
    void* const memory = OodleMalloc(needed);
    if (!memory) return 0;
    OodleLZDecoderState* const state = PlaceDecoderState(memory, needed);
    state->ownedMemory = memory;
    return RunIn(*state);
}

std::ptrdiff_t Call::RunIn(OodleLZDecoderState& state) {
    state.rawPos = rawPos_;
    state.windowEnd = windowEnd_;
    state.resetPos = 0;  // so that the dictionary is within reach
    if (Loop(state) && rawPos_ < rawEnd_) {
        Fail("OODLE ERROR : LZ corruption : OodleLZ_Decompress not enough comp buf\n");
    }
    if (state.ownedMemory) OodleFree(state.ownedMemory);
    if (rawPos_ != rawEnd_) {
        Fail("OODLE ERROR : LZ corruption : OodleLZ_Decompress failed (%d != %d)\n",
             static_cast<int>(rawPos_), static_cast<int>(rawEnd_));
        return 0;
    }
    return args_.rawLen;
}

// Returns whether it ended for want of compressed bytes or for being done, and not because it was made to.
bool Call::Loop(OodleLZDecoderState& state) {
    while (compPos_ < args_.compBufSize && rawPos_ < rawEnd_) {
        if (args_.verbosity > 2) {
            Log(kLogInfo, "OodleLZ_Decompress about to DecodeSome, starting at comp %d -> raw %d\n",
                static_cast<int>(compPos_), static_cast<int>(rawPos_));
        }
        DecodeSomeResult result;
        const bool good = DecodeSome(state, result,
                                     {.windowBase = windowBase_,
                                      .rawPos = rawPos_,
                                      .windowEnd = windowEnd_,
                                      .rawAvail = rawEnd_ - rawPos_,
                                      .comp = args_.compBuf + compPos_,
                                      .compAvail = args_.compBufSize - compPos_,
                                      .fuzzSafe = args_.fuzzSafe,
                                      .checkCRC = args_.checkCRC,
                                      .verbosity = args_.verbosity,
                                      .threadPhase = args_.threadPhase,
                                      .path = path_});
        if (!good) return false;
        if (result.rawDecoded == 0) {
            return Fail(
                "OODLE ERROR : LZ corruption : OodleLZ_Decompress : DecodeSome wanted more comp data\n");
        }
        rawPos_ += result.rawDecoded;
        compPos_ += result.compUsed;
        if (!TellCallback()) return false;
    }
    return true;
}

bool Call::TellCallback() const {
    return !args_.fpCallback ||
           args_.fpCallback(args_.callbackUserData, args_.rawBuf, args_.rawLen, args_.compBuf,
                            args_.compBufSize, static_cast<std::ptrdiff_t>(rawPos_ - backup_), compPos_) != 1;
}

}  // namespace

std::ptrdiff_t ScratchSizeNeeded(OodleLZ_Compressor compressor, std::int64_t rawEnd) {
    if (!IsIn(kNewLzCompressors, compressor)) return kStateSize;
    constexpr std::int64_t kLargest = kMaxChunkLen;
    const std::int64_t chunk = rawEnd >= 1 && rawEnd < kLargest ? rawEnd : kLargest;
    const bool isMermaid =
        compressor == OodleLZ_Compressor_Mermaid || compressor == OodleLZ_Compressor_Selkie;
    const auto n = static_cast<std::size_t>(chunk);
    return kStateSize + static_cast<std::ptrdiff_t>(KrakenChunkScratch(n) - (isMermaid ? n : 0));
}

OodleLZDecoderState* PlaceDecoderState(void* memory, std::ptrdiff_t size) {
    const auto address = reinterpret_cast<std::uintptr_t>(memory);
    const std::size_t padding = (0 - address) % kDecoderMemoryAlignment;
    auto* const state = new (static_cast<std::uint8_t*>(memory) + padding) OodleLZDecoderState;
    state->scratchSize = size - kDecoderMemorySlack;
    return state;
}

std::ptrdiff_t Decompress(const DecompressArgs& args, DecodePath path) {
    Call call(args, path);
    return call.Prepare() ? call.RunInSomeMemory() : 0;
}

}  // namespace oo2

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
