// The polling thread: what it survives, and that it ends when it should. Few of these sleep: Stop cuts a
// delay short and lets the cycle run, so a delay of an hour makes a cycle a matter of calling Stop.
#include "games/corvane/napi-module/watcher/folder-watcher.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <future>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "cpp/watcher/fake-file-system.h"
#include "util/platform/platform.h"

namespace {

using namespace std::chrono_literals;
using orvel::util::FileStatus;
using orvel::util::FolderWatcher;
using testing::ElementsAre;

// Reports as they come, to be looked at by the test's thread.
class Reports {
  public:
    orvel::util::FileStatusCallback Callback() {
        return [this](const std::wstring& path, FileStatus status) {
            const std::lock_guard lock(m_mutex);
            m_reports.emplace_back(FakeFileSystem::Generic(path), status);
            m_arrived.notify_all();
        };
    }

    std::vector<std::pair<std::wstring, FileStatus>> Wait(std::size_t count) {
        std::unique_lock lock(m_mutex);
        m_arrived.wait_for(lock, 30s, [&] { return m_reports.size() >= count; });
        return m_reports;
    }

  private:
    std::mutex m_mutex;
    std::condition_variable m_arrived;
    std::vector<std::pair<std::wstring, FileStatus>> m_reports;
};

TEST(FolderWatcher, stop_and_destructor_let_the_cycle_report_what_came_before_them) {
    FakeFileSystem files;
    for (int i = 0; i < 200; ++i) {
        const std::wstring path = L"/demos/" + std::to_wstring(i);
        Reports reports;
        {
            FolderWatcher watcher(L"/demos", files, 1h);
            watcher.Start(reports.Callback());
            files.Put(path, {1});
            if (i % 2 == 0) watcher.Stop();
        }
        EXPECT_THAT(reports.Wait(0), ElementsAre(std::pair(path, FileStatus::created)));
    }
}

TEST(FolderWatcher, stop_ends_the_pauses_of_callbacks) {
    FakeFileSystem files;
    std::promise<void> pausing;
    int calls = 0;
    FolderWatcher watcher(L"/demos", files, 1ms);
    for (int i = 0; i < 50; ++i) files.Put(L"/demos/" + std::to_wstring(i), {1});
    watcher.Start([&](const std::wstring&, FileStatus) {
        if (++calls == 1) pausing.set_value();
        watcher.Pause(1h);
    });
    pausing.get_future().wait();
    watcher.Stop();
    EXPECT_EQ(calls, 50);
}

TEST(FolderWatcher, what_an_abandoned_watcher_has_not_reported_is_reported_by_the_one_that_goes_on) {
    FakeFileSystem files;
    const auto put = [&](std::int64_t time) {
        for (int i = 0; i < 50; ++i) files.Put(L"/demos/" + std::to_wstring(i), {time});
    };
    put(1);
    FolderWatcher first(L"/demos", files, 1ms);
    std::promise<void> reporting;
    int calls = 0;
    first.Start([&](const std::wstring&, FileStatus) {
        if (++calls == 1) reporting.set_value();
        first.Pause(1h);
    });
    put(2);
    reporting.get_future().wait();
    FolderWatcher second(L"/demos", files, 1h);
    first.Abandon();
    first.Stop();
    EXPECT_EQ(calls, 1);
    second.GoOnFrom(first);
    second.Start([&](const std::wstring&, FileStatus status) { calls += status == FileStatus::modified; });
    second.Stop();
    // All of them, also the one that the first watcher was reporting: that report may have reached nobody.
    EXPECT_EQ(calls, 1 + 50);
}

TEST(FolderWatcher, a_cycle_that_fails_says_so_in_one_line_and_the_next_one_works) {
    FakeFileSystem files;
    FolderWatcher watcher(L"/demos", files, 1ms);
    testing::internal::CaptureStdout();
    Reports reports;
    watcher.Start(reports.Callback());
    files.Put(L"/demos", {1, true, std::errc::io_error});
    files.Put(L"/demos/x", {1});
    reports.Wait(1);
    // The listing after the next one begins when that one's line has been written.
    for (const int begin = files.Listings(); files.Listings() < begin + 2;) std::this_thread::yield();
    files.Put(L"/demos", {1, true});
    files.Put(L"/demos/y", {1});
    EXPECT_THAT(reports.Wait(2), ElementsAre(std::pair(L"/demos/x", FileStatus::created),
                                             std::pair(L"/demos/y", FileStatus::created)));
    watcher.Stop();
    const std::string output = testing::internal::GetCapturedStdout();
    EXPECT_THAT(output, testing::StartsWith("[ orvel::util::FolderWatcher::RunCycle ] filesystem error: "));
    EXPECT_THAT(output, testing::EndsWith("\n"));
    EXPECT_THAT(std::ranges::count(output, '\n'),
                testing::AllOf(testing::Ge(1), testing::Lt(files.Listings())));
}

// The product's delay and the real file system: writes within one second are told apart, to a file that stays
// open.
TEST(FolderWatcher, polls_a_real_folder_every_half_second) {
    const auto name =
        "corvane-" + std::to_string(std::chrono::steady_clock::now().time_since_epoch().count());
    const auto folder = std::filesystem::temp_directory_path() / name;
    ASSERT_TRUE(std::filesystem::create_directories(folder));
    std::ofstream file(folder / "growing.replay");
    FolderWatcher watcher(orvel::util::platform::WideFromPath(folder));
    Reports reports;
    const auto began = std::chrono::steady_clock::now();
    watcher.Start(reports.Callback());
    for (std::size_t i = 1; i <= 3; ++i) {
        file << "more" << std::flush;
        const auto all = reports.Wait(i);
        ASSERT_EQ(all.size(), i);
        EXPECT_EQ(all.back().second, FileStatus::modified);
        EXPECT_EQ(std::filesystem::path(all.back().first).filename(), "growing.replay");
    }
    EXPECT_GT(std::chrono::steady_clock::now() - began, 1400ms);
    watcher.Stop();
    file.close();
    std::filesystem::remove_all(folder);
}

}  // namespace
