#include "games/corvane/napi-module/conversions.h"

#include "games/corvane/corvane-lib/src/ue4/util/json-object.h"
#include "util/platform/platform.h"

namespace orvel::corvane {

std::wstring PathOf(const Napi::Value& string) {
    const std::u16string units = string.As<Napi::String>().Utf16Value();
    return {units.begin(), units.end()};
}

std::vector<std::uint8_t> BytesOf(const Napi::Value& arrayBuffer) {
    auto buffer = arrayBuffer.As<Napi::ArrayBuffer>();
    const auto* bytes = static_cast<const std::uint8_t*>(buffer.Data());
    return {bytes, bytes + buffer.ByteLength()};
}

void AddCreation(ReplayParser& parser, const std::wstring& path) {
    nlohmann::json& creation = ue4::AsObject(parser.Document())["Creation"] = nlohmann::json::object();
    creation["timestamp"] = parser.FileInfo().Timestamp;
    creation["fileName"] = util::platform::WideToUtf8(path);
}

}  // namespace orvel::corvane
