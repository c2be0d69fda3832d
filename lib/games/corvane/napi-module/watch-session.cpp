#include "games/corvane/napi-module/watch-session.h"

#include <cstdio>
#include <filesystem>
#include <string>
#include <system_error>
#include <utility>

#include <nlohmann/json.hpp>

#include "games/corvane/corvane-lib/src/replay-parser.h"
#include "games/corvane/corvane-lib/src/ue4/util/json-object.h"
#include "games/corvane/napi-module/delivery-channel.h"
#include "games/corvane/napi-module/document-text.h"
#include "games/corvane/napi-module/process-end.h"
#include "util/platform/platform.h"

namespace orvel::corvane {
namespace {

// Pipes and folders may have a replay's name as well.
bool IsReplayFile(const std::wstring& path) {
    const std::filesystem::path file = util::platform::PathFromWide(path);
    if (file.extension() != ".replay") return false;
    std::error_code error;
    return std::filesystem::is_regular_file(file, error);
}

// Says which file the end of the process is due to: nothing else tells, and corvane_napi/client reads it.
void NameCulprit(const std::wstring& path) {
    const std::string name = util::platform::WideToUtf8(path);
    std::fprintf(stderr, "[ orvel::corvane::WatchSession::OnReport ] Ending the process over %s\n",
                 name.c_str());
}

}  // namespace

WatchSession::WatchSession(std::wstring folder, std::vector<std::uint8_t> key)
    : m_key(std::move(key)), m_watcher(std::move(folder)) {}

void WatchSession::Start() {
    m_watcher.Start([this](const std::wstring& path, util::FileStatus status) { OnReport(path, status); });
}

void WatchSession::Replace(WatchSession& other) {
    other.m_watcher.Abandon();
    other.m_watcher.Stop();
    m_watcher.GoOnFrom(other.m_watcher);
}

void WatchSession::OnReport(const std::wstring& path, util::FileStatus status) {
    if (status != util::FileStatus::modified) return;
    try {
        if (!IsReplayFile(path)) return;
        DeliverReplay(path);
    } catch (...) {
        NameCulprit(path);
        EndProcessWithCurrentException();
    }
    m_watcher.Pause(kDeliveryPause);
}

void WatchSession::DeliverReplay(const std::wstring& path) {
    const auto [entry, isFirstParse] = m_states.try_emplace(path);
    ue4::ResumeState& resume = entry->second;
    ReplayParser parser(path);
    parser.ParseReplay(resume, m_key);

    nlohmann::json& document = parser.Document();
    if (isFirstParse) ue4::AsObject(document)["Creation"] = CreationMember(path, parser.FileInfo().Timestamp);
    if (resume.IsKeyFromFile) ue4::AsObject(document)["PlayerStateEncryptionKey"] = 1;
    // The game still writes to a file of which there is nothing to tell yet.
    if (document.empty()) ue4::AsObject(document)["GameAlive"] = 1;
    QueueText(parser.TakeText());
}

}  // namespace orvel::corvane
