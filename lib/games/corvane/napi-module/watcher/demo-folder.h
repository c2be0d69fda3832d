// Where the game keeps what belongs to the user.
#pragma once

#include <filesystem>
#include <optional>

namespace orvel::util {

// Both look afresh at every call.

// The folder "CorvaneGame" in the user's local application data folder; nothing if there is none.
std::optional<std::filesystem::path> LocateGameFolder();

// The game's folder for replays, "Saved", "Demos" in the one above; nothing if it is not there.
std::optional<std::filesystem::path> LocateDemoFolder();

}  // namespace orvel::util
