#include "games/corvane/napi-module/conversions.h"

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

nlohmann::json CreationMember(const std::wstring& path, std::uint64_t timestamp) {
    nlohmann::json creation = nlohmann::json::object();
    creation["timestamp"] = timestamp;
    creation["fileName"] = util::platform::WideToUtf8(path);
    return creation;
}

}  // namespace orvel::corvane
