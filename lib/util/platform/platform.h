// Everything in which Windows and Linux differ, behind one set of functions. Any thread may call each of
// them.
//
// Paths are wide strings of 16-bit (UTF-16) units on both systems, one unit per wchar_t; on Linux, where
// wchar_t has 32 bits, the upper half is unused. A Linux file name that is not valid UTF-8 is kept: each
// offending byte 0x80 to 0xFF stands as the unpaired unit U+DC80 to U+DCFF and becomes that byte again when
// the file is opened.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>

namespace orvel::util::platform {

// UTF-16 to UTF-8 as WideCharToMultiByte does it at code page 65001: an unpaired surrogate becomes EF BF BD.
std::string WideToUtf8(std::wstring_view units);

// The path of a wide string, and back. Both keep names that are not valid Unicode.
std::filesystem::path PathFromWide(std::wstring_view units);
std::wstring WideFromPath(const std::filesystem::path& path);

// A file on a disk, open for reading while the object lives. Others may go on writing, renaming and deleting
// it, and programs that the host starts do not inherit it. One thread at a time.
class DiskFile {
  public:
    // Does not open what is no regular file: a folder, a pipe, a device.
    explicit DiskFile(const std::wstring& path);
    ~DiskFile();
    DiskFile(const DiskFile&) = delete;
    DiskFile& operator=(const DiskFile&) = delete;

    bool IsOpen() const { return m_size >= 0; }
    // In bytes, as it was when the file was opened; -1 if it is not open.
    std::int64_t Size() const { return m_size; }
    // Reads the bytes from a position on, at most count: fewer only at the end of the file, -1 if reading
    // fails.
    std::ptrdiff_t ReadAt(std::int64_t position, char* to, std::size_t count) const;

  private:
    std::intptr_t m_handle;  // the system's: a descriptor, a HANDLE
    std::int64_t m_size = -1;
};

// The user's local application data folder, asked for afresh by every call: nothing if there is none. On
// Linux $LOCALAPPDATA if set, else $XDG_DATA_HOME, else ~/.local/share.
std::optional<std::filesystem::path> LocalApplicationDataFolder();

// A file's last-write time in the file system's full resolution (Windows: units of 100 ns since 1601; Linux:
// nanoseconds since 1970), asked for by path and following links. Nothing if it cannot be read; error then
// says why.
std::optional<std::int64_t> LastWriteTime(const std::filesystem::path& path, std::error_code& error);

// One entry of a folder.
struct FolderEntry {
    std::wstring_view name;                     // valid during the visit only
    bool isFolder;                              // a folder itself, not a link to one
    std::optional<std::int64_t> lastWriteTime;  // as LastWriteTime has it; nothing if it cannot be read
};

// Visits what a folder lists, one level deep, in the file system's order. Each entry's time is asked for by
// its path, since a listing's own times lag on Windows while a file is open for writing. Returns the error of
// a folder that cannot be opened or read to its end; what was visited before stands.
std::error_code ListFolder(const std::wstring& folder, const std::function<void(const FolderEntry&)>& visit);

// Text for a debugger: OutputDebugStringA, or standard error on Linux.
void DebugOutput(const char* text);

}  // namespace orvel::util::platform
