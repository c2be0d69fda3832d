// Delivers texts to a JavaScript callback from any thread, through Node-API's thread-safe functions. One
// channel is the current one of the process.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include <napi.h>

namespace orvel::corvane {

// One callback. Node-API owns the channel: it lives until all that was queued before its release is
// delivered, or until its environment ends. Until its release it keeps the environment's event loop alive.
struct DeliveryChannel {
    using EnvironmentEnd = void (*)(void* channel);

    napi_threadsafe_function function = nullptr;
    EnvironmentEnd onEnvironmentEnd = nullptr;  // null after its call
};

struct ReleaseChannel {
    void operator()(DeliveryChannel* channel) const;
};
using OwnedChannel = std::unique_ptr<DeliveryChannel, ReleaseChannel>;

// Makes a channel to a callback. If the environment ends before the channel, onEnvironmentEnd gets the
// channel, on the environment's thread. Throws Napi::Error. Call it on the environment's thread, and hold no
// lock: an application's async hook may run its JavaScript here.
OwnedChannel OpenChannel(Napi::Env env, Napi::Function callback,
                         DeliveryChannel::EnvironmentEnd onEnvironmentEnd);

// Any thread may call the functions below.

// Releases the current channel and puts the given one in its place; an empty one leaves none. Results that
// are already queued still reach the old callback.
void SetCurrentChannel(OwnedChannel next);
bool IsCurrentChannel(const DeliveryChannel* channel);

// One call of the callback.
struct WatchResult {
    std::string text;                       // UTF-8; the string ends at the first zero byte
    std::optional<std::wstring> path = {};  // the file; if set, the callback gets it and the code as well
    const char* code = nullptr;             // set after a failure; the text is then the reason
};

// Queues a result for the current callback and does not wait. Drops it if there is no current channel or its
// environment is ending. Also drops a text that is too long for a JavaScript string, with a line on standard
// error; a callback that gets codes gets ERR_OUT_OF_MEMORY instead.
void QueueResult(WatchResult result);

}  // namespace orvel::corvane
