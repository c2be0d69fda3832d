// readReplayDocument(path, key, options): how corvane_napi/client reads. Like ReadCorvaneDemo, but it takes a
// key, and every failure is an Error that says what is wrong with the file. Internal: the function is not
// enumerable.
#pragma once

#include <napi.h>

namespace orvel::corvane {

// Takes a string, the path; an ArrayBuffer, the AES key for a replay that carries none (empty: no key); and
// optionally an object of booleans:
//
//     facts      the result is { text, facts }, two Buffers; facts-text.h describes the facts
//     salvage    for a broken replay, the result is what can be read of it; the facts name the failure.
//                A file that is no replay still fails
//     rows       in the document's text, eliminations are arrays of their values (event-text.h), which is for
//                the client's own use
//
// Returns the document as JSON text, a Buffer of UTF-8. Throws a TypeError for other arguments, else an Error
// whose message is the reason and whose code is one of these:
//
//     ERR_UNREADABLE     the file cannot be opened
//     ERR_NOT_A_REPLAY   it does not begin as a replay does
//     ERR_KEY_REQUIRED   its events are encrypted and there is no key
//     ERR_CORRUPT        it is broken
//     ERR_OUT_OF_MEMORY  its document does not fit into memory
//
// Never ends the process, and keeps nothing afterwards. Any number of environments may call it at once.
Napi::Value ReadReplayDocument(const Napi::CallbackInfo& info);

}  // namespace orvel::corvane
