// ReadCorvaneDemo(replayFilePath): one replay file, parsed on the calling JavaScript thread.
#pragma once

#include <napi.h>

namespace orvel::corvane {

// Takes exactly one argument, a string: the path. Returns the result document as JSON text in which every
// byte from 0x80 stands as one unit U+FF80 to U+FFFF, or "" for a replay that cannot be opened or parsed.
// Throws a TypeError for other arguments, and an Error for what keeps a parsed document from being handed
// over (no memory, a name that is not UTF-8). A failure of the container, thrown as a plain C string, ends
// the process. Keeps no state between calls; any number of environments may call it at once.
Napi::Value ReadCorvaneDemo(const Napi::CallbackInfo& info);

}  // namespace orvel::corvane
