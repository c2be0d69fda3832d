#include "games/corvane/napi-module/watcher/demo-folder.h"

#include <system_error>
#include <utility>

#include "util/platform/platform.h"

namespace orvel::util {
namespace {

using Folder = std::optional<std::filesystem::path>;

// The folder `name` in `parent`. A folder that cannot be looked at counts as missing.
Folder Below(Folder parent, const std::filesystem::path& name) {
    if (!parent) return std::nullopt;
    *parent /= name;
    std::error_code error;
    return std::filesystem::exists(*parent, error) ? std::move(parent) : std::nullopt;
}

}  // namespace

Folder LocateGameFolder() { return Below(platform::LocalApplicationDataFolder(), "CorvaneGame"); }

Folder LocateDemoFolder() { return Below(LocateGameFolder(), std::filesystem::path("Saved") / "Demos"); }

}  // namespace orvel::util
