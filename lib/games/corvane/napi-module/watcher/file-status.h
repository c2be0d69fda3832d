// What happened to a file or folder, and who wants to know.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

namespace util {

enum class FileStatus : std::uint8_t {
    created = 0,   // met for the first time
    modified = 1,  // met again with another last-write time, be it a later or an earlier one
    erased = 2,    // no longer there
};

// path: the full path, in UTF-16 units.
using FileStatusCallback = std::function<void(const std::wstring& path, FileStatus status)>;

}  // namespace util
