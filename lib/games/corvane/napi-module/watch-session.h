// The watching of a folder from one start to its end: each change becomes a result.
#pragma once

#include <chrono>
#include <memory>
#include <string>

#include "games/corvane/napi-module/watch-results.h"
#include "games/corvane/napi-module/watcher/folder-watcher.h"

namespace orvel::corvane {

// Between two deliveries, so that they do not crowd the JavaScript thread.
constexpr std::chrono::milliseconds kDeliveryPause{100};

// Constructed, started and destroyed by threads that take turns; parses and delivers on the watcher's thread.
class WatchSession {
  public:
    // Throws std::filesystem::filesystem_error if the folder cannot be listed.
    WatchSession(std::wstring folder, std::unique_ptr<WatchResults> results);

    // Throws std::system_error if there can be no thread.
    void Start();

    // Nobody can receive anything any more: what is still to be reported is not even parsed. Any thread.
    void Abandon() { m_watcher.Abandon(); }

    // Ends the other session, and has its own report what the other one had not reported yet. To be called
    // before Start.
    void Replace(WatchSession& other);

  private:
    const std::unique_ptr<WatchResults> m_results;
    util::FolderWatcher m_watcher;  // the last member: stopped before the other one goes
};

}  // namespace orvel::corvane
