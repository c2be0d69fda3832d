// The add-on's entry: registers the module "corvane_napi" with its three public functions and two internal
// ones for the client.
#include <napi.h>

#include "games/corvane/napi-module/read-corvane-demo.h"
#include "games/corvane/napi-module/read-replay-document.h"
#include "games/corvane/napi-module/watcher-bridge.h"

namespace {

void Publish(Napi::Env env, Napi::Object exports, const char* name,
             Napi::Value (*function)(const Napi::CallbackInfo&)) {
    exports.Set(name, Napi::Function::New(env, function, name));
}

// Not enumerable: only corvane_napi/client calls it; it is not part of the module's interface.
void PublishInternal(Napi::Env env, Napi::Object exports, const char* name,
                     Napi::Value (*function)(const Napi::CallbackInfo&)) {
    exports.DefineProperty(Napi::PropertyDescriptor::Value(name, Napi::Function::New(env, function, name)));
}

Napi::Object Publish(Napi::Env env, Napi::Object exports) {
    Publish(env, exports, "ReadCorvaneDemo", orvel::corvane::ReadCorvaneDemo);
    Publish(env, exports, "StartCorvaneWatcher", orvel::corvane::StartCorvaneWatcher);
    Publish(env, exports, "StopCorvaneWatcher", orvel::corvane::StopCorvaneWatcher);
    PublishInternal(env, exports, "readReplayDocument", orvel::corvane::ReadReplayDocument);
    PublishInternal(env, exports, "watchFolder", orvel::corvane::WatchFolder);
    return exports;
}

napi_value Initialise(napi_env env, napi_value exports) {
    return Napi::RegisterModule(env, exports, Publish);
}

napi_module module = {NAPI_MODULE_VERSION, 0, "corvane-napi.cpp", Initialise, "corvane_napi", nullptr, {}};

// Registers the module while the host loads this file, as the host expects. Has no destructor: the host keeps
// the record.
struct Registration {
    Registration() { napi_module_register(&module); }
};
const Registration registration;

}  // namespace
