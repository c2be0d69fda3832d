#include "games/corvane/napi-module/watcher/file-system.h"

namespace orvel::util {
namespace {

class OperatingSystem final : public FileSystem {
  public:
    std::error_code ListFolder(const std::wstring& folder, const Visitor& visit) override {
        return platform::ListFolder(folder, visit);
    }
    std::optional<std::int64_t> LastWriteTime(const std::wstring& path, std::error_code& error) override {
        return platform::LastWriteTime(platform::PathFromWide(path), error);
    }
};

constinit OperatingSystem operatingSystem;

}  // namespace

FileSystem& RealFileSystem() { return operatingSystem; }

}  // namespace orvel::util
