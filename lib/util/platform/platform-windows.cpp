// The platform functions on Windows.
#include <windows.h>

#include <climits>
#include <shlobj.h>

#include "util/platform/platform.h"

namespace orvel::util::platform {

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
    WIN32_FILE_ATTRIBUTE_DATA data;
    if (!GetFileAttributesExW(path.c_str(), GetFileExInfoStandard, &data)) {
        error.assign(static_cast<int>(GetLastError()), std::system_category());
        return std::nullopt;
    }
    error.clear();
    const ULARGE_INTEGER time{{data.ftLastWriteTime.dwLowDateTime, data.ftLastWriteTime.dwHighDateTime}};
    return static_cast<std::int64_t>(time.QuadPart);
}

void DebugOutput(const char* text) { OutputDebugStringA(text); }

}  // namespace orvel::util::platform
