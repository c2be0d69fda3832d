#include "oodle/oodle2/core/decode_some.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include "oodle/oodle2/core/compressor_sets.h"
#include "oodle/oodle2/core/newlz.h"
#include "oodle/oodle2/core/quantum.h"

namespace oo2 {
namespace {

constexpr std::int64_t kBlockLen = OODLELZ_BLOCK_LEN;
constexpr int kMaxCallsWithoutProgress = 1000;

// The quantum decoder of each decode type. A known type without a decoder has null: its quanta are refused
// like corrupt ones.
constexpr struct {
    DecodeType type;
    QuantumDecoder decode;
} kQuantumDecoders[] = {
    {kDecodeKraken, &Kraken_DecodeOneQuantum},
    {kDecodeMermaid, nullptr},
    {kDecodeLeviathan, nullptr},
    {kDecodeLzb16, nullptr},
};

enum class StepStatus { Done, NeedMore, Failed };

StepStatus Failed(LogText text) {
    Fail(text);
    return StepStatus::Failed;
}

// Repeats the `distance` bytes before `out` until `length` bytes are written.
void RepeatBytes(std::uint8_t* out, std::size_t distance, std::size_t length) {
    const std::uint8_t* const from = out - distance;
    while (length > 0) {
        const std::size_t step = std::min(length, static_cast<std::size_t>(out - from));
        std::memcpy(out, from, step);
        out += step;
        length -= step;
    }
}

class Step {
  public:
    Step(OodleLZDecoderState& state, std::span<const std::uint8_t> comp)
        : m_state(state), m_context(state.context), m_comp(comp) {}

    StepStatus Run(DecodeSomeResult& result);

  private:
    StepStatus ReadHeader();
    bool BlockIsDecodable(OodleLZ_Compressor compressor);
    bool WindowIsWhole() const;
    StepStatus CopyBlock();
    StepStatus DecodeQuantum();
    bool DecodePayload(const QuantumHeader& header) const;
    bool WriteSimple(const QuantumHeader& header) const;
    bool DecodeCoded(const QuantumHeader& header) const;

    std::int64_t WindowLeft() const { return m_context.windowEnd - m_context.rawPos; }
    std::span<const std::uint8_t> Rest() const { return m_comp.subspan(m_used); }

    OodleLZDecoderState& m_state;
    DecodeContext& m_context;
    const std::span<const std::uint8_t> m_comp;
    std::size_t m_used = 0;    // of m_comp
    std::size_t m_rawLen = 0;  // of this step
};

StepStatus Step::Run(DecodeSomeResult& result) {
    const std::int64_t inBlock = m_context.rawPos % kBlockLen;
    const std::int64_t wanted =
        std::min({m_context.rawEnd - m_context.rawPos, kBlockLen - inBlock, WindowLeft()});
    if (wanted <= 0) return Failed("OODLE ERROR : you didn't give me enough window!\n");
    m_rawLen = static_cast<std::size_t>(wanted);

    const std::int64_t formerHeaderPos = m_state.blockHeaderPos;
    StepStatus status = StepStatus::Done;
    if (inBlock == 0 && m_context.rawPos != m_state.blockHeaderPos) status = ReadHeader();
    if (status == StepStatus::Done && !WindowIsWhole()) return StepStatus::Failed;
    if (status == StepStatus::Done) status = m_state.block.memcpy ? CopyBlock() : DecodeQuantum();
    if (status == StepStatus::Done) {
        result = {static_cast<std::ptrdiff_t>(m_rawLen), static_cast<std::ptrdiff_t>(m_used)};
        m_context.rawPos += static_cast<std::int64_t>(m_rawLen);
        m_state.callsWithoutProgress = 0;
    } else {
        m_state.blockHeaderPos = formerHeaderPos;  // not used: the next call reads the header again
    }
    return status;
}

StepStatus Step::ReadHeader() {
    if (m_comp.size() < BlockHeader::kSize) return StepStatus::NeedMore;
    const std::optional<BlockHeader> header = ReadBlockHeader(m_comp);
    if (!header) return Failed("OODLE ERROR : LZ corruption : invalid header..\n");
    const OodleLZ_Compressor compressor = CompressorOf(*header);
    if (!BlockIsDecodable(compressor)) return StepStatus::Failed;

    m_state.block = *header;
    m_state.blockHeaderPos = m_context.rawPos;
    m_used = BlockHeader::kSize;
    if (header->reset) {
        m_context.resetPos = m_context.rawPos;
        Log(kLogDetail, "RESET : %d\n", static_cast<int>(m_context.rawPos));
    }
    if (m_context.LogsSteps()) {
        Log(kLogInfo, "CHUNK header @ %lld  , compressor %d=%s %s %s\n",
            static_cast<long long>(m_context.rawPos), static_cast<int>(compressor),
            CompressorName(compressor), header->reset ? "reset" : "", header->memcpy ? "memcpy" : "");
    }
    return StepStatus::Done;
}

// Also sets the scratch limit of the block's chunks.
bool Step::BlockIsDecodable(OodleLZ_Compressor compressor) {
    if (m_context.fuzzSafe && !IsIn(kFuzzSafeCompressors, compressor)) {
        return Fail("OODLE ERROR : Requested Fuzz Safety, saw a compressor that can't decode Safe\n");
    }
    const std::int64_t rawEnd = std::min(m_context.windowEnd, m_context.rawEnd);
    const std::ptrdiff_t scratchSize = ScratchSizeNeeded(compressor, rawEnd);
    if (scratchSize > m_state.scratchSize) {
        return Fail("OODLE ERROR : Heterogenous compressor file with insufficient decoder memory size!\n");
    }
    m_context.chunkScratch = static_cast<std::size_t>(scratchSize - kStateSize);
    return Check(!IsIn(kLegacyCompressors, compressor), "OODLE ERROR : Legacy LZ VTable not installed");
}

bool Step::WindowIsWhole() const {
    const OodleLZ_Compressor compressor = CompressorOf(m_state.block);
    if (!Check(compressor != OodleLZ_Compressor_Invalid, "OODLE ERROR : invalid decodeType!\n")) return false;
    if (m_context.rawEnd <= m_context.windowEnd) return true;
    // A smaller window would have to slide.
    return Check(std::has_single_bit(static_cast<std::uint64_t>(m_context.windowEnd)),
                 "OODLE ERROR : sliding window must be pow2!\n") &&
           Check(IsIn(kLegacyCompressors, compressor),
                 "OODLE ERROR : only legacy compressors do sliding window!\n");
}

StepStatus Step::CopyBlock() {
    if (Rest().size() < m_rawLen) return StepStatus::NeedMore;
    if (m_context.LogsSteps()) Log(kLogInfo, " decoder memcpy %d\n", static_cast<int>(m_rawLen));
    if (m_context.phases.write) std::memcpy(m_context.Out(), Rest().data(), m_rawLen);
    m_used += m_rawLen;
    return StepStatus::Done;
}

StepStatus Step::DecodeQuantum() {
    if (!HasLongQuanta(m_state.block.decodeType)) m_rawLen = std::min(m_rawLen, kShortQuantumRawLen);
    QuantumHeader header;
    switch (ReadQuantumHeader(Rest(), m_state.block, m_rawLen, header)) {
        case HeaderStatus::Ok:
            break;
        case HeaderStatus::NeedMore:
            return StepStatus::NeedMore;
        case HeaderStatus::UnusedSpecial:
            return Failed("OODLE ERROR : invalid QH ; unused special value\n");
        case HeaderStatus::NumberTooLarge:
            return Failed("OODLE ERROR : LZ corruption : wholematch offset too large!\n");
    }
    if (m_context.LogsSteps()) {
        Log(kLogInfo, "QH : %d , %d , %08X\n", static_cast<int>(m_rawLen), static_cast<int>(header.compLen),
            header.checkValue);
    }
    if (header.compLen > m_rawLen) return Failed("OODLE ERROR : LZ corruption : qh.compLen > qh_rawLen!\n");
    m_used += header.size;
    if (header.compLen > Rest().size()) return StepStatus::NeedMore;
    if (m_context.checkCRC && header.hasCheck) {
        return Failed("OODLE ERROR : check value not verified : its hash is not known to this decoder\n");
    }
    if (!DecodePayload(header)) return StepStatus::Failed;
    m_used += header.compLen;
    return StepStatus::Done;
}

bool Step::DecodePayload(const QuantumHeader& header) const {
    return header.kind == QuantumKind::Coded ? DecodeCoded(header) : WriteSimple(header);
}

bool Step::WriteSimple(const QuantumHeader& header) const {
    if (!Check(static_cast<std::int64_t>(m_rawLen) <= WindowLeft(),
               "OODLE ERROR : LZ corruption : overrun!\n")) {
        return false;
    }
    if (header.kind == QuantumKind::WholeMatch) {
        const auto reach = static_cast<std::uint64_t>(m_context.rawPos - m_context.resetPos);
        if (!Check(header.distance <= reach,
                   "OODLE ERROR : LZ corruption : wholematch offset too large!\n") ||
            !Check(header.distance > 1, "OODLE ERROR : corruption : matchOff > 1\n")) {
            return false;
        }
    }
    if (!m_context.phases.write) return true;
    switch (header.kind) {
        case QuantumKind::WholeMatch:
            RepeatBytes(m_context.Out(), static_cast<std::size_t>(header.distance), m_rawLen);
            break;
        case QuantumKind::Memset:
            std::memset(m_context.Out(), header.fill, m_rawLen);
            break;
        default:
            std::memcpy(m_context.Out(), Rest().data(), m_rawLen);
            break;
    }
    return true;
}

bool Step::DecodeCoded(const QuantumHeader& header) const {
    const auto row = std::ranges::find_if(
        kQuantumDecoders, [&](const auto& decoder) { return decoder.type == m_state.block.decodeType; });
    if (!Check(row != std::end(kQuantumDecoders),
               "OODLE ERROR : LZ corruption : DecodeOneQ invalid decodeType!\n")) {
        return false;
    }
    const Quantum quantum{.context = m_context, .rawLen = m_rawLen, .payload = Rest().first(header.compLen)};
    const std::ptrdiff_t used = row->decode ? row->decode(quantum) : -1;
    return Check(used >= 0, "OODLE ERROR : LZ corruption : DecodeOneQuantum fail!\n") &&
           Check(static_cast<std::int64_t>(m_rawLen) <= WindowLeft(),
                 "OODLE ERROR : LZ corruption : overrun!\n") &&
           Check(static_cast<std::size_t>(used) == header.compLen,
                 "OODLE ERROR : LZ corruption : not complen!\n");
}

}  // namespace

bool DecodeSome(OodleLZDecoderState& state, std::span<const std::uint8_t> comp, DecodeSomeResult& result) {
    result = {};
    if (++state.callsWithoutProgress >= kMaxCallsWithoutProgress) {
        return Fail("OODLE ERROR : 1000 calls without progress!\n");
    }
    return Step(state, comp).Run(result) != StepStatus::Failed;
}

}  // namespace oo2
