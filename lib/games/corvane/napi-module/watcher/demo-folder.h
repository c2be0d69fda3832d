// Finds the game's folders of this user.
#pragma once

#include <filesystem>
#include <optional>

namespace orvel::util {

// Both look anew at each call.

// "CorvaneGame" in the user's local application data folder; nothing if it is not there.
std::optional<std::filesystem::path> LocateGameFolder();

// The game's folder of replays, "Saved/Demos" in the one above; nothing if it is not there.
std::optional<std::filesystem::path> LocateDemoFolder();

}  // namespace orvel::util
