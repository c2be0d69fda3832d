#include "games/corvane/napi-module/watcher-bridge.h"

#include <cstdint>
#include <exception>
#include <filesystem>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include <nlohmann/json.hpp>

#include "games/corvane/napi-module/conversions.h"
#include "games/corvane/napi-module/delivery-channel.h"
#include "games/corvane/napi-module/replay-failure.h"
#include "games/corvane/napi-module/watch-results.h"
#include "games/corvane/napi-module/watch-session.h"
#include "games/corvane/napi-module/watcher/demo-folder.h"
#include "util/platform/platform.h"

namespace orvel::corvane {
namespace {

constexpr char kArgumentError[] =
    "Expected 2 required arguments [jsCallbackFn, ArrayBuffer: encKey, <interval>]";
constexpr char kFolderArgumentError[] =
    "Expected 2 required arguments [callback, ArrayBuffer: key, <folder>]";
constexpr char kFolderError[] = "Couldn't locate Corvane's Demo Directory.";

// The one watcher of this process. Environments hold the lock while they start or stop it. The watcher's
// thread never takes the lock, so a holder may wait for that thread.
struct Watching {
    std::mutex mutex;
    std::unique_ptr<WatchSession> session;
};

// Never destroyed: the watcher's thread may still run when the process ends.
Watching& TheWatching() {
    static auto& watching = *new Watching;
    return watching;
}

void EndWatching(Watching& watching) {
    watching.session.reset();
    SetCurrentChannel(nullptr);
}

void OnEnvironmentEnd(void* channel) {
    Watching& watching = TheWatching();
    const std::lock_guard lock(watching.mutex);
    if (!IsCurrentChannel(static_cast<DeliveryChannel*>(channel))) return;
    if (watching.session) watching.session->Abandon();
    EndWatching(watching);
}

std::unique_ptr<WatchSession> Session(const std::filesystem::path& folder,
                                      std::unique_ptr<WatchResults> results) {
    return std::make_unique<WatchSession>(util::platform::WideFromPath(folder), std::move(results));
}

void DeliverFolderError(OwnedChannel channel, bool watching) {
    SetCurrentChannel(std::move(channel));
    QueueResult({nlohmann::json({{"err", kFolderError}}).dump(1)});
    // A running watcher now delivers to the new callback. Without one, the channel has done its work.
    if (!watching) SetCurrentChannel(nullptr);
    // Every delivery is followed by this pause, whichever thread makes it.
    std::this_thread::sleep_for(kDeliveryPause);
}

// Makes the new session and channel the current ones. The new callback gets each replay from its start, also
// replays that the old session has not reported yet. The result that the old session is working on goes to
// both callbacks.
void Begin(Watching& watching, std::unique_ptr<WatchSession> next, OwnedChannel channel) {
    if (watching.session) next->Replace(*watching.session);
    SetCurrentChannel(std::move(channel));
    watching.session = std::move(next);
    try {
        watching.session->Start();
    } catch (...) {
        EndWatching(watching);
        throw;
    }
}

void StartWatching(Napi::Env env, Napi::Function callback, std::vector<std::uint8_t> key) {
    OwnedChannel channel = OpenChannel(env, callback, OnEnvironmentEnd);
    Watching& watching = TheWatching();
    const std::lock_guard lock(watching.mutex);
    const auto folder = util::LocateDemoFolder();
    if (!folder) return DeliverFolderError(std::move(channel), watching.session != nullptr);
    Begin(watching, Session(*folder, ResultsForApplication(std::move(key))), std::move(channel));
}

// folder: without a value, the demo folder.
std::filesystem::path Existing(const std::optional<std::wstring>& folder) {
    if (!folder) {
        if (const auto demos = util::LocateDemoFolder()) return *demos;
        throw Refusal({"ERR_NO_DEMO_FOLDER", kFolderError});
    }
    std::filesystem::path path = util::platform::PathFromWide(*folder);
    std::error_code error;
    if (std::filesystem::exists(path, error)) return path;
    throw Refusal({"ERR_NO_DEMO_FOLDER", error ? error.message() : "there is no such folder"});
}

void StartClientWatching(Napi::Env env, Napi::Function callback, std::vector<std::uint8_t> key,
                         const std::optional<std::wstring>& folder) {
    OwnedChannel channel = OpenChannel(env, callback, OnEnvironmentEnd);
    Watching& watching = TheWatching();
    const std::lock_guard lock(watching.mutex);
    Begin(watching, Session(Existing(folder), ResultsForClient(std::move(key))), std::move(channel));
}

}  // namespace

Napi::Value StartCorvaneWatcher(const Napi::CallbackInfo& info) {
    const Napi::Env env = info.Env();
    if (info.Length() < 2 || !info[0].IsFunction() || !info[1].IsArrayBuffer()) {
        Napi::TypeError::New(env, kArgumentError).ThrowAsJavaScriptException();
        return env.Undefined();
    }
    std::vector<std::uint8_t> key = BytesOf(info[1]);
    // The interval has no effect: the folder is polled every 500 ms. It is still converted, so that a number
    // that cannot be converted fails.
    if (info.Length() > 2 && info[2].IsNumber()) info[2].ToNumber().Int64Value();
    try {
        StartWatching(env, info[0].As<Napi::Function>(), std::move(key));
    } catch (const Napi::Error&) {
        throw;
    } catch (const std::exception& failure) {
        throw Napi::Error::New(env, failure.what());
    }
    return env.Undefined();
}

Napi::Value WatchFolder(const Napi::CallbackInfo& info) {
    const Napi::Env env = info.Env();
    const bool named = info.Length() == 3 && info[2].IsString();
    if (info.Length() < 2 || !info[0].IsFunction() || !info[1].IsArrayBuffer() ||
        (info.Length() > 2 && !named && !info[2].IsUndefined())) {
        throw Napi::TypeError::New(env, kFolderArgumentError);
    }
    const auto folder = named ? std::optional(PathOf(info[2])) : std::nullopt;
    try {
        StartClientWatching(env, info[0].As<Napi::Function>(), BytesOf(info[1]), folder);
    } catch (const Napi::Error&) {
        throw;
    } catch (const std::filesystem::filesystem_error& failure) {
        throw ErrorOf(env, {"ERR_UNREADABLE", failure.what()});
    } catch (const std::system_error& failure) {  // no thread
        throw ErrorOf(env, {"ERR_OUT_OF_MEMORY", failure.what()});
    } catch (...) {
        throw ErrorOf(env, CurrentFailure(false));
    }
    return env.Undefined();
}

Napi::Value StopCorvaneWatcher(const Napi::CallbackInfo& info) {
    Watching& watching = TheWatching();
    const std::lock_guard lock(watching.mutex);
    EndWatching(watching);
    return info.Env().Undefined();
}

}  // namespace orvel::corvane
