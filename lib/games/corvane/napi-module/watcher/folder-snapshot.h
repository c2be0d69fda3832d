// What a folder held when it was last looked at, and how it differs now.
//
// A look is one listing of the folder with its entries' last-write times; while nothing changes, nothing else
// is asked of the file system. The time queries are nearly all of its cost, so asking of each recorded path
// whether it still exists before listing anew would double it.
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

// Not for several threads at a time. The file system must outlive it.
class FolderSnapshot {
  public:
    // Records what the folder and its sub-folders hold, files and folders alike; a link to a folder is an
    // entry, but not entered. Throws std::filesystem::filesystem_error if the folder itself cannot be
    // listed; what a sub-folder that cannot be listed holds is `created` once it can.
    FolderSnapshot(std::wstring folder, FileSystem& fileSystem);

    // Looks again, records each difference and reports it: first `erased` for what is gone, then `created`
    // and `modified` for what is there, each with the time that it has when its turn comes. An entry that
    // vanishes before its turn is passed over.
    //
    // A sub-folder that has vanished or may not be read is passed over; what is recorded of it stays recorded
    // for as long as it cannot be said to be gone. Any other failure to list is thrown as
    // std::filesystem::filesystem_error after all differences that were found have been reported.
    void Update(const FileStatusCallback& report);

    // From now on nothing is reported. What has not been reported, or is being reported, is not recorded
    // either. Any thread.
    void Abandon() { m_abandoned = true; }

    // Goes on where another snapshot of the folder has ended: what that one has recorded counts as reported,
    // and what it has not is a difference to this one.
    void GoOnFrom(const FolderSnapshot& ended);

  private:
    struct Record {
        std::int64_t lastWriteTime;
        std::uint32_t lastSeen;  // the number of the look that met it last
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

    // The latest look: its number, what it met with another time than the recorded one or none, the first
    // failure to list, and whether a report has taken time since, so that the times may be out of date.
    std::uint32_t m_look = 0;
    std::vector<Difference> m_differences;
    std::optional<Failure> m_failure;
    bool m_timesAreOld = false;
};

}  // namespace orvel::util
