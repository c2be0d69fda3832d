// StartCorvaneWatcher and StopCorvaneWatcher: live results from the demo folder, delivered to a JavaScript
// callback.
//
// There is one watcher per process: whichever environment (main thread or worker) starts it has it, and a
// second start takes it over. It ends with Stop or with the environment that gets its results.
#pragma once

#include <napi.h>

namespace orvel::corvane {

// StartCorvaneWatcher(jsCallbackFn, encKey, interval): jsCallbackFn is called with one string, a result
// document as JSON text, for each time that a replay in the demo folder or below was written to; at most ten
// times a second. encKey, an ArrayBuffer, is the key for encrypted replays without one of their own; it may
// be empty. interval is read if it is a number, and not used: the folder is polled every 500 ms. Without a
// demo folder the callback gets {"err": ...}, and a watcher that runs goes on with the new callback. Returns
// undefined. Throws a TypeError for other arguments, and an Error if the folder cannot be listed, leaving all
// as it was, or if there can be no thread; then nothing watches.
Napi::Value StartCorvaneWatcher(const Napi::CallbackInfo& info);

// WatchFolder(callback, key, folder), corvane_napi/client's own: the same for any folder, undefined being the
// demo folder. callback is called with a text, the path of the file that it is from, and undefined or the
// code of an error; with a code the text is the reason why the file cannot be read, which ends nothing. A
// replay that is created is told as well, and one that is moved is not told again. Throws an Error with a
// code: ERR_NO_DEMO_FOLDER if the folder is not there, ERR_UNREADABLE if it cannot be listed,
// ERR_OUT_OF_MEMORY if there can be no thread.
Napi::Value WatchFolder(const Napi::CallbackInfo& info);

// Waits for the parse that is being made and the results that are due; they still reach the callback. Then
// nothing of the watcher keeps the process alive. Does nothing if no watcher runs. Returns undefined.
Napi::Value StopCorvaneWatcher(const Napi::CallbackInfo& info);

}  // namespace orvel::corvane
