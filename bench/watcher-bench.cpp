// One polling cycle beside the cheapest listing with last-write times that the operating system offers, and
// beside the standard library's. Run with --benchmark_enable_random_interleaving=true
// --benchmark_repetitions=9.
#include <dirent.h>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <sys/stat.h>

#include <benchmark/benchmark.h>

#include "games/corvane/napi-module/watcher/folder-snapshot.h"
#include "util/platform/platform.h"

namespace {

namespace fs = std::filesystem;

// A demo folder with so many replays; made once and left for the other benchmarks of the run.
fs::path DemoFolder(std::int64_t files) {
    const fs::path folder = fs::temp_directory_path() / "corvane-watcher-bench" / std::to_string(files) /
                            "CorvaneGame" / "Saved" / "Demos";
    if (fs::exists(folder)) return folder;
    fs::create_directories(folder);
    const fs::path first = folder / "UnsavedReplay-00000.replay";
    std::ofstream(first) << "replay";
    for (std::int64_t i = 1; i < files; ++i) {
        fs::copy_file(first, folder / ("UnsavedReplay-" + std::to_string(100'000 + i) + ".replay"));
    }
    return folder;
}

// openat, getdents64, newfstatat; statx with the time alone was measured to take as long.
std::int64_t SystemListing(const char* path) {
    DIR* listing = ::opendir(path);
    if (listing == nullptr) throw std::runtime_error("cannot list");
    const int folder = ::dirfd(listing);
    std::int64_t sum = 0;
    while (const dirent* entry = ::readdir(listing)) {
        struct stat status {};
        if (entry->d_type == DT_REG && ::fstatat(folder, entry->d_name, &status, 0) == 0) {
            sum += status.st_mtim.tv_nsec;
        }
    }
    ::closedir(listing);
    return sum;
}

void BM_SystemListing(benchmark::State& state) {
    const fs::path folder = DemoFolder(state.range(0));
    for (auto _ : state) benchmark::DoNotOptimize(SystemListing(folder.c_str()));
}

void BM_StandardListing(benchmark::State& state) {
    const fs::path folder = DemoFolder(state.range(0));
    for (auto _ : state) {
        for (const auto& entry : fs::recursive_directory_iterator(folder)) {
            benchmark::DoNotOptimize(fs::last_write_time(entry.path()));
        }
    }
}

void BM_IdleCycle(benchmark::State& state) {
    util::FolderSnapshot snapshot(orvel::util::platform::WideFromPath(DemoFolder(state.range(0))),
                                  util::RealFileSystem());
    for (auto _ : state) {
        snapshot.Update([](const std::wstring&, util::FileStatus) { std::abort(); });
    }
}

// The game writes to one file between two cycles.
void BM_CycleWithOneChange(benchmark::State& state) {
    const fs::path folder = DemoFolder(state.range(0));
    util::FolderSnapshot snapshot(orvel::util::platform::WideFromPath(folder), util::RealFileSystem());
    static std::int64_t second = 0;
    for (auto _ : state) {
        const timespec times[2] = {{0, UTIME_OMIT}, {++second, 0}};
        if (::utimensat(AT_FDCWD, (folder / "UnsavedReplay-00000.replay").c_str(), times, 0) != 0)
            std::abort();
        int reports = 0;
        snapshot.Update([&reports](const std::wstring&, util::FileStatus) { ++reports; });
        if (reports != 1) std::abort();
    }
}

BENCHMARK(BM_SystemListing)->Arg(10)->Arg(1000)->Arg(10'000);
BENCHMARK(BM_StandardListing)->Arg(10)->Arg(1000)->Arg(10'000);
BENCHMARK(BM_IdleCycle)->Arg(10)->Arg(1000)->Arg(10'000);
BENCHMARK(BM_CycleWithOneChange)->Arg(10)->Arg(1000)->Arg(10'000);

}  // namespace

BENCHMARK_MAIN();
