// An add-on with one function that does nothing: what any add-on costs to load and to call.
#include <napi.h>

namespace {

Napi::Value Nothing(const Napi::CallbackInfo& info) { return Napi::String::New(info.Env(), ""); }

Napi::Object Init(Napi::Env env, Napi::Object exports) {
    exports.Set("nothing", Napi::Function::New(env, Nothing));
    return exports;
}

}  // namespace

NODE_API_MODULE(empty, Init)
