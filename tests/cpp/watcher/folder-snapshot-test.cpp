// What a look reports, in a file system that changes between and during looks.
#include "games/corvane/napi-module/watcher/folder-snapshot.h"

#include <map>
#include <random>
#include <set>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "cpp/watcher/fake-file-system.h"

namespace {

using orvel::util::FileStatus;
using orvel::util::FolderSnapshot;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

class FolderSnapshotTest : public testing::Test {
  protected:
    FakeFileSystem files;

    // One update's reports; during is called inside each of them.
    std::vector<std::wstring> Reports(FolderSnapshot& snapshot,
                                      const std::function<void(const std::wstring&)>& during = nullptr) {
        std::vector<std::wstring> reports;
        failure.clear();
        try {
            snapshot.Update([&](const std::wstring& path, FileStatus status) {
                const wchar_t* const names[] = {L"created ", L"modified ", L"erased "};
                reports.push_back(names[static_cast<int>(status)] + FakeFileSystem::Generic(path));
                if (during) during(FakeFileSystem::Generic(path));
            });
        } catch (const std::filesystem::filesystem_error& error) {
            failure = error.what();
        }
        return reports;
    }

    std::string failure;  // of the last update
};

TEST_F(FolderSnapshotTest, a_file_lives_through_created_modified_erased_and_created_again) {
    files.Put(L"/demos/old.replay", {10});
    FolderSnapshot snapshot(L"/demos", files);
    EXPECT_THAT(Reports(snapshot), IsEmpty());

    files.Put(L"/demos/new.replay", {20});
    EXPECT_THAT(Reports(snapshot), ElementsAre(L"created /demos/new.replay"));
    EXPECT_THAT(Reports(snapshot), IsEmpty());

    files.Put(L"/demos/old.replay", {11});
    files.Put(L"/demos/new.replay", {19});  // the clock was set back
    EXPECT_THAT(Reports(snapshot),
                UnorderedElementsAre(L"modified /demos/old.replay", L"modified /demos/new.replay"));

    files.Remove(L"/demos/new.replay");
    EXPECT_THAT(Reports(snapshot), ElementsAre(L"erased /demos/new.replay"));
    EXPECT_THAT(Reports(snapshot), IsEmpty());
    files.Put(L"/demos/new.replay", {19});
    EXPECT_THAT(Reports(snapshot), ElementsAre(L"created /demos/new.replay"));
}

TEST_F(FolderSnapshotTest, all_that_is_gone_is_reported_before_anything_that_is_there) {
    for (const wchar_t* path : {L"/demos/a", L"/demos/m", L"/demos/z"}) files.Put(path, {1});
    FolderSnapshot snapshot(L"/demos/", files);
    files.Remove(L"/demos/m");
    files.Put(L"/demos/a", {2});
    files.Put(L"/demos/b", {2});
    const auto reports = Reports(snapshot);
    ASSERT_EQ(reports.size(), 3u);
    EXPECT_EQ(reports[0], L"erased /demos/m");
}

TEST_F(FolderSnapshotTest, sub_folders_are_entries_and_are_entered) {
    files.Put(L"/demos/sub", {1, true});
    FolderSnapshot snapshot(L"/demos", files);
    files.Put(L"/demos/sub", {2, true});
    files.Put(L"/demos/sub/deep", {3, true});
    files.Put(L"/demos/sub/deep/x.replay", {4});
    EXPECT_THAT(Reports(snapshot), UnorderedElementsAre(L"modified /demos/sub", L"created /demos/sub/deep",
                                                        L"created /demos/sub/deep/x.replay"));
    // A file takes the name of a folder.
    files.Put(L"/demos/sub/deep", {3});
    files.Put(L"/demos/sub/deep/x.replay", {4, false, {}, std::errc::not_a_directory});
    EXPECT_THAT(Reports(snapshot), ElementsAre(L"erased /demos/sub/deep/x.replay"));
    files.Put(L"/demos/sub/deep", {3, true});
    files.Put(L"/demos/sub/deep/x.replay", {4});
    EXPECT_THAT(Reports(snapshot), ElementsAre(L"created /demos/sub/deep/x.replay"));
    files.Remove(L"/demos/sub");
    EXPECT_THAT(Reports(snapshot), UnorderedElementsAre(L"erased /demos/sub", L"erased /demos/sub/deep",
                                                        L"erased /demos/sub/deep/x.replay"));
}

TEST_F(FolderSnapshotTest, while_nothing_changes_a_look_is_one_listing) {
    for (int i = 0; i < 100; ++i) files.Put(L"/demos/" + std::to_wstring(i), {i});
    FolderSnapshot snapshot(L"/demos", files);
    EXPECT_THAT(Reports(snapshot), IsEmpty());
    EXPECT_EQ(files.TimeQueries(), 0);
}

TEST_F(FolderSnapshotTest, an_entry_that_vanishes_while_it_is_looked_at_is_passed_over_then_erased) {
    files.Put(L"/demos/old", {1});
    FolderSnapshot snapshot(L"/demos", files);
    // Listed, but gone when its time is asked for: one that was recorded, one that was not.
    files.Put(L"/demos/old", {2, false, {}, std::errc::no_such_file_or_directory});
    files.Put(L"/demos/new", {2, false, {}, std::errc::no_such_file_or_directory});
    files.afterListing = [&] { files.Put(L"/demos/old", {2}); };
    EXPECT_THAT(Reports(snapshot), IsEmpty());
    files.Remove(L"/demos/old");
    EXPECT_THAT(Reports(snapshot), ElementsAre(L"erased /demos/old"));
}

TEST_F(FolderSnapshotTest, what_changes_during_a_report_has_its_newest_time_when_its_turn_comes) {
    const auto putAll = [&](std::int64_t time) {
        for (const wchar_t name : {L'a', L'b', L'c', L'd'})
            files.Put(std::wstring(L"/demos/") + name, {time});
    };
    putAll(1);
    FolderSnapshot snapshot(L"/demos", files);
    putAll(2);
    const auto writeOthers = [&](const std::wstring& reported) {
        if (reported != L"/demos/a") return;
        files.Put(L"/demos/b", {3});
        files.Remove(L"/demos/c");
        files.Put(L"/demos/d", {1});  // as it was reported last
    };
    EXPECT_THAT(Reports(snapshot, writeOthers), ElementsAre(L"modified /demos/a", L"modified /demos/b"));
    EXPECT_THAT(Reports(snapshot), ElementsAre(L"erased /demos/c"));

    files.Remove(L"/demos/b");
    files.Put(L"/demos/a", {3});
    const auto undo = [&](const std::wstring&) { files.Put(L"/demos/a", {2}); };
    EXPECT_THAT(Reports(snapshot, undo), ElementsAre(L"erased /demos/b"));
}

TEST_F(FolderSnapshotTest, a_folder_that_is_removed_takes_its_entries_along_and_comes_back_with_new_ones) {
    files.Put(L"/demos/x", {1});
    FolderSnapshot snapshot(L"/demos", files);
    files.Remove(L"/demos");
    EXPECT_THAT(Reports(snapshot), ElementsAre(L"erased /demos/x"));
    EXPECT_THAT(Reports(snapshot), IsEmpty());
    EXPECT_THAT(failure, testing::HasSubstr("iterator::recursive_directory_iterator [/demos]"));
    files.Put(L"/demos", {2, true});
    files.Put(L"/demos/x", {1});
    EXPECT_THAT(Reports(snapshot), ElementsAre(L"created /demos/x"));
    EXPECT_EQ(failure, "");
}

TEST_F(FolderSnapshotTest, a_folder_that_cannot_be_listed_hides_nothing_and_loses_nothing) {
    const struct {
        std::wstring folder;
        std::errc error;
        std::string failure;
    } cases[] = {
        {L"/demos", std::errc::permission_denied, "iterator::recursive_directory_iterator [/demos"},
        {L"/demos/sub", std::errc::permission_denied, ""},
        {L"/demos/sub", std::errc::no_such_file_or_directory, ""},
        {L"/demos/sub", std::errc::too_many_files_open, "iterator::operator++ [/demos"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << static_cast<int>(c.error));
        files.Remove(L"/demos/later");
        files.Put(L"/demos/sub", {1, true});
        files.Put(L"/demos/sub/inside", {1});
        FolderSnapshot snapshot(L"/demos", files);

        // Nothing below the folder can be asked for.
        files.Put(c.folder, {1, true, c.error});
        files.Put(L"/demos/sub/inside", {2, false, {}, std::errc::permission_denied});
        files.Put(L"/demos/later", {1});
        EXPECT_THAT(Reports(snapshot), ElementsAre(L"created /demos/later"));
        EXPECT_THAT(failure, testing::HasSubstr(c.failure));
        EXPECT_EQ(failure.empty(), c.failure.empty());

        files.Put(c.folder, {1, true});
        files.Put(L"/demos/sub/inside", {2});
        EXPECT_THAT(Reports(snapshot), ElementsAre(L"modified /demos/sub/inside"));
    }
}

TEST_F(FolderSnapshotTest, only_the_folder_itself_has_to_be_listed_for_a_snapshot) {
    EXPECT_THROW(FolderSnapshot(L"/nowhere", files), std::filesystem::filesystem_error);
    files.Put(L"/demos/a", {1});
    files.Put(L"/demos/sub", {1, true, std::errc::io_error});
    FolderSnapshot snapshot(L"/demos", files);
    files.Put(L"/demos/a", {2});
    EXPECT_THAT(Reports(snapshot), ElementsAre(L"modified /demos/a"));
}

// 2,000 modifications of 20 files, between looks and during their reports. A look reports once each entry
// that differs when the look begins. It or the next look reports a later change.
TEST_F(FolderSnapshotTest, no_modification_that_a_look_could_see_is_lost) {
    std::mt19937 random(4);
    std::map<std::wstring, std::int64_t> now, reported;
    std::int64_t clock = 0;
    const auto modify = [&] {
        const std::wstring path = L"/demos/" + std::to_wstring(random() % 20);
        files.Put(path, {now[path] = ++clock});
    };
    while (now.size() < 20) modify();
    FolderSnapshot snapshot(L"/demos", files);
    reported = now;

    while (clock < 2000) {
        for (auto count = random() % 30; count > 0; --count) modify();
        std::set<std::wstring> expected, seen;
        for (const auto& [path, time] : now) {
            if (reported[path] != time) expected.insert(path);
        }
        Reports(snapshot, [&](const std::wstring& path) {
            reported[path] = now[path];
            EXPECT_TRUE(seen.insert(path).second);
            if (random() % 4 == 0) modify();
        });
        EXPECT_EQ(seen, expected);
    }
    Reports(snapshot, [&](const std::wstring& path) { reported[path] = now[path]; });
    EXPECT_EQ(reported, now);
}

}  // namespace
