// What goes in and out: JavaScript's arguments in the form in which the parser takes them, and what a
// document says of its file.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include <napi.h>
#include <nlohmann/json.hpp>

namespace orvel::corvane {

// The UTF-16 units of a string, unpaired surrogates included.
std::wstring PathOf(const Napi::Value& string);

// A copy of what an ArrayBuffer holds.
std::vector<std::uint8_t> BytesOf(const Napi::Value& arrayBuffer);

// {"fileName": path in UTF-8 (an unpaired surrogate becomes EF BF BD), "timestamp": the replay's own
// timestamp}.
nlohmann::json CreationMember(const std::wstring& path, std::uint64_t timestamp);

}  // namespace orvel::corvane
