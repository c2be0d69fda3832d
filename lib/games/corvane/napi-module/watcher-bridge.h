// StartCorvaneWatcher and StopCorvaneWatcher: results from the demo folder while the game writes, for a
// JavaScript callback.
//
// There is one watcher per process. It belongs to the environment (main thread or worker) that started it
// last. It ends with StopCorvaneWatcher or with that environment.
#pragma once

#include <napi.h>

namespace orvel::corvane {

// StartCorvaneWatcher(jsCallbackFn, encKey, interval). Whenever a replay in or below the demo folder was
// written to, jsCallbackFn gets one string: a document as JSON text. At most ten calls a second. encKey: an
// ArrayBuffer, the key for encrypted replays without their own; may be empty. interval: not used, the folder
// is polled every 500 ms. Without a demo folder the callback gets {"err": ...}, and a watcher that runs goes
// on with the new callback. Returns undefined. Throws a TypeError for other arguments. Throws an Error if the
// folder cannot be listed, and changes nothing then; or if no thread can be started, and then nothing
// watches.
Napi::Value StartCorvaneWatcher(const Napi::CallbackInfo& info);

// WatchFolder(callback, key, folder), internal, for corvane_napi/client. The same for any folder; undefined:
// the demo folder. callback gets a text, the path of its file, and undefined or an error code. With a code,
// the text is the reason why the file cannot be read; that ends nothing. Created replays are told too, moved
// ones not again. Throws an Error with a code: ERR_NO_DEMO_FOLDER if the folder is not there, ERR_UNREADABLE
// if it cannot be listed, ERR_OUT_OF_MEMORY if no thread can be started.
Napi::Value WatchFolder(const Napi::CallbackInfo& info);

// Waits for the parse under way and for the results that are due; these still reach the callback. Afterwards
// the watcher no longer keeps the process alive. Does nothing if no watcher runs. Returns undefined.
Napi::Value StopCorvaneWatcher(const Napi::CallbackInfo& info);

}  // namespace orvel::corvane
