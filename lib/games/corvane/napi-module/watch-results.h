// What becomes of a change in a watched folder: one result for each change of a replay.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "games/corvane/napi-module/watcher/file-system.h"

namespace orvel::corvane {

// Used by one thread at a time.
class WatchResults {
  public:
    WatchResults() = default;
    WatchResults(const WatchResults&) = delete;
    WatchResults& operator=(const WatchResults&) = delete;
    virtual ~WatchResults() = default;

    // Hands the result, if the change has one, to the current delivery channel. Tells whether it had one.
    virtual bool Deliver(const std::wstring& path, util::FileStatus status) = 0;
};

// key: the caller's replay key, may be empty.

// For StartCorvaneWatcher: a document for each `modified` replay. One that cannot be read ends the process,
// with its name and the failure's text on standard error.
std::unique_ptr<WatchResults> ResultsForApplication(std::vector<std::uint8_t> key);

// For corvane_napi/client, whose results name their file: a document for each replay that is created or
// modified, or the failure to read it. A replay that is moved within the folder goes on under its new name,
// and another one that takes a replay's name is told from its start.
std::unique_ptr<WatchResults> ResultsForClient(std::vector<std::uint8_t> key);

}  // namespace orvel::corvane
