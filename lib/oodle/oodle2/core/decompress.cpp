#include "oodle/oodle2/core/decompress.h"

#include "oodle/oodle2/core/all_chunks_compressor.h"
#include "oodle/oodle2/core/compressor_sets.h"
#include "oodle/oodle2/core/decode_some.h"
#include "oodle/oodle2/core/decoder_state.h"
#include "oodle/oodle2/core/quantum.h"

namespace oo2 {
namespace {

constexpr std::ptrdiff_t kStackScratchLimit = 0x8000;

// One call of OodleLZ_Decompress. The steps stand in the order in which they can fail.
class Call {
  public:
    Call(const DecompressArgs& args, DecodePath path) : m_args(args) {
        m_context.path = path;
        m_context.fuzzSafe = args.fuzzSafe;
        m_context.checkCRC = args.checkCRC;
        m_context.verbosity = args.verbosity;
    }

    bool Prepare();
    std::ptrdiff_t RunInSomeMemory() const;

  private:
    bool ArgumentsAreGood() const;
    bool FindWindow();
    bool PhaseIsPossible();
    std::ptrdiff_t RunIn(OodleLZDecoderState& state) const;
    bool Loop(OodleLZDecoderState& state) const;
    bool TellCallback(std::int64_t rawPos, std::size_t compUsed) const;

    const DecompressArgs& m_args;
    std::span<const std::uint8_t> m_comp;
    OodleLZ_Compressor m_compressor = OodleLZ_Compressor_Invalid;
    DecodeContext m_context;    // at the start of the call, without scratch
    std::int64_t m_backup = 0;  // bytes of dictionary before rawBuf
};

bool Call::ArgumentsAreGood() const {
    return Check(m_args.rawBuf != nullptr, "OODLE ERROR : bad parameter : decodeTo != 0\n") &&
           Check(m_args.compBuf != nullptr, "OODLE ERROR : bad parameter : compBuf != 0\n") &&
           Check(m_args.rawLen > 0, "OODLE ERROR : OodleLZ_Decompress: asked for len 0\n");
}

bool Call::FindWindow() {
    m_context.windowBase = m_args.decBufBase ? m_args.decBufBase : m_args.rawBuf;
    const auto base = reinterpret_cast<std::uintptr_t>(m_context.windowBase);
    const auto begin = reinterpret_cast<std::uintptr_t>(m_args.rawBuf);
    if (!Check(base <= begin && (begin - base) % OODLELZ_BLOCK_LEN == 0,
               "OODLE ERROR : OodleLZ_Decompress: dictionary backup distance must be a multiple of "
               "OODLELZ_BLOCK_LEN\n")) {
        return false;
    }
    m_backup = static_cast<std::int64_t>(begin - base);
    if (!FitsSignedSize(m_args.rawLen, kSignedSizeLimit - m_backup)) return false;
    m_context.rawPos = m_backup;
    m_context.resetPos = 0;  // so that matches can reach the dictionary
    m_context.rawEnd = m_backup + m_args.rawLen;
    m_context.windowEnd = m_args.decBufSize > 0 ? m_args.decBufSize : m_context.rawEnd;
    return true;
}

bool Call::PhaseIsPossible() {
    int phase = m_args.threadPhase;
    if (phase == 0) {
        Log(kLogDetail, "OodleLZ_Decompress: threadPhase 0! fixing it to OodleLZ_Decode_Unthreaded\n");
        phase = OodleLZ_Decode_Unthreaded;
    }
    if (phase == OodleLZ_Decode_Unthreaded) return true;
    if (phase != OodleLZ_Decode_ThreadPhase1 && phase != OodleLZ_Decode_ThreadPhase2) {
        return Fail(
            "OODLE ERROR : assertion failed : %s\n",
            "threadPhase == OodleLZ_Decode_ThreadPhase1 || threadPhase == OodleLZ_Decode_ThreadPhase2");
    }
    m_context.phases = {.unpack = phase == OodleLZ_Decode_ThreadPhase1,
                        .write = phase == OodleLZ_Decode_ThreadPhase2};
    return Check(IsIn(kNewLzCompressors, m_compressor),
                 "OODLE ERROR : OodleLZ_Decompress: asked for threaded decode but "
                 "!OodleLZ_Compressor_CanDecodeThreadPhased\n") &&
           Check(m_args.decoderMemory != nullptr &&
                     m_args.decoderMemorySize >= OodleLZ_ThreadPhased_BlockDecoderMemorySizeNeeded,
                 "OODLE ERROR : OodleLZ_Decompress: asked for threaded decode but decoderMemory < "
                 "OodleLZ_ThreadPhased_BlockDecoderMemorySizeNeeded\n") &&
           Check(m_args.rawLen <= OODLELZ_BLOCK_LEN,
                 "OODLE ERROR : OodleLZ_Decompress: asked for threaded decode of more than one block\n");
}

bool Call::Prepare() {
    if (!ArgumentsAreGood() || !FindWindow()) return false;
    if (m_args.compBufSize > 0) m_comp = {m_args.compBuf, static_cast<std::size_t>(m_args.compBufSize)};
    m_compressor = GetAllChunksCompressor(m_comp, m_args.rawLen);
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

std::ptrdiff_t Call::RunInSomeMemory() const {
    const std::ptrdiff_t needed = ScratchSizeNeeded(m_compressor, m_context.rawEnd) + kDecoderMemorySlack;
    if (m_args.decoderMemory) {
        if (!Check(m_args.decoderMemorySize >= needed,
                   "OODLE ERROR : OodleLZ_Decompress : decoder memory given, but too small!\n")) {
            return 0;
        }
        return RunIn(*PlaceDecoderState(m_args.decoderMemory, m_args.decoderMemorySize, m_context));
    }
    if (needed - kDecoderMemorySlack < kStackScratchLimit) {
        // Below the limit only the state is needed: the scratch of one LZ chunk alone reaches the limit.
        static_assert(kChunkScratchBase >= kStackScratchLimit);
        std::uint8_t memory[kStateSize + kDecoderMemorySlack];
        return RunIn(*PlaceDecoderState(memory, sizeof(memory), m_context));
    }
    void* const memory = OodleMalloc(needed);
    if (!memory) return 0;
    OodleLZDecoderState* const state = PlaceDecoderState(memory, needed, m_context);
    state->ownedMemory = memory;
    return RunIn(*state);
}

std::ptrdiff_t Call::RunIn(OodleLZDecoderState& state) const {
    const bool isOutOfInput = Loop(state);
    const std::int64_t rawPos = state.context.rawPos;
    if (isOutOfInput && rawPos < m_context.rawEnd)
        Fail("OODLE ERROR : LZ corruption : OodleLZ_Decompress not enough comp buf\n");
    if (state.ownedMemory) OodleFree(state.ownedMemory);
    if (rawPos == m_context.rawEnd) return m_args.rawLen;
    Fail("OODLE ERROR : LZ corruption : OodleLZ_Decompress failed (%d != %d)\n", static_cast<int>(rawPos),
         static_cast<int>(m_context.rawEnd));
    return 0;
}

// Returns false if a step failed or the callback stopped the call.
bool Call::Loop(OodleLZDecoderState& state) const {
    std::int64_t& rawPos = state.context.rawPos;
    std::size_t compPos = 0;
    while (compPos < m_comp.size() && rawPos < m_context.rawEnd) {
        if (m_context.LogsSteps()) {
            Log(kLogInfo, "OodleLZ_Decompress about to DecodeSome, starting at comp %d -> raw %d\n",
                static_cast<int>(compPos), static_cast<int>(rawPos));
        }
        DecodeSomeResult result;
        if (!DecodeSome(state, m_comp.subspan(compPos), result)) return false;
        if (result.rawDecoded == 0) {
            return Fail(
                "OODLE ERROR : LZ corruption : OodleLZ_Decompress : DecodeSome wanted more comp data\n");
        }
        compPos += static_cast<std::size_t>(result.compUsed);
        if (!TellCallback(rawPos, compPos)) return false;
    }
    return true;
}

bool Call::TellCallback(std::int64_t rawPos, std::size_t compUsed) const {
    return !m_args.fpCallback ||
           m_args.fpCallback(m_args.callbackUserData, m_args.rawBuf, m_args.rawLen, m_args.compBuf,
                             m_args.compBufSize, static_cast<std::ptrdiff_t>(rawPos - m_backup),
                             static_cast<std::ptrdiff_t>(compUsed)) != 1;
}

}  // namespace

std::ptrdiff_t Decompress(const DecompressArgs& args, DecodePath path) {
    Call call(args, path);
    return call.Prepare() ? call.RunInSomeMemory() : 0;
}

}  // namespace oo2
