// watcher_bench FOLDER: one polling cycle of the watcher beside the cheapest full listing with last-write
// times that the operating system offers. Prints a JSON array of { files, cycle, listing, queries },
// microseconds, medians of interleaved runs. Runs on both targets, so it measures time itself.
#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <vector>

#include "games/corvane/napi-module/watcher/folder-snapshot.h"
#include "system-listing.h"
#include "util/platform/platform.h"

namespace {

namespace fs = std::filesystem;
namespace platform = orvel::util::platform;

// Left for the other target's run: under Wine making 10,000 files takes a minute.
std::wstring MakeFolder(const fs::path& parent, int files) {
    const fs::path folder = parent / std::to_string(files);
    if (fs::exists(folder)) return platform::WideFromPath(folder);
    fs::create_directories(folder);
    for (int i = 0; i < files; ++i) {
        std::ofstream(folder / ("UnsavedReplay-2026.01.01-" + std::to_string(100000 + i) + ".replay")) << i;
    }
    return platform::WideFromPath(folder);
}

// The medians of functions that are run in turn, for a second and a half in all, at least 5 times each.
std::vector<double> Medians(const std::vector<std::function<void()>>& functions) {
    using Clock = std::chrono::steady_clock;
    constexpr std::chrono::milliseconds kTime{1500};
    constexpr std::size_t kLeast = 5;
    std::vector<std::vector<double>> times(functions.size());
    const Clock::time_point end = Clock::now() + kTime;
    while (Clock::now() < end || times.back().size() < kLeast) {
        for (std::size_t i = 0; i < functions.size(); ++i) {
            const Clock::time_point start = Clock::now();
            functions[i]();
            times[i].push_back(std::chrono::duration<double, std::micro>(Clock::now() - start).count());
        }
    }
    std::vector<double> medians;
    for (std::vector<double>& list : times) {
        const auto middle = list.begin() + static_cast<std::ptrdiff_t>(list.size() / 2);
        std::nth_element(list.begin(), middle, list.end());
        medians.push_back(*middle);
    }
    return medians;
}

std::int64_t g_sum = 0;  // keeps the compiler from removing the listings

void Measure(const fs::path& parent, int files, const char* separator) {
    const std::wstring folder = MakeFolder(parent, files);
    orvel::util::FolderSnapshot snapshot(folder, orvel::util::RealFileSystem());
    const auto cycle = [&] { snapshot.Update([](const std::wstring&, util::FileStatus) { ++g_sum; }); };
    const auto listing = [&] { g_sum += bench::SumOfSystemListing(folder); };
    const auto queries = [&] {
        platform::ListFolder(
            folder, [](const platform::FolderEntry& entry) { g_sum += entry.lastWriteTime.value_or(0); });
    };
    const std::vector<double> medians = Medians({cycle, listing, queries});
    std::printf("%s{\"files\": %d, \"cycle\": %.2f, \"listing\": %.2f, \"queries\": %.2f}", separator, files,
                medians[0], medians[1], medians[2]);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fputs("usage: watcher_bench FOLDER\n", stderr);
        return 2;
    }
    const char* separator = "[";
    for (const int files : {10, 1000, 10000}) {
        Measure(argv[1], files, separator);
        separator = ",\n ";
    }
    std::puts("]");
    return g_sum == 0;
}
