// What only Linux has: links made by anyone, names that are no text, pipes, programs that inherit open files.
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
    std::ofstream(folder / "x\xFF\xE0\x80\xAFy") << "text";  // with a "/" in too many bytes

    std::map<std::wstring, bool> isFolder;
    const auto visit = [&](const platform::FolderEntry& entry) {
        const std::wstring name(entry.name);
        isFolder[name] = entry.isFolder;
        std::error_code error;
        EXPECT_EQ(entry.lastWriteTime, platform::LastWriteTime(folder / platform::PathFromWide(name), error));
        EXPECT_EQ(entry.lastWriteTime.has_value(), name != L"dangling" && name != L"loop");
    };
    EXPECT_FALSE(platform::ListFolder(platform::WideFromPath(folder), visit));
    const std::wstring noText = {L'x', wchar_t{0xDCFF}, wchar_t{0xDCE0}, wchar_t{0xDC80}, wchar_t{0xDCAF},
                                 L'y'};
    EXPECT_EQ(
        isFolder,
        (std::map<std::wstring, bool>{
            {L"sub", true}, {L"link", false}, {L"dangling", false}, {L"loop", false}, {noText, false}}));
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
