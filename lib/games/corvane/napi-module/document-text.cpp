#include "games/corvane/napi-module/document-text.h"

#include "util/platform/platform.h"

namespace orvel::corvane {

nlohmann::json CreationMember(const std::wstring& path, std::uint64_t timestamp) {
    return {{"timestamp", timestamp}, {"fileName", util::platform::WideToUtf8(path)}};
}

std::string DocumentText(const nlohmann::json& document) {
    return document.dump(1, ' ', false, nlohmann::json::error_handler_t::strict);
}

}  // namespace orvel::corvane
