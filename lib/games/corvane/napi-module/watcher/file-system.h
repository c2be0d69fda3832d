// The file system as a watched folder needs it, so that tests can put their own in its place.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <system_error>

#include "util/platform/platform.h"

namespace util {

class FileSystem {
  public:
    using Visitor = std::function<void(const orvel::util::platform::FolderEntry&)>;

    // Both as platform.h describes them.
    virtual std::error_code ListFolder(const std::wstring& folder, const Visitor& visit) = 0;
    virtual std::optional<std::int64_t> LastWriteTime(const std::wstring& path, std::error_code& error) = 0;

  protected:
    ~FileSystem() = default;  // nobody owns one by this type
};

// The operating system's. It has no state, so any thread may use it, and is never destroyed.
FileSystem& RealFileSystem();

}  // namespace util
