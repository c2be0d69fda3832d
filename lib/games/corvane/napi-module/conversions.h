// Conversions: JavaScript's arguments to the parser's types, and the document's "Creation".
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include <napi.h>
#include <nlohmann/json.hpp>

namespace orvel::corvane {

// The UTF-16 units of a string, unpaired surrogates included.
std::wstring PathOf(const Napi::Value& string);

// A copy of the bytes of an ArrayBuffer.
std::vector<std::uint8_t> BytesOf(const Napi::Value& arrayBuffer);

// {"fileName": path in UTF-8 (an unpaired surrogate becomes EF BF BD), "timestamp": the replay's own
// timestamp}.
nlohmann::json CreationMember(const std::wstring& path, std::uint64_t timestamp);

}  // namespace orvel::corvane
