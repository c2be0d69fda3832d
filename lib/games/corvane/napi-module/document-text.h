// What both ways of delivering a result document share: its "Creation" member and its text.
#pragma once

#include <cstdint>
#include <string>

#include <nlohmann/json.hpp>

namespace orvel::corvane {

// {"fileName": path in UTF-8 (an unpaired surrogate becomes EF BF BD), "timestamp": the replay's own
// timestamp}.
nlohmann::json CreationMember(const std::wstring& path, std::uint64_t timestamp);

// JSON text in UTF-8: keys sorted, one blank of indent per level, non-ASCII characters as they are. Throws
// nlohmann::json's type_error for a string that is not valid UTF-8.
std::string DocumentText(const nlohmann::json& document);

}  // namespace orvel::corvane
