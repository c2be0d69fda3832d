#include "games/corvane/napi-module/arguments.h"

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

}  // namespace orvel::corvane
