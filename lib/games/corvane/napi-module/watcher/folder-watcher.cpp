#include "games/corvane/napi-module/watcher/folder-watcher.h"

#include <exception>
#include <utility>

#include "util/console.h"

namespace orvel::util {

FolderWatcher::FolderWatcher(std::wstring folder, FileSystem& fileSystem, std::chrono::milliseconds delay)
    : m_delay(delay), m_snapshot(std::move(folder), fileSystem) {}

FolderWatcher::~FolderWatcher() { Stop(); }

void FolderWatcher::Start(FileStatusCallback callback) {
    // Set here, not by the thread: so a Stop before the thread's first step works too.
    m_running = true;
    m_thread = std::thread([this, callback = std::move(callback)] { Poll(callback); });
}

void FolderWatcher::Stop() {
    {
        const std::lock_guard lock(m_pauseMutex);
        m_running = false;
    }
    m_stopping.notify_all();
    if (m_thread.joinable()) m_thread.join();
}

void FolderWatcher::Pause(std::chrono::milliseconds time) {
    std::unique_lock lock(m_pauseMutex);
    m_stopping.wait_for(lock, time, [this] { return !m_running; });
}

void FolderWatcher::Poll(const FileStatusCallback& callback) {
    const FileStatusCallback report = [&callback](const std::wstring& path, FileStatus status) noexcept {
        callback(path, status);
    };
    do {
        Pause(m_delay);
        RunCycle(report);
    } while (m_running);
}

void FolderWatcher::RunCycle(const FileStatusCallback& callback) {
    try {
        m_snapshot.Update(callback);
    } catch (const std::exception& failure) {
        const ConsoleFlush flush;
        WriteConsole("[ orvel::util::FolderWatcher::RunCycle ] " + std::string(failure.what()) + "\n");
    }
}

}  // namespace orvel::util
