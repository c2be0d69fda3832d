// The platform functions on Windows.
#include <windows.h>

#include <climits>
#include <memory>
#include <shlobj.h>

#include "util/platform/platform.h"

namespace orvel::util::platform {
namespace {

std::error_code LastError() { return {static_cast<int>(GetLastError()), std::system_category()}; }

std::int64_t Ticks(const FILETIME& time) {
    return static_cast<std::int64_t>(ULARGE_INTEGER{{time.dwLowDateTime, time.dwHighDateTime}}.QuadPart);
}

struct CloseFile {
    using pointer = HANDLE;
    void operator()(HANDLE file) const { CloseHandle(file); }
};

struct CloseSearch {
    using pointer = HANDLE;
    void operator()(HANDLE search) const { FindClose(search); }
};

// The time of what a link leads to; asking for attributes by path gives the link's own.
std::optional<std::int64_t> TimeBehindLink(const wchar_t* path) {
    constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
    const HANDLE file = CreateFileW(path, FILE_READ_ATTRIBUTES, kShareAll, nullptr, OPEN_EXISTING,
                                    FILE_FLAG_BACKUP_SEMANTICS, nullptr);
    if (file == INVALID_HANDLE_VALUE) return std::nullopt;
    const std::unique_ptr<HANDLE, CloseFile> owner(file);
    FILETIME time;
    if (!GetFileTime(file, nullptr, nullptr, &time)) return std::nullopt;
    return Ticks(time);
}

// The system's last error is set if there is none.
std::optional<std::int64_t> TimeByPath(const wchar_t* path) {
    WIN32_FILE_ATTRIBUTE_DATA data;
    if (!GetFileAttributesExW(path, GetFileExInfoStandard, &data)) return std::nullopt;
    if ((data.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0) return TimeBehindLink(path);
    return Ticks(data.ftLastWriteTime);
}

// A symbolic link or a junction stands in for another folder; other reparse points (files kept in a cloud) do
// not.
bool IsRealFolder(const WIN32_FIND_DATAW& entry) {
    const bool reparsePoint = (entry.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
    return (entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0 &&
           !(reparsePoint && IsReparseTagNameSurrogate(entry.dwReserved0));
}

}  // namespace

std::string WideToUtf8(std::wstring_view units) {
    if (units.empty() || units.size() > INT_MAX / 3) return {};
    const int count = static_cast<int>(units.size());
    const int length = WideCharToMultiByte(CP_UTF8, 0, units.data(), count, nullptr, 0, nullptr, nullptr);
    std::string text(static_cast<std::size_t>(length), '\0');
    WideCharToMultiByte(CP_UTF8, 0, units.data(), count, text.data(), length, nullptr, nullptr);
    return text;
}

std::filesystem::path PathFromWide(std::wstring_view units) { return std::filesystem::path(units); }

std::wstring WideFromPath(const std::filesystem::path& path) { return path.native(); }

void OpenShared(std::fstream& stream, const std::wstring& path) {
    // A device name (CON, COM1, a pipe) would be waited on; such names have no attributes of a file.
    const DWORD attributes =
        path.find(L'\0') == std::wstring::npos ? GetFileAttributesW(path.c_str()) : INVALID_FILE_ATTRIBUTES;
    if (attributes == INVALID_FILE_ATTRIBUTES || (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0) {
        stream.setstate(std::ios_base::failbit);
        return;
    }
    // The C runtime's open denies other openers neither reading nor writing.
    stream.open(std::filesystem::path(path), std::ios_base::in | std::ios_base::binary);
}

std::optional<std::filesystem::path> LocalApplicationDataFolder() {
    wchar_t folder[MAX_PATH];
    if (FAILED(SHGetFolderPathW(nullptr, CSIDL_LOCAL_APPDATA, nullptr, SHGFP_TYPE_CURRENT, folder))) {
        return std::nullopt;
    }
    return std::filesystem::path(folder);
}

std::optional<std::int64_t> LastWriteTime(const std::filesystem::path& path, std::error_code& error) {
    const std::optional<std::int64_t> time = TimeByPath(path.c_str());
    error = time ? std::error_code() : LastError();
    return time;
}

std::error_code ListFolder(const std::wstring& folder, const std::function<void(const FolderEntry&)>& visit) {
    std::wstring path = folder + L"\\*";
    WIN32_FIND_DATAW entry;
    const HANDLE search = FindFirstFileExW(path.c_str(), FindExInfoBasic, &entry, FindExSearchNameMatch,
                                           nullptr, FIND_FIRST_EX_LARGE_FETCH);
    if (search == INVALID_HANDLE_VALUE) return LastError();
    const std::unique_ptr<HANDLE, CloseSearch> owner(search);
    do {
        const std::wstring_view name = entry.cFileName;
        if (name == L"." || name == L"..") continue;
        path.replace(folder.size() + 1, std::wstring::npos, name);
        visit({name, IsRealFolder(entry), TimeByPath(path.c_str())});
    } while (FindNextFileW(search, &entry));
    return GetLastError() == ERROR_NO_MORE_FILES ? std::error_code() : LastError();
}

void DebugOutput(const char* text) { OutputDebugStringA(text); }

}  // namespace orvel::util::platform
