// AES: both paths must give the same. Settings: 1 byte of flags (bits 0 and 1 the key's length, 4 padding is
// removed, 8 in place), 2 bytes of output capacity; then the key. The rest is the input.
#include "util/aes.h"

#include <array>

#include "fuzz-target.h"

namespace {

using namespace orvel::util::data;

struct Outcome {
    int result = 0;
    std::uint32_t padding = 0;
    std::vector<std::uint8_t> output;
    bool operator==(const Outcome&) const = default;
};

Outcome Run(AesPath path, std::span<const std::uint8_t> input, std::span<std::uint8_t> key,
            std::uint32_t flags, std::size_t capacity) {
    Outcome outcome;
    const bool inPlace = (flags & 8) != 0;
    fuzz::ExactBlock in(input);
    fuzz::ExactBlock out(inPlace ? 0 : capacity);
    // What is not written must stay the same on both paths.
    std::ranges::fill(out.Span(), std::uint8_t{0xEE});
    const auto output = inPlace ? in.Span() : out.Span();
    outcome.result = AesDecrypt(in.data(), in.size(), AesKey(key.data(), key.size(), path), output.data(),
                                output.size(), (flags & 4) != 0 ? &outcome.padding : nullptr);
    outcome.output.assign(output.begin(), output.end());
    return outcome;
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    constexpr std::array<std::size_t, 4> kKeyLengths = {16, 24, 32, 20};
    fuzz::Settings settings({data, size});
    const std::uint32_t flags = settings.Take(1);
    const std::size_t capacity = settings.Take(2);
    fuzz::ExactBlock key(kKeyLengths[flags & 3]);
    for (std::uint8_t& byte : key.Span()) byte = static_cast<std::uint8_t>(settings.Take(1));

    const Outcome table = Run(AesPath::Table, settings.Rest(), key.Span(), flags, capacity);
    fuzz::Require(table.result >= kAesSuccess && table.result <= kAesInvalidPadding,
                  "a result is one of five");
    fuzz::Require(
        (table.result == kAesBadKeyLength) == ((flags & 3) == 3 && settings.Rest().size() % 16 == 0),
        "a key of 20 bytes, and no other, is refused");
    if (AesNiAvailable()) {
        fuzz::Require(table == Run(AesPath::AesNi, settings.Rest(), key.Span(), flags, capacity),
                      "both paths give the same");
    }
    return 0;
}
