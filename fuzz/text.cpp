// UTF-16 to UTF-8, and paths there and back. The input is 16-bit units, or a path's characters.
#include <filesystem>

#include "fuzz-target.h"
#include "util/platform/platform.h"

namespace {

using namespace orvel::util::platform;

void CheckUnits(std::span<const std::uint8_t> bytes) {
    std::wstring units(bytes.size() / 2, L'\0');
    for (std::size_t i = 0; i < units.size(); ++i) {
        units[i] = static_cast<wchar_t>(bytes[2 * i] | bytes[2 * i + 1] << 8);
    }
    const std::string text = WideToUtf8(std::wstring_view(units));
    fuzz::Require(text.size() <= 3 * units.size(), "a unit takes 3 bytes at most");
    // The strict dump refuses what is no UTF-8.
    nlohmann::json(text).dump(-1, ' ', false, nlohmann::json::error_handler_t::strict);
    static_cast<void>(PathFromWide(units));
}

// A file that was listed can be opened: its name survives the way through wide text.
void CheckPath(std::span<const std::uint8_t> bytes) {
    const std::filesystem::path::string_type name(bytes.begin(), bytes.end());
    fuzz::Require(PathFromWide(WideFromPath(name)).native() == name, "a path survives");
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::ExactBlock input({data, size});
    CheckUnits(input.Span());
    CheckPath(input.Span());
    return 0;
}
