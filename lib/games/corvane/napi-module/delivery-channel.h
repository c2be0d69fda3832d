// The way of texts to a JavaScript callback, from any thread: Node-API's thread-safe functions, and the one
// of them that is the current one of this process.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include <napi.h>

namespace orvel::corvane {

// One callback. Node-API owns it: it lives until its thread-safe function has delivered all that was queued
// after its release, or until its environment ends. It keeps its environment's event loop alive until it is
// released.
struct DeliveryChannel {
    using EnvironmentEnd = void (*)(void* channel);

    napi_threadsafe_function function = nullptr;
    EnvironmentEnd onEnvironmentEnd = nullptr;  // null once it has been called
};

struct ReleaseChannel {
    void operator()(DeliveryChannel* channel) const;
};
using OwnedChannel = std::unique_ptr<DeliveryChannel, ReleaseChannel>;

// Makes a channel to a callback. onEnvironmentEnd gets it if the environment ends before the channel does, on
// the environment's own thread. Throws Napi::Error. To be called on the environment's thread, without a lock:
// it runs the application's own JavaScript, if that has an async hook.
OwnedChannel OpenChannel(Napi::Env env, Napi::Function callback,
                         DeliveryChannel::EnvironmentEnd onEnvironmentEnd);

// The functions below may be called by any thread.

// Puts a channel in the current one's place, which is released: what was queued to it still reaches its
// callback. An empty one leaves none.
void SetCurrentChannel(OwnedChannel next);
bool IsCurrentChannel(const DeliveryChannel* channel);

// What a callback is called with.
struct WatchResult {
    std::string text;                       // UTF-8; the callback gets a string up to the first zero byte
    std::optional<std::wstring> path = {};  // the text's file: the callback gets it and the code as well
    const char* code = nullptr;             // why there is no document; then the text is the reason
};

// Queues a result for the current channel's callback. Does not wait. Without a current channel, or when its
// environment is ending, the result is dropped. So is a text that is longer than a JavaScript string can be,
// with a line on standard error; for a callback that gets codes it becomes ERR_OUT_OF_MEMORY.
void QueueResult(WatchResult result);

}  // namespace orvel::corvane
