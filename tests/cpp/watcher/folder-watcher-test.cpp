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
using testing::ElementsAre;
using util::FileStatus;
using util::FolderWatcher;

// Reports as they come, to be looked at by the test's thread.
class Reports {
  public:
    util::FileStatusCallback Callback() {
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

TEST(FolderWatcher, stop_lets_the_cycle_that_has_begun_report_what_came_before_it) {
    FakeFileSystem files;
    for (int i = 0; i < 200; ++i) {
        const std::wstring path = L"/demos/" + std::to_wstring(i);
        FolderWatcher watcher(L"/demos", files, 1h);
        Reports reports;
        watcher.Start(reports.Callback());
        files.Put(path, {1});
        if (i % 2 == 0) std::this_thread::sleep_for(std::chrono::microseconds(i));
        watcher.Stop();
        EXPECT_THAT(reports.Wait(0), ElementsAre(std::pair(path, FileStatus::created)));
        watcher.Stop();
    }
}

TEST(FolderWatcher, is_stopped_by_its_destructor_and_may_be_stopped_unstarted) {
    FakeFileSystem files;
    FolderWatcher(L"/demos", files, 1h).Start([](const std::wstring&, FileStatus) {});
    FolderWatcher(L"/demos", files, 1h).Stop();
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

TEST(FolderWatcher, a_cycle_that_fails_says_so_in_one_line_and_the_next_one_works) {
    FakeFileSystem files;
    FolderWatcher watcher(L"/demos", files, 20ms);
    testing::internal::CaptureStdout();
    Reports reports;
    watcher.Start(reports.Callback());
    files.Put(L"/demos", {1, true, std::errc::io_error});
    files.Put(L"/demos/x", {1});
    reports.Wait(1);
    std::this_thread::sleep_for(100ms);
    files.Put(L"/demos", {1, true});
    files.Put(L"/demos/y", {1});
    EXPECT_THAT(reports.Wait(2), ElementsAre(std::pair(L"/demos/x", FileStatus::created),
                                             std::pair(L"/demos/y", FileStatus::created)));
    watcher.Stop();
    const std::string output = testing::internal::GetCapturedStdout();
    EXPECT_THAT(output, testing::StartsWith("[ util::FolderWatcher::RunCycle ] filesystem error: "));
    EXPECT_THAT(output, testing::EndsWith("\n"));
    const auto lines = std::ranges::count(output, '\n');
    EXPECT_GE(lines, 1);
    EXPECT_LE(lines, 10);
}

// The product's delay and the real file system: writes within one second are told apart, to a file that stays
// open.
TEST(FolderWatcher, polls_a_real_folder_every_half_second) {
    const auto folder = std::filesystem::temp_directory_path() / "corvane-folder-watcher-test";
    std::filesystem::remove_all(folder);
    std::filesystem::create_directories(folder);
    std::ofstream file(folder / "growing.replay");
    FolderWatcher watcher(orvel::util::platform::WideFromPath(folder));
    Reports reports;
    watcher.Start(reports.Callback());
    const auto began = std::chrono::steady_clock::now();
    for (std::size_t i = 1; i <= 3; ++i) {
        file << "more" << std::flush;
        const auto all = reports.Wait(i);
        ASSERT_EQ(all.size(), i);
        EXPECT_EQ(all.back().second, FileStatus::modified);
        EXPECT_EQ(std::filesystem::path(all.back().first).filename(), "growing.replay");
    }
    const auto elapsed = std::chrono::steady_clock::now() - began;
    EXPECT_GT(elapsed, 1400ms);
    EXPECT_LT(elapsed, 4s);
    watcher.Stop();
    file.close();
    std::filesystem::remove_all(folder);
}

}  // namespace
