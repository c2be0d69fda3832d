// What a folder held at the last look, and what differs at the next.
//
// A look is one listing of the folder with the last-write times of its entries. While nothing changes, it
// asks the file system nothing else: the time queries are nearly all of its cost, and asking first whether
// each recorded path still exists would double it.
#pragma once

#include <atomic>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <system_error>
#include <unordered_map>
#include <vector>

#include "games/corvane/napi-module/watcher/file-system.h"

namespace orvel::util {

// One thread at a time. The file system must outlive it.
class FolderSnapshot {
  public:
    // Records the entries of the folder and its sub-folders, files and folders alike. A link to a folder is
    // an entry but is not entered. Throws std::filesystem::filesystem_error if the folder itself cannot be
    // listed. The entries of a sub-folder that cannot be listed are `created` once it can.
    FolderSnapshot(std::wstring folder, FileSystem& fileSystem);

    // Looks again, records each difference and reports it: first `erased` entries, then `created` and
    // `modified` ones, each with its time at the moment of its report. An entry that vanishes before its
    // report is passed over.
    //
    // A sub-folder that has vanished or may not be read is passed over. Its entries stay recorded until they
    // are known to be gone. Any other failure to list is thrown as std::filesystem::filesystem_error, after
    // all differences found have been reported.
    void Update(const FileStatusCallback& report);

    // From now on nothing is reported. A change whose report has not ended is not recorded either. Any
    // thread.
    void Abandon() { m_abandoned = true; }

    // Continues another snapshot of the folder, which has ended: what that one has recorded counts as
    // reported; this one reports the rest.
    void GoOnFrom(const FolderSnapshot& ended);

  private:
    struct Record {
        std::int64_t lastWriteTime;
        std::uint32_t lastSeen;  // the number of the last look that saw it
    };

    struct Difference {
        std::wstring path;
        std::int64_t lastWriteTime;
    };

    struct Failure {
        std::filesystem::filesystem_error error;
        bool isOfSubFolder;
    };

    void Look();
    void List(const std::wstring& folder, std::vector<std::wstring>& pending);
    void Meet(const std::wstring& path, std::int64_t lastWriteTime);
    void NoteFailure(const std::wstring& folder, const std::error_code& error);
    void ReportErased(const FileStatusCallback& report);
    void ReportPresent(const FileStatusCallback& report);

    const std::wstring m_folder;
    std::unordered_map<std::wstring, Record> m_paths;
    FileSystem& m_fileSystem;
    std::atomic<bool> m_abandoned = false;

    // The latest look: its number; the entries with a new time or without a record; the first failure to
    // list; whether a report has taken time since, so that the times may be out of date.
    std::uint32_t m_look = 0;
    std::vector<Difference> m_differences;
    std::optional<Failure> m_failure;
    bool m_timesAreOld = false;
};

}  // namespace orvel::util
