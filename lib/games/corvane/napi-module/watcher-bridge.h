// StartCorvaneWatcher and StopCorvaneWatcher: live results from the demo folder, delivered to a JavaScript
// callback.
#pragma once

#include <napi.h>

namespace orvel::corvane {

Napi::Value StartCorvaneWatcher(const Napi::CallbackInfo& info);
Napi::Value StopCorvaneWatcher(const Napi::CallbackInfo& info);

}  // namespace orvel::corvane
