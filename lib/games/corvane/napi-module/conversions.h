// Conversions: JavaScript's arguments to the parser's types, and the document's "Creation".
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include <napi.h>

#include "games/corvane/corvane-lib/src/replay-parser.h"

namespace orvel::corvane {

// The UTF-16 units of a string, unpaired surrogates included.
std::wstring PathOf(const Napi::Value& string);

// A copy of the bytes of an ArrayBuffer.
std::vector<std::uint8_t> BytesOf(const Napi::Value& arrayBuffer);

// Adds "Creation" to the document of a parsed file: {"fileName": path in UTF-8 (an unpaired surrogate becomes
// EF BF BD), "timestamp": the replay's own timestamp}.
void AddCreation(ReplayParser& parser, const std::wstring& path);

}  // namespace orvel::corvane
