// The file system as a watched folder needs it, so that tests can put their own in its place, and what a
// watcher reports of it.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <system_error>

#include "util/platform/platform.h"

namespace util {

// What happened to a file or folder.
enum class FileStatus : std::uint8_t {
    created = 0,   // met for the first time
    modified = 1,  // met again with another last-write time, be it a later or an earlier one
    erased = 2,    // no longer there
};

}  // namespace util

namespace orvel::util {

using ::util::FileStatus;

// path: the full path, in UTF-16 units.
using FileStatusCallback = std::function<void(const std::wstring& path, FileStatus status)>;

class FileSystem {
  public:
    using Visitor = std::function<void(const platform::FolderEntry&)>;

    // Both as platform.h describes them.
    virtual std::error_code ListFolder(const std::wstring& folder, const Visitor& visit) = 0;
    virtual std::optional<std::int64_t> LastWriteTime(const std::wstring& path, std::error_code& error) = 0;

  protected:
    ~FileSystem() = default;  // nobody owns one by this type
};

// The operating system's. It has no state, so any thread may use it, and is never destroyed.
FileSystem& RealFileSystem();

}  // namespace orvel::util
