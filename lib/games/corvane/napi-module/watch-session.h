// The watching of the demo folder from one start to its end: re-parses each replay that changes and hands its
// document to the current delivery channel.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

#include "games/corvane/corvane-lib/src/ue4/local-file-replay-streamer.h"
#include "games/corvane/napi-module/watcher/file-system.h"
#include "games/corvane/napi-module/watcher/folder-watcher.h"

namespace orvel::corvane {

// Between two deliveries, so that they do not crowd the JavaScript thread.
constexpr std::chrono::milliseconds kDeliveryPause{100};

// Constructed, started and destroyed by threads that take turns; parses and delivers on the watcher's thread.
// A parse that fails there ends the process, with the failure's text on standard error.
class WatchSession {
  public:
    // key: the caller's replay key, may be empty. Throws std::filesystem::filesystem_error if the folder
    // cannot be listed.
    WatchSession(std::wstring folder, std::vector<std::uint8_t> key);

    // Throws std::system_error if there can be no thread.
    void Start();

    // Nobody can receive anything any more: what is still to be reported is not even parsed. Any thread.
    void Abandon() { m_watcher.Abandon(); }

    // Ends the other session, and has its own report what the other one had not reported yet. To be called
    // before Start.
    void Replace(WatchSession& other);

  private:
    void OnReport(const std::wstring& path, util::FileStatus status);
    void DeliverReplay(const std::wstring& path);

    const std::vector<std::uint8_t> m_key;
    std::unordered_map<std::wstring, ue4::ResumeState> m_states;  // by full path; kept when a file is erased
    util::FolderWatcher m_watcher;                                // the last member: stopped before the others go
};

}  // namespace orvel::corvane
