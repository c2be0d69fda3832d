// ReadCorvaneDemo(replayFilePath): parses one replay file on the calling JavaScript thread.
#pragma once

#include <napi.h>

namespace orvel::corvane {

// Takes exactly one argument, a string: the path. Returns the document as JSON text in which each byte from
// 0x80 is one unit U+FF80 to U+FFFF, or "" for a replay that cannot be opened or parsed. Throws a TypeError
// for other arguments, and an Error if a parsed document cannot be returned (no memory, a name that is not
// UTF-8). A failure of the container, thrown as a plain C string, ends the process. Keeps no state between
// calls; any number of environments may call it at once.
Napi::Value ReadCorvaneDemo(const Napi::CallbackInfo& info);

}  // namespace orvel::corvane
