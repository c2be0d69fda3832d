// The watching of a folder from start to end: each change becomes a result.
#pragma once

#include <chrono>
#include <memory>
#include <string>

#include "games/corvane/napi-module/watch-results.h"
#include "games/corvane/napi-module/watcher/folder-watcher.h"

namespace orvel::corvane {

// The least time between two deliveries, so that the JavaScript thread has time for other work.
constexpr std::chrono::milliseconds kDeliveryPause{100};

// Constructed, started and destroyed by threads that take turns. Parses and delivers on the watcher's thread.
class WatchSession {
  public:
    // Throws std::filesystem::filesystem_error if the folder cannot be listed.
    WatchSession(std::wstring folder, std::unique_ptr<WatchResults> results);

    // Throws std::system_error if no thread can be started.
    void Start();

    // Nobody can receive results any more: what is not reported yet is not even parsed. Any thread.
    void Abandon() { m_watcher.Abandon(); }

    // Ends the other session and takes over what it has not reported. Call before Start.
    void Replace(WatchSession& other);

  private:
    const std::unique_ptr<WatchResults> m_results;
    util::FolderWatcher m_watcher;  // declared last, so destroyed (and stopped) first
};

}  // namespace orvel::corvane
