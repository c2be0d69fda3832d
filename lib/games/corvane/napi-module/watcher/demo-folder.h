// Where the game keeps what belongs to the user.
#pragma once

#include <filesystem>
#include <optional>

namespace util {

// The folder "CorvaneGame" in the user's local application data folder; nothing if there is none. Looks
// afresh at every call.
std::optional<std::filesystem::path> LocateGameFolder();

}  // namespace util
