// ReadCorvaneDemo: path in, JSON text out.
#include "games/corvane/napi-module/read-corvane-demo.h"

#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>

#include <nlohmann/json.hpp>

#include "games/corvane/corvane-lib/src/replay-parser.h"
#include "games/corvane/corvane-lib/src/ue4/util/json-object.h"
#include "games/corvane/napi-module/arguments.h"
#include "games/corvane/napi-module/document-text.h"
#include "games/corvane/napi-module/process-end.h"

namespace orvel::corvane {
namespace {

constexpr char kArgumentError[] = "Expected 1 required argument [replayFilePath]";

// One unit per byte, sign-extended: bytes from 0x80 become U+FF80 to U+FFFF. Callers take the low byte of
// each unit and decode the bytes as UTF-8 to get at the characters.
std::u16string WidenBytes(const std::string& text) {
    std::u16string units(text.size(), u'\0');
    for (std::size_t i = 0; i < text.size(); ++i) {
        units[i] = static_cast<char16_t>(static_cast<signed char>(text[i]));
    }
    return units;
}

Napi::Value ParseToText(Napi::Env env, const std::wstring& path) {
    std::unique_ptr<ReplayParser> parser;
    try {
        parser = std::make_unique<ReplayParser>(path);
        std::uint32_t resumePosition = 0;
        bool resumeFlag = false;
        parser->ParseReplay(resumePosition, resumeFlag, {});
        ue4::Document document(parser->Document());
        ue4::AsObject(document.json)["Creation"] = CreationMember(path, parser->FileInfo().Timestamp);
        return Napi::String::New(env, WidenBytes(DocumentText(document.json)));
    } catch (const std::runtime_error&) {
        // ReplayException is one of them. The parser of a failed replay is deliberately not destroyed: its
        // memory and its open file stay held until the process ends.
        static_cast<void>(parser.release());
        return Napi::String::New(env, "");
    }
}

}  // namespace

Napi::Value ReadCorvaneDemo(const Napi::CallbackInfo& info) {
    const Napi::Env env = info.Env();
    if (info.Length() != 1 || !info[0].IsString()) {
        Napi::TypeError::New(env, kArgumentError).ThrowAsJavaScriptException();
        return env.Undefined();
    }
    try {
        return ParseToText(env, PathOf(info[0]));
    } catch (const Napi::Error&) {
        throw;
    } catch (const std::exception& failure) {
        throw Napi::Error::New(env, failure.what());
    } catch (const char* text) {
        EndProcess(text);
    }
}

}  // namespace orvel::corvane
