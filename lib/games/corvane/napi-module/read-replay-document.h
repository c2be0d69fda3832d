// readReplayDocument(path, key, options): the reading behind corvane_napi/client. Like ReadCorvaneDemo, but
// it takes a key, and every failure becomes an Error that says what is wrong with the file. Internal: it is
// left out of the enumeration of the module's functions.
#pragma once

#include <napi.h>

namespace orvel::corvane {

// Takes a string, the path; an ArrayBuffer, the AES key for a replay that carries none (empty: there is
// none); and, if wanted, an object of two booleans:
//
//     facts      the result is an object { text, facts } of two Buffers; the facts are those of facts-text.h
//     salvage    what stands before a failure is given as the document, if the file is a replay at all; the
//                facts then have the failure
//
// Returns the result document as JSON text, a Buffer of UTF-8. Throws a TypeError for other arguments, else
// an Error whose message is the reason and whose code is one of
//
//     ERR_UNREADABLE     the file cannot be opened
//     ERR_NOT_A_REPLAY   it does not begin as a replay does
//     ERR_KEY_REQUIRED   its events are encrypted and there is no key
//     ERR_CORRUPT        it is broken
//     ERR_OUT_OF_MEMORY  its document does not fit into memory
//
// Never ends the process and holds nothing afterwards. Any number of environments may call it at once.
Napi::Value ReadReplayDocument(const Napi::CallbackInfo& info);

}  // namespace orvel::corvane
