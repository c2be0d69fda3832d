#include "games/corvane/napi-module/delivery-channel.h"

#include <algorithm>
#include <cstdio>
#include <mutex>
#include <utility>
#include <vector>

namespace orvel::corvane {
namespace {

// The current channel. Null: there is none, or Node-API has announced or done its end. All uses of the
// channel and its thread-safe function hold the lock, so none comes after its end.
struct Current {
    std::mutex mutex;
    DeliveryChannel* channel = nullptr;
};

// Never destroyed: the watcher's thread may use it until the process ends.
Current& TheCurrent() {
    static auto& current = *new Current;
    return current;
}

void EndEnvironment(void* data) {
    auto* channel = static_cast<DeliveryChannel*>(data);
    std::exchange(channel->onEnvironmentEnd, nullptr)(channel);
}

void Finalise(napi_env env, void* data, void*) {
    const std::unique_ptr<DeliveryChannel> channel(static_cast<DeliveryChannel*>(data));
    {
        Current& current = TheCurrent();
        const std::lock_guard lock(current.mutex);
        if (current.channel == channel.get()) current.channel = nullptr;
    }
    if (channel->onEnvironmentEnd) napi_remove_env_cleanup_hook(env, EndEnvironment, channel.get());
}

// Turns an exception of the callback into 'uncaughtException', as Node.js does for its own callbacks. (For a
// pending exception Node.js would only print a warning.)
void RaiseUncaught(napi_env env) {
    bool pending = false;
    napi_value exception;
    if (napi_is_exception_pending(env, &pending) == napi_ok && pending &&
        napi_get_and_clear_last_exception(env, &exception) == napi_ok) {
        napi_fatal_exception(env, exception);
    }
}

// Returns false if the text is too long for a JavaScript string. The length is passed: V8 ends the process if
// it has to find out such a length itself.
bool MakeString(napi_env env, const std::string& text, napi_value* result) {
    const std::size_t length = std::min(text.find('\0'), text.size());
    if (napi_create_string_utf8(env, text.data(), length, result) == napi_ok) return true;
    std::fprintf(stderr,
                 "[ orvel::corvane::MakeString ] Dropping a result of %zu bytes: no string can hold it\n",
                 length);
    return false;
}

// Makes the callback's arguments. Returns false if that is impossible.
bool MakeArguments(napi_env env, WatchResult& result, std::vector<napi_value>& arguments) {
    if (!MakeString(env, result.text, &arguments.emplace_back())) {
        if (!result.path) return false;
        result.code = "ERR_OUT_OF_MEMORY";
        if (!MakeString(env, "no string can hold the document", &arguments.back())) return false;
    }
    if (!result.path) return true;
    const std::u16string path(result.path->begin(), result.path->end());
    if (napi_create_string_utf16(env, path.data(), path.size(), &arguments.emplace_back()) != napi_ok) {
        return false;
    }
    return result.code == nullptr || MakeString(env, result.code, &arguments.emplace_back());
}

// Node-API calls this on the environment's thread, once for each queued result.
void CallJavaScript(napi_env env, napi_value callback, void*, void* data) {
    const std::unique_ptr<WatchResult> result(static_cast<WatchResult*>(data));
    if (env == nullptr || callback == nullptr) return;
    napi_value receiver;
    std::vector<napi_value> arguments;
    if (napi_get_undefined(env, &receiver) != napi_ok) return;
    if (result && !MakeArguments(env, *result, arguments)) return;
    if (napi_call_function(env, receiver, callback, arguments.size(), arguments.data(), nullptr) != napi_ok) {
        RaiseUncaught(env);
    }
}

}  // namespace

void ReleaseChannel::operator()(DeliveryChannel* channel) const {
    napi_release_threadsafe_function(channel->function, napi_tsfn_release);
}

OwnedChannel OpenChannel(Napi::Env env, Napi::Function callback,
                         DeliveryChannel::EnvironmentEnd onEnvironmentEnd) {
    constexpr std::size_t kUnboundedQueue = 0;
    constexpr std::size_t kThreads = 1;
    auto channel = std::make_unique<DeliveryChannel>();
    channel->onEnvironmentEnd = onEnvironmentEnd;
    if (napi_create_threadsafe_function(env, callback, nullptr, Napi::String::New(env, "fnReplayData"),
                                        kUnboundedQueue, kThreads, channel.get(), Finalise, nullptr,
                                        CallJavaScript, &channel->function) != napi_ok) {
        throw Napi::Error::New(env);
    }
    // Hooks run in reverse order. Added after the thread-safe function's own hook, this one runs before that
    // function closes.
    napi_add_env_cleanup_hook(env, EndEnvironment, channel.get());
    return OwnedChannel(channel.release());
}

void SetCurrentChannel(OwnedChannel next) {
    Current& current = TheCurrent();
    const std::lock_guard lock(current.mutex);
    const OwnedChannel previous(std::exchange(current.channel, next.release()));
}

bool IsCurrentChannel(const DeliveryChannel* channel) {
    Current& current = TheCurrent();
    const std::lock_guard lock(current.mutex);
    return channel == current.channel;
}

void QueueResult(WatchResult result) {
    auto queued = std::make_unique<WatchResult>(std::move(result));
    Current& current = TheCurrent();
    const std::lock_guard lock(current.mutex);
    if (current.channel == nullptr) return;
    const napi_status status =
        napi_call_threadsafe_function(current.channel->function, queued.get(), napi_tsfn_blocking);
    if (status == napi_ok) {
        static_cast<void>(queued.release());
    } else if (status == napi_closing) {
        current.channel = nullptr;
    }
}

}  // namespace orvel::corvane
