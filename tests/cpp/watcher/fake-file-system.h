// A file system in memory whose failures and moments a test decides. Its paths are written with "/".
#pragma once

#include <algorithm>
#include <atomic>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <system_error>
#include <utility>

#include "games/corvane/napi-module/watcher/file-system.h"

// Any thread may use it.
class FakeFileSystem final : public orvel::util::FileSystem {
  public:
    struct Node {
        std::int64_t time;
        bool isFolder = false;
        std::errc listError{};  // why the folder cannot be listed
        std::errc timeError{};  // why its time cannot be read
    };

    // Runs once, after the next listing of the watched folder.
    std::function<void()> afterListing;

    FakeFileSystem() { Put(L"/demos", {1, true}); }

    void Put(const std::wstring& path, Node node) {
        const std::lock_guard lock(m_mutex);
        m_nodes[path] = node;
    }

    // The path and all below it.
    void Remove(const std::wstring& path) {
        const std::lock_guard lock(m_mutex);
        std::erase_if(m_nodes, [&](const auto& node) {
            return node.first == path || node.first.starts_with(path + L"/");
        });
    }

    // How often a path's time was asked for other than by listing, and how often a folder was listed.
    int TimeQueries() const { return m_timeQueries; }
    int Listings() const { return m_listings; }

    static std::wstring Generic(std::wstring path) {
        std::replace(path.begin(), path.end(), L'\\', L'/');
        return path;
    }

    std::error_code ListFolder(const std::wstring& systemPath, const Visitor& visit) override {
        std::wstring folder = Generic(systemPath);
        if (folder.ends_with(L'/')) folder.pop_back();
        ++m_listings;
        {
            const std::lock_guard lock(m_mutex);
            const auto listed = m_nodes.find(folder);
            if (listed == m_nodes.end()) return std::make_error_code(std::errc::no_such_file_or_directory);
            for (const auto& [path, node] : m_nodes) {
                const std::size_t slash = path.rfind(L'/');
                if (path.substr(0, slash) != folder) continue;
                visit({path.substr(slash + 1), node.isFolder,
                       node.timeError == std::errc{} ? std::optional(node.time) : std::nullopt});
            }
            if (listed->second.listError != std::errc{}) return make_error_code(listed->second.listError);
        }
        if (const auto then = std::exchange(afterListing, nullptr)) then();
        return {};
    }

    std::optional<std::int64_t> LastWriteTime(const std::wstring& path, std::error_code& error) override {
        const std::lock_guard lock(m_mutex);
        ++m_timeQueries;
        const auto node = m_nodes.find(Generic(path));
        error = make_error_code(node == m_nodes.end() ? std::errc::no_such_file_or_directory
                                                      : node->second.timeError);
        return error ? std::nullopt : std::optional(node->second.time);
    }

  private:
    std::mutex m_mutex;
    std::map<std::wstring, Node> m_nodes;
    std::atomic<int> m_timeQueries = 0;
    std::atomic<int> m_listings = 0;
};
