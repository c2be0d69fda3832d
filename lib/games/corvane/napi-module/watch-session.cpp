#include "games/corvane/napi-module/watch-session.h"

#include <utility>

namespace orvel::corvane {

WatchSession::WatchSession(std::wstring folder, std::unique_ptr<WatchResults> results)
    : m_results(std::move(results)), m_watcher(std::move(folder)) {}

void WatchSession::Start() {
    m_watcher.Start([this](const std::wstring& path, util::FileStatus status) {
        if (m_results->Deliver(path, status)) m_watcher.Pause(kDeliveryPause);
    });
}

void WatchSession::Replace(WatchSession& other) {
    other.m_watcher.Abandon();
    other.m_watcher.Stop();
    m_watcher.GoOnFrom(other.m_watcher);
}

}  // namespace orvel::corvane
