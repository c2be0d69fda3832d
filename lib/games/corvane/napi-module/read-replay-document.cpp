// readReplayDocument: path and key in; the document's text or a coded error out.
#include "games/corvane/napi-module/read-replay-document.h"

#include <algorithm>
#include <cstdint>
#include <ios>
#include <memory>
#include <new>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <nlohmann/json.hpp>

#include "games/corvane/corvane-lib/src/replay-parser.h"
#include "games/corvane/napi-module/arguments.h"
#include "games/corvane/napi-module/document-text.h"

namespace orvel::corvane {
namespace {

constexpr char kArgumentError[] = "Expected 2 required arguments [path, ArrayBuffer: key]";

// A reason that this unit itself finds, with its code.
class Refusal : public std::runtime_error {
  public:
    Refusal(const char* code, const std::string& reason) : std::runtime_error(reason), m_code(code) {}
    const char* Code() const { return m_code; }

  private:
    const char* m_code;
};

struct Failure {
    const char* code;
    std::string reason;
};

// Only inside a catch block: what the exception that is being handled says about the file.
Failure CurrentFailure() {
    try {
        throw;
    } catch (const Refusal& failure) {
        return {failure.Code(), failure.what()};
    } catch (const std::bad_alloc& failure) {
        return {"ERR_OUT_OF_MEMORY", failure.what()};
    } catch (const std::exception& failure) {
        // A missing key has no type of its own among the parser's exceptions.
        const bool noKey = std::string_view(failure.what()).ends_with("encryption key was not set.");
        return {noKey ? "ERR_KEY_REQUIRED" : "ERR_CORRUPT", failure.what()};
    } catch (const char* text) {
        return {"ERR_CORRUPT", text};
    } catch (...) {
        return {"ERR_CORRUPT", "a failure of an unknown kind"};
    }
}

Napi::Error ErrorOf(Napi::Env env, const Failure& failure) {
    Napi::Error error = Napi::Error::New(env, failure.reason);
    error.Set("code", failure.code);
    return error;
}

std::unique_ptr<ReplayParser> Open(const std::wstring& path) {
    try {
        return std::make_unique<ReplayParser>(path);
    } catch (const std::ios_base::failure& failure) {
        throw Refusal("ERR_UNREADABLE", failure.what());
    }
}

// The parser skips a payload that cannot be decrypted with a line on standard output. Here that line has no
// reader, and a document without some of its events would pass for a whole one.
void CheckDecryption(const ReplayParser& parser) {
    const auto& skipped = parser.Facts().skipped;
    const auto event = std::ranges::find(skipped, SkipReason::Undecryptable, &SkippedEvent::reason);
    if (event == skipped.end()) return;
    const ue4::ReplayFileInfo& info = parser.FileInfo();
    const std::int32_t bytes = info.Events[static_cast<std::size_t>(event->index)].SizeInBytes;
    throw Refusal("ERR_CORRUPT", "Decryption failed: " + std::to_string(bytes) + " bytes of event " +
                                     std::to_string(event->index) + ", a key of " +
                                     std::to_string(info.EncryptionKey.size()));
}

std::string DocumentTextOf(const std::wstring& path, std::vector<std::uint8_t> key) {
    const std::unique_ptr<ReplayParser> parser = Open(path);
    std::uint32_t resumePosition = 0;
    bool resumeFlag = false;
    parser->ParseReplay(resumePosition, resumeFlag, std::move(key));
    nlohmann::json& document = parser->Document();
    if (!document.contains("ReplayFileMeta")) {
        throw Refusal("ERR_NOT_A_REPLAY", "the magic number is not that of a replay");
    }
    CheckDecryption(*parser);
    document["Creation"] = CreationMember(path, parser->FileInfo().Timestamp);
    return parser->TakeText();
}

}  // namespace

Napi::Value ReadReplayDocument(const Napi::CallbackInfo& info) {
    const Napi::Env env = info.Env();
    if (info.Length() != 2 || !info[0].IsString() || !info[1].IsArrayBuffer()) {
        throw Napi::TypeError::New(env, kArgumentError);
    }
    try {
        const std::string text = DocumentTextOf(PathOf(info[0]), BytesOf(info[1]));
        return Napi::Buffer<char>::Copy(env, text.data(), text.size());
    } catch (const Napi::Error& failure) {
        // The arguments are right, so what the host refused is memory.
        throw ErrorOf(env, {"ERR_OUT_OF_MEMORY", failure.Message()});
    } catch (...) {
        throw ErrorOf(env, CurrentFailure());
    }
}

}  // namespace orvel::corvane
