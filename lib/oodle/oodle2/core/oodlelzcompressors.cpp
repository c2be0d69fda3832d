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
    Call(const DecompressArgs& args, DecodePath path) : m_args(args), m_path(path) {}

    bool Prepare();
    std::ptrdiff_t RunInSomeMemory();

  private:
    bool ArgumentsAreGood() const;
    bool FindWindow();
    bool PhaseIsPossible();
    std::ptrdiff_t RunIn(OodleLZDecoderState& state);
    bool Loop(OodleLZDecoderState& state);
    bool TellCallback() const;

    DecompressArgs m_args;
    const DecodePath m_path;
    OodleLZ_Compressor m_compressor = OodleLZ_Compressor_Invalid;
    std::uint8_t* m_windowBase = nullptr;
    std::int64_t m_backup = 0;  // bytes of dictionary before rawBuf
    std::int64_t m_rawEnd = 0;  // positions count from m_windowBase
    std::int64_t m_windowEnd = 0;
    std::int64_t m_rawPos = 0;
    std::ptrdiff_t m_compPos = 0;
};

bool Call::ArgumentsAreGood() const {
    return Check(m_args.rawBuf != nullptr, "OODLE ERROR : bad parameter : decodeTo != 0\n") &&
           Check(m_args.compBuf != nullptr, "OODLE ERROR : bad parameter : compBuf != 0\n") &&
           Check(m_args.rawLen > 0, "OODLE ERROR : OodleLZ_Decompress: asked for len 0\n");
}

bool Call::FindWindow() {
    m_windowBase = m_args.decBufBase ? m_args.decBufBase : m_args.rawBuf;
    const auto base = reinterpret_cast<std::uintptr_t>(m_windowBase);
    const auto begin = reinterpret_cast<std::uintptr_t>(m_args.rawBuf);
    if (!Check(base <= begin && (begin - base) % OODLELZ_BLOCK_LEN == 0,
               "OODLE ERROR : OodleLZ_Decompress: dictionary backup distance must be a multiple of "
               "OODLELZ_BLOCK_LEN\n")) {
        return false;
    }
    m_backup = static_cast<std::int64_t>(begin - base);
    m_rawPos = m_backup;
    if (!FitsSignedSize(m_args.rawLen, kSignedSizeLimit - m_backup)) return false;
    m_rawEnd = m_backup + m_args.rawLen;
    m_windowEnd = m_args.decBufSize > 0 ? m_args.decBufSize : m_rawEnd;
    return true;
}

bool Call::PhaseIsPossible() {
    if (m_args.threadPhase == 0) {
        Log(kLogDetail, "OodleLZ_Decompress: threadPhase 0! fixing it to OodleLZ_Decode_Unthreaded\n");
        m_args.threadPhase = OodleLZ_Decode_Unthreaded;
    }
    if (m_args.threadPhase == OodleLZ_Decode_Unthreaded) return true;
    if (m_args.threadPhase != OodleLZ_Decode_ThreadPhase1 &&
        m_args.threadPhase != OodleLZ_Decode_ThreadPhase2) {
        return Fail(
            "OODLE ERROR : assertion failed : %s\n",
            "threadPhase == OodleLZ_Decode_ThreadPhase1 || threadPhase == OodleLZ_Decode_ThreadPhase2");
    }
    return Check(IsIn(kNewLzCompressors, m_compressor),
                 "OODLE ERROR : OodleLZ_Decompress: asked for threaded decode but "
                 "!OodleLZ_Compressor_CanDecodeThreadPhased\n") &&
           Check(m_args.decoderMemory != nullptr &&
                     m_args.decoderMemorySize >= OodleLZ_ThreadPhased_BlockDecoderMemorySizeNeeded,
                 "OODLE ERROR : OodleLZ_Decompress: asked for threaded decode but decoderMemory < "
                 "OodleLZ_ThreadPhased_BlockDecoderMemorySizeNeeded\n");
}

bool Call::Prepare() {
    if (!ArgumentsAreGood() || !FindWindow()) return false;
    m_compressor = OodleLZ_GetAllChunksCompressor(m_args.compBuf, m_args.compBufSize, m_args.rawLen);
    if (m_compressor == OodleLZ_Compressor_Invalid) return false;
    if (m_args.fuzzSafe && !IsIn(kFuzzSafeCompressors, m_compressor)) {
        return Fail(
            "OODLE ERROR : OodleLZ_Decompress: Requested Fuzz Safety, saw a compressor that can't decode "
            "Safe\n");
    }
    return PhaseIsPossible() &&
           Check(!IsIn(kLegacyCompressors, m_compressor),
                 "OODLE ERROR : OodleLZ_Decompress: asked to decode Legacy compressor; not supported!\n");
}

std::ptrdiff_t Call::RunInSomeMemory() {
    const std::ptrdiff_t needed = ScratchSizeNeeded(m_compressor, m_rawEnd) + kDecoderMemorySlack;
    if (m_args.decoderMemory) {
        if (!Check(m_args.decoderMemorySize >= needed,
                   "OODLE ERROR : OodleLZ_Decompress : decoder memory given, but too small!\n")) {
            return 0;
        }
        return RunIn(*PlaceDecoderState(m_args.decoderMemory, m_args.decoderMemorySize));
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
    state.rawPos = m_rawPos;
    state.windowEnd = m_windowEnd;
    state.resetPos = 0;  // so that the dictionary is within reach
    if (Loop(state) && m_rawPos < m_rawEnd) {
        Fail("OODLE ERROR : LZ corruption : OodleLZ_Decompress not enough comp buf\n");
    }
    if (state.ownedMemory) OodleFree(state.ownedMemory);
    if (m_rawPos != m_rawEnd) {
        Fail("OODLE ERROR : LZ corruption : OodleLZ_Decompress failed (%d != %d)\n",
             static_cast<int>(m_rawPos), static_cast<int>(m_rawEnd));
        return 0;
    }
    return m_args.rawLen;
}

// Returns whether it ended for want of compressed bytes or for being done, and not because it was made to.
bool Call::Loop(OodleLZDecoderState& state) {
    while (m_compPos < m_args.compBufSize && m_rawPos < m_rawEnd) {
        if (m_args.verbosity > 2) {
            Log(kLogInfo, "OodleLZ_Decompress about to DecodeSome, starting at comp %d -> raw %d\n",
                static_cast<int>(m_compPos), static_cast<int>(m_rawPos));
        }
        DecodeSomeResult result;
        const bool good = DecodeSome(state, result,
                                     {.windowBase = m_windowBase,
                                      .rawPos = m_rawPos,
                                      .windowEnd = m_windowEnd,
                                      .rawAvail = m_rawEnd - m_rawPos,
                                      .comp = m_args.compBuf + m_compPos,
                                      .compAvail = m_args.compBufSize - m_compPos,
                                      .fuzzSafe = m_args.fuzzSafe,
                                      .checkCRC = m_args.checkCRC,
                                      .verbosity = m_args.verbosity,
                                      .threadPhase = m_args.threadPhase,
                                      .path = m_path});
        if (!good) return false;
        if (result.rawDecoded == 0) {
            return Fail(
                "OODLE ERROR : LZ corruption : OodleLZ_Decompress : DecodeSome wanted more comp data\n");
        }
        m_rawPos += result.rawDecoded;
        m_compPos += result.compUsed;
        if (!TellCallback()) return false;
    }
    return true;
}

bool Call::TellCallback() const {
    return !m_args.fpCallback ||
           m_args.fpCallback(m_args.callbackUserData, m_args.rawBuf, m_args.rawLen, m_args.compBuf,
                             m_args.compBufSize, static_cast<std::ptrdiff_t>(m_rawPos - m_backup),
                             m_compPos) != 1;
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
