// Watches a folder by polling, on a thread of its own.
//
// Polling is deliberate: it needs no change notification from the system and catches what is appended to a
// file that stays open.
#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>

#include "games/corvane/napi-module/watcher/file-system.h"
#include "games/corvane/napi-module/watcher/folder-snapshot.h"

namespace orvel::util {

// Constructed, started once, stopped once, destroyed: all by one thread, or by threads that take turns.
class FolderWatcher {
  public:
    static constexpr std::chrono::milliseconds kDelay{500};

    // Takes the snapshot that the first cycle compares with: what is there now is reported only once it
    // changes. Throws std::filesystem::filesystem_error if the folder cannot be listed. delay: from the end
    // of one cycle to the start of the next.
    explicit FolderWatcher(std::wstring folder, FileSystem& fileSystem = RealFileSystem(),
                           std::chrono::milliseconds delay = kDelay);
    FolderWatcher(const FolderWatcher&) = delete;
    FolderWatcher& operator=(const FolderWatcher&) = delete;
    // Stops it.
    ~FolderWatcher();

    // Starts polling. The callback runs on the polling thread; the next entry is looked at when it has
    // returned. It must not throw: that ends the process. What goes wrong with the file system ends a cycle
    // with a line on standard output, not the polling. Throws std::system_error if there can be no thread.
    void Start(FileStatusCallback callback);

    // Cuts the current delay and all pauses short, lets the polling thread finish its cycle with all its
    // reports, and waits for it. A delay belongs to the cycle after it, so what changed during the delay is
    // still reported; what changes behind a cycle that is already looking is not. Does nothing the second
    // time. Not to be called by the callback.
    void Stop();

    // No report is made any more: a Stop then waits for the callback that runs, at most. Any thread.
    void Abandon() { m_snapshot.Abandon(); }

    // To be called before Start. Reports what a watcher of the same folder, which is stopped, had not
    // reported when it was abandoned.
    void GoOnFrom(const FolderWatcher& stopped) { m_snapshot.GoOnFrom(stopped.m_snapshot); }

    // For the callback: sleeps until the time has passed or the watcher is being stopped.
    void Pause(std::chrono::milliseconds time);

  private:
    void Poll(const FileStatusCallback& callback);
    void RunCycle(const FileStatusCallback& callback);

    const std::chrono::milliseconds m_delay;
    FolderSnapshot m_snapshot;  // but for Abandon the polling thread's while it runs
    std::thread m_thread;
    std::atomic<bool> m_running = false;
    std::mutex m_pauseMutex;
    std::condition_variable m_stopping;
};

}  // namespace orvel::util
