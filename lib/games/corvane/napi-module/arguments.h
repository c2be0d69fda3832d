// JavaScript arguments in the form in which the parser takes them.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include <napi.h>

namespace orvel::corvane {

// The UTF-16 units of a string, unpaired surrogates included.
std::wstring PathOf(const Napi::Value& string);

// A copy of what an ArrayBuffer holds.
std::vector<std::uint8_t> BytesOf(const Napi::Value& arrayBuffer);

}  // namespace orvel::corvane
