// The part of the file system that a watcher needs, so that tests can replace it, and the changes that a
// watcher reports.
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
    created = 0,   // seen for the first time
    modified = 1,  // seen again with another last-write time, later or earlier
    erased = 2,    // no longer there
};

}  // namespace util

namespace orvel::util {

using ::util::FileStatus;

// path: the full path in UTF-16 units.
using FileStatusCallback = std::function<void(const std::wstring& path, FileStatus status)>;

class FileSystem {
  public:
    using Visitor = std::function<void(const platform::FolderEntry&)>;

    // Both work as platform.h describes.
    virtual std::error_code ListFolder(const std::wstring& folder, const Visitor& visit) = 0;
    virtual std::optional<std::int64_t> LastWriteTime(const std::wstring& path, std::error_code& error) = 0;

  protected:
    ~FileSystem() = default;  // no owner holds it by this type
};

// The operating system's file system. It has no state, so any thread may use it. Never destroyed.
FileSystem& RealFileSystem();

}  // namespace orvel::util
