#include "games/corvane/napi-module/document-text.h"

#include "util/platform/platform.h"

namespace orvel::corvane {

nlohmann::json CreationMember(const std::wstring& path, std::uint64_t timestamp) {
    nlohmann::json creation = nlohmann::json::object();
    creation["timestamp"] = timestamp;
    creation["fileName"] = util::platform::WideToUtf8(path);
    return creation;
}

std::string DocumentText(const nlohmann::json& document) {
    return document.dump(1, ' ', false, nlohmann::json::error_handler_t::strict);
}

}  // namespace orvel::corvane
