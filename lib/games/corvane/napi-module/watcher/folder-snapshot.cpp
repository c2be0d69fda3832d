#include "games/corvane/napi-module/watcher/folder-snapshot.h"

#include <utility>

#include "util/platform/platform.h"

namespace orvel::util {
namespace {

namespace fs = std::filesystem;
using platform::FolderEntry;
using platform::WideToUtf8;

bool SaysGone(const std::error_code& error) {
    return error == std::errc::no_such_file_or_directory || error == std::errc::not_a_directory;
}

// The folder's path, ready for a name to be appended.
std::wstring AsPrefix(std::wstring folder) {
    constexpr auto kSeparator = static_cast<wchar_t>(fs::path::preferred_separator);
    if (!folder.empty() && folder.back() != L'/' && folder.back() != kSeparator) folder.push_back(kSeparator);
    return folder;
}

}  // namespace

FolderSnapshot::FolderSnapshot(std::wstring folder, FileSystem& fileSystem)
    : m_folder(std::move(folder)), m_fileSystem(fileSystem) {
    Look();
    if (m_failure && !m_failure->isOfSubFolder) throw m_failure->error;
    for (Difference& entry : m_differences) {
        m_paths.insert_or_assign(std::move(entry.path), Record{entry.lastWriteTime, m_look});
    }
}

void FolderSnapshot::Update(const FileStatusCallback& report) {
    Look();
    ReportErased(report);
    ReportPresent(report);
    if (m_failure) throw m_failure->error;
}

void FolderSnapshot::GoOnFrom(const FolderSnapshot& ended) {
    for (auto& [path, record] : m_paths) {
        const auto reported = ended.m_paths.find(path);
        if (reported != ended.m_paths.end()) record.lastWriteTime = reported->second.lastWriteTime;
    }
}

void FolderSnapshot::Look() {
    ++m_look;
    m_differences.clear();
    m_failure.reset();
    m_timesAreOld = false;
    std::vector<std::wstring> pending = {m_folder};
    while (!pending.empty()) {
        const std::wstring folder = std::move(pending.back());
        pending.pop_back();
        List(folder, pending);
    }
}

void FolderSnapshot::List(const std::wstring& folder, std::vector<std::wstring>& pending) {
    std::wstring path = AsPrefix(folder);
    const std::size_t prefix = path.size();
    const std::error_code error = m_fileSystem.ListFolder(folder, [&](const FolderEntry& entry) {
        path.replace(prefix, std::wstring::npos, entry.name);
        if (entry.lastWriteTime) Meet(path, *entry.lastWriteTime);
        if (entry.isFolder) pending.push_back(path);
    });
    if (error) NoteFailure(folder, error);
}

void FolderSnapshot::Meet(const std::wstring& path, std::int64_t lastWriteTime) {
    const auto recorded = m_paths.find(path);
    if (recorded != m_paths.end()) {
        recorded->second.lastSeen = m_look;
        if (recorded->second.lastWriteTime == lastWriteTime) return;
    }
    m_differences.push_back({path, lastWriteTime});
}

void FolderSnapshot::NoteFailure(const std::wstring& folder, const std::error_code& error) {
    const bool isSubFolder = folder != m_folder;
    if (m_failure || (isSubFolder && (SaysGone(error) || error == std::errc::permission_denied))) return;
    const std::string operation = isSubFolder ? "operator++" : "recursive_directory_iterator";
    const std::string what = "recursive_directory_iterator::" + operation + " [" + WideToUtf8(folder) + "]";
    m_failure = {fs::filesystem_error(what, error), isSubFolder};
}

void FolderSnapshot::ReportErased(const FileStatusCallback& report) {
    for (auto recorded = m_paths.begin(); recorded != m_paths.end() && !m_abandoned;) {
        // An entry that was not listed may still exist: its folder may have become unreadable.
        std::error_code error;
        const bool present = recorded->second.lastSeen == m_look ||
                             m_fileSystem.LastWriteTime(recorded->first, error) || !SaysGone(error);
        if (present) {
            ++recorded;
            continue;
        }
        m_timesAreOld = true;
        report(recorded->first, FileStatus::erased);
        recorded = m_paths.erase(recorded);
    }
}

void FolderSnapshot::ReportPresent(const FileStatusCallback& report) {
    for (const Difference& entry : m_differences) {
        if (m_abandoned) return;
        std::error_code error;
        const auto time = m_timesAreOld ? m_fileSystem.LastWriteTime(entry.path, error) : entry.lastWriteTime;
        if (!time) continue;
        const auto [recorded, isNew] = m_paths.try_emplace(entry.path, Record{*time, m_look});
        const std::int64_t before = std::exchange(recorded->second.lastWriteTime, *time);
        if (!isNew && before == *time) continue;
        m_timesAreOld = true;
        report(recorded->first, isNew ? FileStatus::created : FileStatus::modified);
        // Abandoned during the report, which may have reached nobody. So the next snapshot reports the change
        // again.
        if (m_abandoned && !isNew) recorded->second.lastWriteTime = before;
    }
}

}  // namespace orvel::util
