#include "games/corvane/napi-module/watcher/demo-folder.h"

#include <system_error>

#include "util/platform/platform.h"

namespace util {

std::optional<std::filesystem::path> LocateGameFolder() {
    auto folder = orvel::util::platform::LocalApplicationDataFolder();
    if (!folder) return std::nullopt;
    *folder /= "CorvaneGame";
    std::error_code error;  // what cannot be looked at counts as not there
    if (!std::filesystem::exists(*folder, error)) return std::nullopt;
    return folder;
}

}  // namespace util
