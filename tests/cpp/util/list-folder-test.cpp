// What a folder lists on the real file system.
#include <filesystem>
#include <fstream>
#include <map>
#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "util/platform/platform.h"

namespace {

namespace fs = std::filesystem;
namespace platform = orvel::util::platform;

struct Listed {
    bool isFolder;
    std::optional<std::int64_t> lastWriteTime;
};

class ListFolderTest : public testing::Test {
  protected:
    const fs::path folder = fs::temp_directory_path() / "corvane-list-folder-test";

    void SetUp() override {
        fs::remove_all(folder);
        fs::create_directories(folder);
    }
    void TearDown() override { fs::remove_all(folder); }

    std::map<std::wstring, Listed> List() {
        std::map<std::wstring, Listed> entries;
        const auto error = platform::ListFolder(
            platform::WideFromPath(folder), [&entries](const platform::FolderEntry& entry) {
                EXPECT_TRUE(
                    entries.try_emplace(std::wstring(entry.name), Listed{entry.isFolder, entry.lastWriteTime})
                        .second);
            });
        EXPECT_FALSE(error) << error.message();
        return entries;
    }

    static std::error_code ListError(const fs::path& path) {
        return platform::ListFolder(platform::WideFromPath(path), [](const auto&) { ADD_FAILURE(); });
    }

    std::optional<std::int64_t> TimeOf(const std::wstring& name) {
        std::error_code error;
        return platform::LastWriteTime(folder / platform::PathFromWide(name), error);
    }
};

TEST_F(ListFolderTest, gives_every_name_and_the_time_that_its_path_has) {
    EXPECT_TRUE(List().empty());
    const std::wstring names[] = {L"plain", L".hidden", L"\u00E9\u4E2D", {wchar_t{0xD83D}, wchar_t{0xDE00}}};
    for (const auto& name : names) std::ofstream(folder / platform::PathFromWide(name)) << "text";
    fs::create_directory(folder / "sub");
    const auto entries = List();
    EXPECT_EQ(entries.size(), std::size(names) + 1);
    for (const auto& [name, entry] : entries) {
        EXPECT_EQ(entry.isFolder, name == L"sub");
        ASSERT_TRUE(entry.lastWriteTime);
        EXPECT_EQ(entry.lastWriteTime, TimeOf(name));
    }
}

TEST_F(ListFolderTest, tells_writes_of_the_same_second_apart_while_the_file_is_open) {
    std::ofstream file(folder / "growing");
    auto before = List().at(L"growing").lastWriteTime;
    for (int i = 0; i < 5; ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        file << "more" << std::flush;
        const auto after = List().at(L"growing").lastWriteTime;
        EXPECT_GT(after, before);
        before = after;
    }
}

TEST_F(ListFolderTest, says_why_a_folder_cannot_be_listed) {
    std::ofstream(folder / "file") << "text";
    for (const auto& path : {folder / "missing", folder / "missing" / "below"}) {
        std::error_code error;
        EXPECT_EQ(platform::LastWriteTime(path, error), std::nullopt);
        EXPECT_EQ(error, std::errc::no_such_file_or_directory) << error;
        EXPECT_EQ(ListError(path), std::errc::no_such_file_or_directory);
    }
    EXPECT_TRUE(ListError(folder / "file"));
}

}  // namespace
