// Watches a folder by polling, on its own thread.
//
// Polling is deliberate: it needs no notifications from the system, and it sees what is appended to a file
// that stays open.
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

// Constructed, started once, stopped once and destroyed by one thread, or by threads that take turns.
class FolderWatcher {
  public:
    static constexpr std::chrono::milliseconds kDelay{500};

    // Takes the snapshot that the first cycle compares with: what exists now is reported once it changes.
    // Throws std::filesystem::filesystem_error if the folder cannot be listed. delay: from the end of one
    // cycle to the start of the next.
    explicit FolderWatcher(std::wstring folder, FileSystem& fileSystem = RealFileSystem(),
                           std::chrono::milliseconds delay = kDelay);
    FolderWatcher(const FolderWatcher&) = delete;
    FolderWatcher& operator=(const FolderWatcher&) = delete;
    // Stops it.
    ~FolderWatcher();

    // Starts polling. The callback runs on the polling thread, and the next entry waits for its return. It
    // must not throw: an exception ends the process. A failure of the file system ends the cycle with a line
    // on standard output, not the polling. Throws std::system_error if no thread can be started.
    void Start(FileStatusCallback callback);

    // Cuts the current delay and all pauses short, waits for the cycle with all its reports, and ends the
    // thread. During a delay, Stop runs one last cycle. Changes behind a running scan are missed. A second
    // Stop does nothing. The callback must not call it.
    void Stop();

    // From now on nothing is reported; Stop then waits at most for the callback that is running. Any thread.
    void Abandon() { m_snapshot.Abandon(); }

    // Call before Start. Takes over what a stopped watcher of the same folder had not reported when it was
    // abandoned.
    void GoOnFrom(const FolderWatcher& stopped) { m_snapshot.GoOnFrom(stopped.m_snapshot); }

    // For the callback: sleeps until the time has passed or Stop is called.
    void Pause(std::chrono::milliseconds time);

  private:
    void Poll(const FileStatusCallback& callback);
    void RunCycle(const FileStatusCallback& callback);

    const std::chrono::milliseconds m_delay;
    FolderSnapshot m_snapshot;  // the polling thread's while it runs, except Abandon
    std::thread m_thread;
    std::atomic<bool> m_running = false;
    std::mutex m_pauseMutex;
    std::condition_variable m_stopping;
};

}  // namespace orvel::util
