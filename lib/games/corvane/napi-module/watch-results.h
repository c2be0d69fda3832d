// Turns each change of a replay in a watched folder into a result.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "games/corvane/napi-module/watcher/file-system.h"

namespace orvel::corvane {

// One thread at a time may use it.
class WatchResults {
  public:
    WatchResults() = default;
    WatchResults(const WatchResults&) = delete;
    WatchResults& operator=(const WatchResults&) = delete;
    virtual ~WatchResults() = default;

    // Queues the result for the current delivery channel. Returns false if the change has no result.
    virtual bool Deliver(const std::wstring& path, util::FileStatus status) = 0;
};

// key: the caller's key for replays without their own; may be empty.

// For StartCorvaneWatcher: a document for each `modified` replay. A replay that cannot be read ends the
// process; standard error then has its name and the failure's text.
std::unique_ptr<WatchResults> ResultsForApplication(std::vector<std::uint8_t> key);

// For corvane_napi/client: a document, or the failure to read it, for each replay that is created or
// modified, with its path. A replay that is moved within the folder goes on under its new path. Another
// replay that takes over a path is told from its start.
std::unique_ptr<WatchResults> ResultsForClient(std::vector<std::uint8_t> key);

}  // namespace orvel::corvane
