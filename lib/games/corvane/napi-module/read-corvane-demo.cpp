// ReadCorvaneDemo: path in, JSON text out.
#include "games/corvane/napi-module/read-corvane-demo.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

#include <nlohmann/json.hpp>

#include "games/corvane/corvane-lib/src/replay-parser.h"
#include "games/corvane/napi-module/conversions.h"
#include "games/corvane/napi-module/process-end.h"

namespace orvel::corvane {
namespace {

constexpr char kArgumentError[] = "Expected 1 required argument [replayFilePath]";

// Tests eight bytes at a time: a text has megabytes.
bool IsAscii(std::string_view text) {
    std::uint64_t bits = 0;
    std::uint64_t word = 0;
    for (; text.size() >= sizeof(word); text.remove_prefix(sizeof(word))) {
        std::memcpy(&word, text.data(), sizeof(word));
        bits |= word;
    }
    for (const char c : text) bits |= static_cast<unsigned char>(c);
    return (bits & 0x8080808080808080) == 0;
}

// One unit per byte, sign-extended: bytes from 0x80 become U+FF80 to U+FFFF. Callers take the low byte of
// each unit and decode these bytes as UTF-8. The host stores an ASCII text with one byte per unit: half the
// memory, a third of the time.
Napi::Value StringOfBytes(Napi::Env env, std::string text) {
    napi_value string = nullptr;
    napi_status status;
    if (IsAscii(text)) {
        status = napi_create_string_latin1(env, text.data(), text.size(), &string);
    } else {
        const auto units = std::make_unique_for_overwrite<char16_t[]>(text.size());
        std::ranges::transform(text, units.get(),
                               [](char c) { return static_cast<char16_t>(static_cast<signed char>(c)); });
        const std::size_t count = text.size();
        std::string().swap(text);  // frees its memory for the host's string
        status = napi_create_string_utf16(env, units.get(), count, &string);
    }
    if (status != napi_ok) throw Napi::Error::New(env);
    return {env, string};
}

Napi::Value ParseToText(Napi::Env env, const std::wstring& path) {
    std::unique_ptr<ReplayParser> parser;
    try {
        parser = std::make_unique<ReplayParser>(path);
        ue4::ResumeState resume;
        parser->ParseReplay(resume, {});
        AddCreation(*parser, path);
        return StringOfBytes(env, parser->TakeText());
    } catch (const std::runtime_error&) {
        // ReplayException among them. On purpose the parser is not destroyed: its memory and its open file
        // stay held until the process ends.
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
