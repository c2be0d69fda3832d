// The platform functions, which must give the same on both systems.
#include "util/platform/platform.h"

#include <chrono>
#include <filesystem>
#include <fstream>
#include <map>
#include <thread>

#include <gtest/gtest.h>

#include "support/replay-builder.h"

namespace {

namespace fs = std::filesystem;
namespace platform = orvel::util::platform;

TEST(WideToUtf8, pairs_are_joined_and_unpaired_surrogates_replaced) {
    const struct {
        std::wstring units;
        std::string text;
    } cases[] = {
        {{}, ""},
        {L"a\u007F\u0080\u07FF\u0800\uFFFF", "a\x7F\xC2\x80\xDF\xBF\xE0\xA0\x80\xEF\xBF\xBF"},
        {{wchar_t{0xDBFF}, wchar_t{0xDFFF}}, "\xF4\x8F\xBF\xBF"},
        {{wchar_t{0xD83D}}, "\xEF\xBF\xBD"},
        {{wchar_t{0xDE00}, L'x'}, "\xEF\xBF\xBDx"},
        {{wchar_t{0xD83D}, L'x'}, "\xEF\xBF\xBDx"},
        {{wchar_t{0xD83D}, wchar_t{0xD83D}, wchar_t{0xDE00}}, "\xEF\xBF\xBD\xF0\x9F\x98\x80"},
        {std::wstring(2, L'\0'), std::string(2, '\0')},
    };
    for (const auto& c : cases) EXPECT_EQ(platform::WideToUtf8(c.units), c.text);
}

TEST(WideFromPath, every_name_survives_the_way_there_and_back) {
    for (const std::wstring& units :
         {std::wstring(L"\u00E9\u4E2D.replay"), std::wstring{wchar_t{0xD83D}, wchar_t{0xDE00}},
          std::wstring{L'x', wchar_t{0xDCFF}, L'y'}}) {
        EXPECT_EQ(platform::WideFromPath(platform::PathFromWide(units)), units);
    }
}

std::map<std::wstring, std::pair<bool, std::optional<std::int64_t>>> List(const fs::path& folder) {
    std::map<std::wstring, std::pair<bool, std::optional<std::int64_t>>> entries;
    const auto error =
        platform::ListFolder(platform::WideFromPath(folder), [&](const platform::FolderEntry& entry) {
            EXPECT_TRUE(
                entries.try_emplace(std::wstring(entry.name), entry.isFolder, entry.lastWriteTime).second);
        });
    EXPECT_FALSE(error) << error.message();
    return entries;
}

TEST(ListFolder, gives_every_name_and_the_time_that_its_path_has) {
    const corvane_test::TemporaryFolder folder;
    EXPECT_TRUE(List(folder.path).empty());
    const std::wstring names[] = {L"plain", L".hidden", L"\u00E9\u4E2D", {wchar_t{0xD83D}, wchar_t{0xDE00}}};
    for (const auto& name : names) std::ofstream(folder.path / platform::PathFromWide(name)) << "text";
    fs::create_directory(folder.path / "sub");
    const auto entries = List(folder.path);
    EXPECT_EQ(entries.size(), std::size(names) + 1);
    for (const auto& [name, entry] : entries) {
        std::error_code error;
        EXPECT_EQ(entry.first, name == L"sub");
        EXPECT_TRUE(entry.second);
        EXPECT_EQ(entry.second, platform::LastWriteTime(folder.path / platform::PathFromWide(name), error));
    }
}

// Some systems' times have whole seconds, or lag while a file is open.
TEST(ListFolder, tells_writes_of_the_same_second_apart_while_the_file_is_open) {
    constexpr std::int64_t kSecond = fs::path::preferred_separator == '\\' ? 10'000'000 : 1'000'000'000;
    const corvane_test::TemporaryFolder folder;
    std::ofstream file(folder.path / "growing");
    std::int64_t step = 0;
    // A step may take longer on a busy machine, but not all of them do.
    for (int i = 0; i < 500 && (step <= 0 || step >= kSecond); ++i) {
        const auto before = List(folder.path).at(L"growing").second;
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        file << "more" << std::flush;
        step = List(folder.path).at(L"growing").second.value() - before.value();
    }
    EXPECT_GT(step, 0);
    EXPECT_LT(step, kSecond);
}

TEST(ListFolder, says_why_a_folder_cannot_be_listed) {
    const corvane_test::TemporaryFile file({});
    const auto error = [](const fs::path& path) {
        return platform::ListFolder(platform::WideFromPath(path), [](const auto&) { ADD_FAILURE(); });
    };
    const fs::path missing = file.path.string() + "-missing";
    for (const auto& path : {missing, missing / "below"}) {
        std::error_code timeError;
        EXPECT_EQ(platform::LastWriteTime(path, timeError), std::nullopt);
        EXPECT_EQ(timeError, std::errc::no_such_file_or_directory);
        EXPECT_EQ(error(path), std::errc::no_such_file_or_directory);
    }
    EXPECT_TRUE(error(file.path));
}

}  // namespace
