// One Kraken quantum. Settings: 1 byte of flags (1 the first after a reset, 2 scratch that is too small), 3
// bytes of raw length. The rest is the payload.
#include "lz-target.h"
#include "oodle/oodle2/core/newlz.h"

namespace {

constexpr std::size_t kMaxRawLen = 0x40000;
constexpr std::size_t kChunkLen = 0x20000;
constexpr std::size_t kHistory = 0x1000;  // bytes before the quantum that matches may reach

fuzz::LzOutcome Run(std::uint32_t flags, std::size_t rawLen, std::span<const std::uint8_t> payload,
                    oo2::DecodePath path) {
    const std::size_t history = (flags & 1) != 0 ? 0 : kHistory;
    fuzz::ExactBlock comp(payload);
    fuzz::ExactBlock window(history + rawLen);
    for (std::size_t i = 0; i < history; ++i) window.data()[i] = static_cast<std::uint8_t>(i * 7 + i / 256);
    const std::size_t scratchSize = oo2::KrakenChunkScratch(std::min(rawLen, kChunkLen));
    fuzz::ExactBlock scratch((flags & 2) != 0 ? scratchSize / 2 : scratchSize);
    fuzz::LzOutcome outcome;
    oo2::DecodeContext context;
    context.windowBase = window.data();
    context.rawPos = static_cast<std::int64_t>(history);
    context.scratch = scratch.Span();
    context.chunkScratch = scratch.size();
    context.path = path;
    outcome.result = oo2::Kraken_DecodeOneQuantum({context, rawLen, comp.Span()});
    if (outcome.result >= 0) outcome.raw.assign(window.Span().begin(), window.Span().end());
    return outcome;
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Settings settings({data, size});
    const std::uint32_t flags = settings.Take(1);
    const std::size_t rawLen = settings.Take(3) % kMaxRawLen + 1;
    const auto payload = settings.Rest();
    const fuzz::LzOutcome outcome =
        fuzz::OnBothPaths([&](oo2::DecodePath path) { return Run(flags, rawLen, payload, path); });
    fuzz::Require(outcome.result <= std::ssize(payload), "no more bytes are taken than there are");
    return 0;
}
