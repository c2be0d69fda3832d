#include "games/corvane/napi-module/replay-failure.h"

#include <algorithm>
#include <cstdint>
#include <ios>
#include <new>

namespace orvel::corvane {
namespace {

constexpr char kCorrupt[] = "ERR_CORRUPT";
constexpr char kCut[] = "the file ends too early";

}  // namespace

std::unique_ptr<ReplayParser> OpenReplay(const std::wstring& path) {
    try {
        return std::make_unique<ReplayParser>(path);
    } catch (const std::ios_base::failure& failure) {
        throw Refusal({"ERR_UNREADABLE", failure.what()});
    }
}

void CheckDecryption(const ReplayParser& parser) {
    const auto& skipped = parser.Facts().skipped;
    const auto event = std::ranges::find(skipped, SkipReason::Undecryptable, &SkippedEvent::reason);
    if (event == skipped.end()) return;
    const ue4::ReplayFileInfo& info = parser.FileInfo();
    const std::int32_t bytes = info.Events[static_cast<std::size_t>(event->index)].SizeInBytes;
    throw Refusal({"ERR_CORRUPT", "Decryption failed: " + std::to_string(bytes) + " bytes of event " +
                                      std::to_string(event->index) + ", a key of " +
                                      std::to_string(info.EncryptionKey.size())});
}

ReadFailure CurrentFailure(bool isCut) {
    try {
        throw;
    } catch (const Refusal& failure) {
        return failure.Failure();
    } catch (const ue4::ReplayException& failure) {
        const bool noKey = failure.cause() == ue4::ReplayException::Cause::MissingKey;
        return {noKey ? "ERR_KEY_REQUIRED" : kCorrupt, failure.what()};
    } catch (const std::bad_alloc& failure) {
        return {"ERR_OUT_OF_MEMORY", failure.what()};
    } catch (const std::exception& failure) {
        return {kCorrupt, isCut ? kCut : failure.what()};
    } catch (const char* text) {
        return {kCorrupt, isCut ? kCut : text};
    } catch (...) {
        return {kCorrupt, "a failure of an unknown kind"};
    }
}

Napi::Error ErrorOf(Napi::Env env, const ReadFailure& failure) {
    Napi::Error error = Napi::Error::New(env, failure.reason);
    error.Set("code", failure.code);
    return error;
}

}  // namespace orvel::corvane
