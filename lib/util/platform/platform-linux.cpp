// The platform functions on Linux.
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>

#include "util/platform/platform.h"

namespace orvel::util::platform {
namespace {

constexpr char32_t kReplacement = 0xFFFD;

bool IsHighSurrogate(char32_t unit) { return unit >= 0xD800 && unit <= 0xDBFF; }
bool IsLowSurrogate(char32_t unit) { return unit >= 0xDC00 && unit <= 0xDFFF; }

// A unit that stands for one byte that is not UTF-8: see platform.h.
bool IsEscapedByte(char32_t unit) { return unit >= 0xDC80 && unit <= 0xDCFF; }

void AppendUtf8(std::string& text, char32_t point) {
    const auto put = [&text](char32_t byte) { text.push_back(static_cast<char>(byte)); };
    if (point < 0x80) {
        put(point);
    } else if (point < 0x800) {
        put(0xC0 | point >> 6);
        put(0x80 | (point & 0x3F));
    } else if (point < 0x10000) {
        put(0xE0 | point >> 12);
        put(0x80 | (point >> 6 & 0x3F));
        put(0x80 | (point & 0x3F));
    } else {
        put(0xF0 | point >> 18);
        put(0x80 | (point >> 12 & 0x3F));
        put(0x80 | (point >> 6 & 0x3F));
        put(0x80 | (point & 0x3F));
    }
}

std::string ConvertToUtf8(std::wstring_view units, bool restoreEscapedBytes) {
    std::string text;
    text.reserve(units.size());
    for (std::size_t i = 0; i < units.size(); ++i) {
        const auto unit = static_cast<char32_t>(units[i]) & 0xFFFF;
        const char32_t next = i + 1 < units.size() ? static_cast<char32_t>(units[i + 1]) & 0xFFFF : 0;
        if (IsHighSurrogate(unit) && IsLowSurrogate(next)) {
            AppendUtf8(text, 0x10000 + ((unit - 0xD800) << 10) + (next - 0xDC00));
            ++i;
        } else if (restoreEscapedBytes && IsEscapedByte(unit)) {
            text.push_back(static_cast<char>(unit & 0xFF));
        } else {
            AppendUtf8(text, IsHighSurrogate(unit) || IsLowSurrogate(unit) ? kReplacement : unit);
        }
    }
    return text;
}

// The well-formed UTF-8 sequence at the start of text (RFC 3629), decoded. Its length is 0 if there is none.
struct Decoded {
    char32_t point = 0;
    std::size_t length = 0;
};

Decoded DecodeUtf8(std::string_view text) {
    const auto byte = [text](std::size_t i) {
        return static_cast<char32_t>(static_cast<unsigned char>(text[i]));
    };
    const char32_t first = byte(0);
    const std::size_t length = first < 0x80   ? 1
                               : first < 0xC2 ? 0
                               : first < 0xE0 ? 2
                               : first < 0xF0 ? 3
                               : first < 0xF5 ? 4
                                              : 0;
    if (length == 0 || length > text.size()) return {};
    if (length == 1) return {first, 1};
    char32_t point = first & (0x7Fu >> length);
    for (std::size_t i = 1; i < length; ++i) {
        if ((byte(i) & 0xC0) != 0x80) return {};
        point = point << 6 | (byte(i) & 0x3F);
    }
    const bool overlong = (length == 3 && point < 0x800) || (length == 4 && point < 0x10000);
    if (overlong || point > 0x10FFFF || IsHighSurrogate(point) || IsLowSurrogate(point)) return {};
    return {point, length};
}

void AppendWide(std::wstring& units, std::string_view text) {
    units.reserve(units.size() + text.size());
    while (!text.empty()) {
        const Decoded decoded = DecodeUtf8(text);
        if (decoded.length == 0) {
            units.push_back(static_cast<wchar_t>(0xDC00 | static_cast<unsigned char>(text.front())));
            text.remove_prefix(1);
            continue;
        }
        if (decoded.point >= 0x10000) {
            units.push_back(static_cast<wchar_t>(0xD800 + ((decoded.point - 0x10000) >> 10)));
            units.push_back(static_cast<wchar_t>(0xDC00 + ((decoded.point - 0x10000) & 0x3FF)));
        } else {
            units.push_back(static_cast<wchar_t>(decoded.point));
        }
        text.remove_prefix(decoded.length);
    }
}

std::int64_t Nanoseconds(const timespec& time) {
    return std::int64_t{time.tv_sec} * 1'000'000'000 + time.tv_nsec;
}

int Descriptor(std::intptr_t handle) { return static_cast<int>(handle); }

struct CloseFolder {
    void operator()(DIR* folder) const { ::closedir(folder); }
};

// Some file systems do not say in a listing what an entry is.
bool IsRealFolder(int folder, const dirent& entry) {
    if (entry.d_type != DT_UNKNOWN) return entry.d_type == DT_DIR;
    struct stat status {};
    return ::fstatat(folder, entry.d_name, &status, AT_SYMLINK_NOFOLLOW) == 0 && S_ISDIR(status.st_mode);
}

}  // namespace

std::string WideToUtf8(std::wstring_view units) { return ConvertToUtf8(units, false); }

std::filesystem::path PathFromWide(std::wstring_view units) { return ConvertToUtf8(units, true); }

std::wstring WideFromPath(const std::filesystem::path& path) {
    std::wstring units;
    AppendWide(units, path.native());
    return units;
}

// Opens first and checks afterwards: between a check and the opening another file could take the place.
// O_NONBLOCK, because opening a pipe waits for its writer.
DiskFile::DiskFile(const std::wstring& path) : m_handle(-1) {
    if (path.find(L'\0') != std::wstring::npos) return;
    m_handle = ::open(PathFromWide(path).c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY);
    struct stat status {};
    if (m_handle < 0 || ::fstat(Descriptor(m_handle), &status) != 0 || !S_ISREG(status.st_mode)) return;
    m_size = status.st_size;
}

DiskFile::~DiskFile() {
    if (m_handle >= 0) ::close(Descriptor(m_handle));
}

std::ptrdiff_t DiskFile::ReadAt(std::int64_t position, char* to, std::size_t count) const {
    std::size_t done = 0;
    while (done < count) {
        const ssize_t read = ::pread(Descriptor(m_handle), to + done, count - done,
                                     position + static_cast<std::int64_t>(done));
        if (read < 0 && errno == EINTR) continue;
        if (read < 0) return -1;
        if (read == 0) break;
        done += static_cast<std::size_t>(read);
    }
    return static_cast<std::ptrdiff_t>(done);
}

std::optional<std::filesystem::path> LocalApplicationDataFolder() {
    for (const char* name : {"LOCALAPPDATA", "XDG_DATA_HOME"}) {
        const char* folder = std::getenv(name);
        if (folder != nullptr && *folder != '\0') return folder;
    }
    const char* home = std::getenv("HOME");
    if (home == nullptr || *home == '\0') return std::nullopt;
    return std::filesystem::path(home) / ".local" / "share";
}

std::optional<std::int64_t> LastWriteTime(const std::filesystem::path& path, std::error_code& error) {
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0) {
        error.assign(errno, std::generic_category());
        return std::nullopt;
    }
    error.clear();
    return Nanoseconds(status.st_mtim);
}

std::error_code ListFolder(const std::wstring& folder, const std::function<void(const FolderEntry&)>& visit) {
    const std::unique_ptr<DIR, CloseFolder> listing(::opendir(PathFromWide(folder).c_str()));
    if (!listing) return {errno, std::generic_category()};
    const int descriptor = ::dirfd(listing.get());
    std::wstring name;
    for (;;) {
        errno = 0;  // only errno tells a failure from the end of the listing
        const dirent* entry = ::readdir(listing.get());
        if (entry == nullptr) return {errno, std::generic_category()};
        if (std::strcmp(entry->d_name, ".") == 0 || std::strcmp(entry->d_name, "..") == 0) continue;
        struct stat status {};
        // By name within the open folder: the same file as by its full path, but the path is not walked
        // again.
        const bool known = ::fstatat(descriptor, entry->d_name, &status, 0) == 0;
        name.clear();
        AppendWide(name, entry->d_name);
        visit({name, IsRealFolder(descriptor, *entry),
               known ? std::optional(Nanoseconds(status.st_mtim)) : std::nullopt});
    }
}

void DebugOutput(const char* text) { std::fputs(text, stderr); }

}  // namespace orvel::util::platform
