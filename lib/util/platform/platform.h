// Everything that differs between Windows and Linux, behind one set of functions. Any thread may call them.
//
// Paths are wide strings of UTF-16 units, one per wchar_t. On Linux a wchar_t has 32 bits, and the upper half
// is unused. A Linux file name need not be valid UTF-8: each invalid byte 0x80 to 0xFF becomes the unpaired
// unit U+DC80 to U+DCFF, and that byte again when the file is opened.
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

// UTF-16 to UTF-8, like WideCharToMultiByte at code page 65001: an unpaired surrogate becomes EF BF BD.
std::string WideToUtf8(std::wstring_view units);

// From a wide string to a path, and back. Both keep names that are not valid Unicode.
std::filesystem::path PathFromWide(std::wstring_view units);
std::wstring WideFromPath(const std::filesystem::path& path);

// A file on a disk, open for reading while the object lives. Others may write, rename and delete it. Programs
// that the host starts do not inherit it. One thread at a time.
class DiskFile {
  public:
    // Opens only regular files: no folder, no pipe, no device.
    explicit DiskFile(const std::wstring& path);
    ~DiskFile();
    DiskFile(const DiskFile&) = delete;
    DiskFile& operator=(const DiskFile&) = delete;

    bool IsOpen() const { return m_size >= 0; }
    // The size in bytes when the file was opened; -1 if it is not open.
    std::int64_t Size() const { return m_size; }
    // Reads up to count bytes from a position. Returns fewer only at the end of the file, -1 if reading
    // fails.
    std::ptrdiff_t ReadAt(std::int64_t position, char* to, std::size_t count) const;

  private:
    std::intptr_t m_handle;  // the system's: a descriptor, a HANDLE
    std::int64_t m_size = -1;
};

// The user's local application data folder, looked up at each call; nothing if there is none. On Linux
// $LOCALAPPDATA if set, else $XDG_DATA_HOME, else ~/.local/share.
std::optional<std::filesystem::path> LocalApplicationDataFolder();

// A file's last-write time in the file system's full resolution (Windows: 100 ns since 1601; Linux:
// nanoseconds since 1970), asked for by path; links are followed. Nothing if it cannot be read; error then
// says why.
std::optional<std::int64_t> LastWriteTime(const std::filesystem::path& path, std::error_code& error);

// One entry of a folder.
struct FolderEntry {
    std::wstring_view name;                     // valid only during the visit
    bool isFolder;                              // a real folder, not a link to one
    std::optional<std::int64_t> lastWriteTime;  // as LastWriteTime gives it; nothing if it cannot be read
};

// Visits the entries of a folder, one level deep, in the file system's order. Each time is asked for by path:
// on Windows a listing's own times lag while a file is open for writing. Returns an error if the folder
// cannot be opened or read to its end; the visits before it stay valid.
std::error_code ListFolder(const std::wstring& folder, const std::function<void(const FolderEntry&)>& visit);

// Text for a debugger: OutputDebugStringA, or standard error on Linux.
void DebugOutput(const char* text);

}  // namespace orvel::util::platform
