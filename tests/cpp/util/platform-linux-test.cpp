// What only Linux has: links made by anyone, names that are no text, pipes, programs that inherit open files.
#include <array>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <map>
#include <string>
#include <sys/stat.h>

#include <gtest/gtest.h>

#include "support/replay-builder.h"
#include "util/platform/platform.h"

namespace {

namespace fs = std::filesystem;
namespace platform = orvel::util::platform;

TEST(ListFolderLinux, links_are_no_folders_dangling_ones_have_no_time_and_every_name_leads_back_to_its_file) {
    const corvane_test::TemporaryFolder temporary;
    const fs::path& folder = temporary.path;
    fs::create_directory(folder / "sub");
    fs::create_directory_symlink(folder / "sub", folder / "link");
    fs::create_symlink(folder / "nothing", folder / "dangling");
    fs::create_symlink(folder / "loop", folder / "loop");
    // With a "/" in too many bytes, twice, a character above the last one, and half of one.
    const std::string bytes = "x\xFF\xE0\x80\xAF\xF0\x80\x80\xAF\xF4\x90\x80\x80y\xE4\xB8";
    std::ofstream(folder / bytes) << "text";

    std::map<std::wstring, bool> isFolder;
    const auto visit = [&](const platform::FolderEntry& entry) {
        const std::wstring name(entry.name);
        isFolder[name] = entry.isFolder;
        std::error_code error;
        EXPECT_EQ(entry.lastWriteTime, platform::LastWriteTime(folder / platform::PathFromWide(name), error));
        EXPECT_EQ(entry.lastWriteTime.has_value(), name != L"dangling" && name != L"loop");
    };
    EXPECT_FALSE(platform::ListFolder(platform::WideFromPath(folder), visit));
    std::wstring noText;
    for (const char c : bytes) noText.push_back(static_cast<wchar_t>(c >= 0 ? c : 0xDC00 | (c & 0xFF)));
    EXPECT_EQ(
        isFolder,
        (std::map<std::wstring, bool>{
            {L"sub", true}, {L"link", false}, {L"dangling", false}, {L"loop", false}, {noText, false}}));
}

TEST(LocalApplicationDataFolder, is_in_the_first_variable_that_is_set_and_not_empty) {
    const auto folder = [](const char* windows, const char* data, const char* home) {
        setenv("LOCALAPPDATA", windows, 1), setenv("XDG_DATA_HOME", data, 1), setenv("HOME", home, 1);
        return platform::LocalApplicationDataFolder().value_or("none").string();
    };
    EXPECT_EQ(folder("/l", "/x", "/h"), "/l");
    EXPECT_EQ(folder("", "/x", "/h"), "/x");
    EXPECT_EQ(folder("", "", "/h"), "/h/.local/share");
    EXPECT_EQ(folder("", "", ""), "none");
}

TEST(PathFromWide, only_bytes_from_0x80_are_restored) {
    EXPECT_EQ(platform::PathFromWide(std::wstring{wchar_t{0xDC2F}, wchar_t{0xDC80}}), "\xEF\xBF\xBD\x80");
}

// The test would hang if a pipe waited for its writer.
TEST(DiskFile, opens_no_pipe_and_no_device_and_is_not_inherited) {
    const corvane_test::TemporaryFile pipe({}), file({1, 2, 3});
    fs::remove(pipe.path);
    ASSERT_EQ(mkfifo(pipe.path.c_str(), 0600), 0);
    EXPECT_FALSE(platform::DiskFile(pipe.WidePath()).IsOpen());
    EXPECT_FALSE(platform::DiskFile(L"/dev/zero").IsOpen());

    const platform::DiskFile open(file.WidePath());
    EXPECT_EQ(open.Size(), 3);
    std::array<char, 8> bytes;
    EXPECT_EQ(open.ReadAt(1, bytes.data(), bytes.size()), 2);  // and no wait for more
    int found = 0;
    for (const auto& entry : fs::directory_iterator("/proc/self/fd")) {
        std::error_code error;
        if (fs::read_symlink(entry, error) != file.path) continue;
        ++found;
        EXPECT_TRUE(fcntl(std::stoi(entry.path().filename()), F_GETFD) & FD_CLOEXEC);
    }
    EXPECT_EQ(found, 1);
}

}  // namespace
