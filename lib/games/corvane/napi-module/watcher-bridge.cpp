#include "games/corvane/napi-module/watcher-bridge.h"

namespace orvel::corvane {

Napi::Value StartCorvaneWatcher(const Napi::CallbackInfo& info) {
    throw Napi::Error::New(info.Env(), "watching is not built yet");
}

Napi::Value StopCorvaneWatcher(const Napi::CallbackInfo& info) { return info.Env().Undefined(); }

}  // namespace orvel::corvane
