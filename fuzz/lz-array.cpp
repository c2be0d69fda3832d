// One entropy-coded array with its header. Settings: 1 byte (0 it has a place to be decoded to, else it goes
// into scratch), 3 bytes of capacity, 2 bytes of scratch. The rest is the array.
#include "lz-target.h"
#include "oodle/oodle2/core/newlz_arrays.h"

namespace {

using namespace oo2;

fuzz::LzOutcome Run(bool hasPlace, std::size_t capacity, std::size_t scratchSize,
                    std::span<const std::uint8_t> in, DecodePath path) {
    fuzz::ExactBlock comp(in);
    fuzz::ExactBlock out(capacity);
    fuzz::ExactBlock memory(scratchSize);
    ArrayScratch scratch{.next = memory.data(), .end = memory.data() + memory.size(), .path = path};
    const auto array = newLZ_get_array(comp.Span(), hasPlace ? out.data() : nullptr, capacity, scratch);
    if (!array) return {.result = -1, .raw = {}};
    return {.result = static_cast<std::ptrdiff_t>(array->compUsed),
            .raw = {array->bytes.begin(), array->bytes.end()}};
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Settings settings({data, size});
    const bool hasPlace = settings.Take(1) == 0;
    const std::size_t capacity = settings.Take(3) % (ArrayScratch::kMaxArrayLen + 1);
    const std::size_t scratchSize = std::size_t{settings.Take(2)} * 16;
    fuzz::OnBothPaths(
        [&](DecodePath path) { return Run(hasPlace, capacity, scratchSize, settings.Rest(), path); });
    return 0;
}
