// The LZ decoder's entries. The input is 1 byte of flags, 3 bytes of raw length, then the stream. Flags:
//    1  unsafe compressors are refused
//    2  check values are asked for
//    4  every line is logged
//    8  a dictionary block stands before the output
//   16  the caller gives the decoder memory
//   32  two thread phases
//   64  the progress callback cancels
#include "lz-target.h"

namespace {

constexpr std::size_t kMaxRawLen = 0x90000;  // two blocks and a part of a third

int CancelInTheMiddle(void*, const std::uint8_t*, std::ptrdiff_t rawLen, const std::uint8_t*, std::ptrdiff_t,
                      std::ptrdiff_t rawDone, std::ptrdiff_t) {
    return rawDone > rawLen / 2 ? 1 : 0;
}

fuzz::LzOutcome Run(std::uint32_t flags, std::size_t rawLen, std::span<const std::uint8_t> stream,
                    oo2::DecodePath path) {
    const bool phased = (flags & 32) != 0;
    const std::size_t dictionary = (flags & 8) != 0 ? OODLELZ_BLOCK_LEN : 0;
    const bool ownMemory = phased || (flags & 16) != 0;
    fuzz::ExactBlock comp(stream);
    fuzz::ExactBlock window(dictionary + rawLen);
    std::fill_n(window.data(), dictionary, std::uint8_t{0x55});
    fuzz::ExactBlock memory(ownMemory ? OodleLZ_ThreadPhased_BlockDecoderMemorySizeNeeded : 0);
    oo2::DecompressArgs args{.compBuf = comp.data(),
                             .compBufSize = static_cast<std::ptrdiff_t>(comp.size()),
                             .rawBuf = window.data() + dictionary,
                             .rawLen = static_cast<std::ptrdiff_t>(rawLen),
                             .fuzzSafe = (flags & 1) != 0,
                             .checkCRC = (flags & 2) != 0,
                             .verbosity = (flags & 4) != 0 ? 3 : 0,
                             .decBufBase = dictionary > 0 ? window.data() : nullptr,
                             .fpCallback = (flags & 64) != 0 ? &CancelInTheMiddle : nullptr,
                             .decoderMemory = ownMemory ? memory.data() : nullptr,
                             .decoderMemorySize = static_cast<std::ptrdiff_t>(memory.size()),
                             .threadPhase = phased ? OodleLZ_Decode_ThreadPhase1 : OodleLZ_Decode_Unthreaded};
    fuzz::LzOutcome outcome;
    // After a failed phase 1, phase 2 finds zeros.
    std::ranges::fill(memory.Span(), std::uint8_t{0});
    outcome.result = oo2::Decompress(args, path);
    if (phased) {
        args.threadPhase = OodleLZ_Decode_ThreadPhase2;
        outcome.result = oo2::Decompress(args, path);
    }
    const auto raw = window.Span().subspan(dictionary);
    if (outcome.result != 0) outcome.raw.assign(raw.begin(), raw.end());
    return outcome;
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Settings settings({data, size});
    const std::uint32_t flags = settings.Take(1);
    // A threaded call decodes at most one block.
    const std::size_t limit = (flags & 32) != 0 ? OODLELZ_BLOCK_LEN : kMaxRawLen;
    const std::size_t rawLen = settings.Take(3) % (limit + 1);
    const fuzz::LzOutcome outcome =
        fuzz::OnBothPaths([&](oo2::DecodePath path) { return Run(flags, rawLen, settings.Rest(), path); });
    fuzz::Require(outcome.result == 0 || outcome.result == static_cast<std::ptrdiff_t>(rawLen),
                  "the result is the raw length or 0");
    return 0;
}
