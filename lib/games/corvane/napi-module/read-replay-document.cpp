// readReplayDocument: takes path and key; gives the document's text and facts, or an error with a code.
#include "games/corvane/napi-module/read-replay-document.h"

#include <cstdint>
#include <memory>
#include <new>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <nlohmann/json.hpp>

#include "games/corvane/corvane-lib/src/replay-parser.h"
#include "games/corvane/napi-module/conversions.h"
#include "games/corvane/napi-module/facts-text.h"
#include "games/corvane/napi-module/replay-failure.h"

namespace orvel::corvane {
namespace {

constexpr char kArgumentError[] = "Expected 2 required arguments [path, ArrayBuffer: key, <options>]";

struct Options {
    bool facts = false;
    bool salvage = false;
    bool rows = false;
};

struct Reading {
    std::string text;
    std::string facts;  // if they are wanted
};

bool IsReplay(ReplayParser& parser) { return parser.Document().contains("ReplayFileMeta"); }

void Parse(ReplayParser& parser, std::vector<std::uint8_t> key) {
    ue4::ResumeState resume;
    parser.ParseReplay(resume, std::move(key));
    if (!IsReplay(parser)) {
        throw Refusal({"ERR_NOT_A_REPLAY", "the magic number is not that of a replay"});
    }
    CheckDecryption(parser);
}

// The document's text. In a salvaged document U+FFFD replaces what is not UTF-8.
std::string TextOf(ReplayParser& parser, bool salvage, std::optional<ReadFailure>& failure) {
    try {
        return parser.TakeText();
    } catch (const nlohmann::json::type_error&) {
        if (!salvage) throw;
        if (!failure) failure = CurrentFailure(false);
        return parser.TakeText(nlohmann::json::error_handler_t::replace);
    }
}

Reading Read(const std::wstring& path, std::vector<std::uint8_t> key, Options options) {
    const std::unique_ptr<ReplayParser> parser = OpenReplay(path);
    if (options.facts) parser->WantBotNames();
    if (options.rows) parser->WantEventRows();
    std::optional<ReadFailure> failure;
    try {
        Parse(*parser, std::move(key));
    } catch (const std::bad_alloc&) {
        throw;
    } catch (...) {
        failure = CurrentFailure(parser->Reader().eof());
        if (!options.salvage || !IsReplay(*parser)) throw Refusal(*failure);
        parser->Salvage();
    }
    AddCreation(*parser, path);
    Reading reading;
    reading.text = TextOf(*parser, options.salvage, failure);
    if (options.facts) reading.facts = FactsText(*parser, failure);
    return reading;
}

Options OptionsOf(const Napi::CallbackInfo& info) {
    if (info.Length() < 3) return {};
    const auto object = info[2].As<Napi::Object>();
    return {object.Get("facts").ToBoolean(), object.Get("salvage").ToBoolean(),
            object.Get("rows").ToBoolean()};
}

Napi::Value BufferOf(Napi::Env env, const std::string& text) {
    return Napi::Buffer<char>::Copy(env, text.data(), text.size());
}

Napi::Value ResultOf(Napi::Env env, const Reading& reading, Options options) {
    if (!options.facts) return BufferOf(env, reading.text);
    Napi::Object result = Napi::Object::New(env);
    result.Set("text", BufferOf(env, reading.text));
    result.Set("facts", BufferOf(env, reading.facts));
    return result;
}

}  // namespace

Napi::Value ReadReplayDocument(const Napi::CallbackInfo& info) {
    const Napi::Env env = info.Env();
    const bool hasOptions = info.Length() == 3 && info[2].IsObject();
    if ((info.Length() != 2 && !hasOptions) || !info[0].IsString() || !info[1].IsArrayBuffer()) {
        throw Napi::TypeError::New(env, kArgumentError);
    }
    try {
        const Options options = OptionsOf(info);
        return ResultOf(env, Read(PathOf(info[0]), BytesOf(info[1]), options), options);
    } catch (const Napi::Error& failure) {
        // The arguments are right, so the host can only lack memory.
        throw ErrorOf(env, {"ERR_OUT_OF_MEMORY", failure.Message()});
    } catch (...) {
        throw ErrorOf(env, CurrentFailure(false));
    }
}

}  // namespace orvel::corvane
