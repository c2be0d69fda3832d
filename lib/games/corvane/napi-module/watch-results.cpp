#include "games/corvane/napi-module/watch-results.h"

#include <cstdio>
#include <filesystem>
#include <system_error>
#include <unordered_map>
#include <utility>

#include <nlohmann/json.hpp>

#include "games/corvane/corvane-lib/src/replay-parser.h"
#include "games/corvane/corvane-lib/src/ue4/util/json-object.h"
#include "games/corvane/napi-module/conversions.h"
#include "games/corvane/napi-module/delivery-channel.h"
#include "games/corvane/napi-module/process-end.h"
#include "games/corvane/napi-module/replay-failure.h"
#include "util/platform/platform.h"

namespace orvel::corvane {
namespace {

namespace fs = std::filesystem;

bool HasReplayName(const fs::path& file) { return file.extension() == ".replay"; }

// A pipe or a folder may have a replay's name too.
bool IsFile(const fs::path& file) {
    std::error_code error;
    return fs::is_regular_file(file, error);
}

// Where the next parse of a growing file goes on, and which replay it is: the time of its recording, 0 if the
// file has none.
struct ReplayState {
    ue4::ResumeState resume;
    std::uint64_t timestamp = 0;
};

// Parses from where the state says, and updates the state.
void Parse(ReplayParser& parser, ReplayState& state, const std::vector<std::uint8_t>& key) {
    parser.ParseReplay(state.resume, key);
    state.timestamp = parser.FileInfo().Timestamp;
}

std::string ResultText(ReplayParser& parser, const std::wstring& path, const ReplayState& state,
                       bool isFirst) {
    nlohmann::json& document = parser.Document();
    if (isFirst) AddCreation(parser, path);
    if (state.resume.IsKeyFromFile) ue4::AsObject(document)["PlayerStateEncryptionKey"] = 1;
    // The game has written to the file, but there is nothing to tell yet.
    if (document.empty()) ue4::AsObject(document)["GameAlive"] = 1;
    return parser.TakeText();
}

class ApplicationResults final : public WatchResults {
  public:
    explicit ApplicationResults(std::vector<std::uint8_t> key) : m_key(std::move(key)) {}

    bool Deliver(const std::wstring& path, util::FileStatus status) override {
        if (status != util::FileStatus::modified) return false;
        try {
            const fs::path file = util::platform::PathFromWide(path);
            if (!HasReplayName(file) || !IsFile(file)) return false;
            const auto [state, isFirst] = m_states.try_emplace(path);
            ReplayParser parser(path);
            Parse(parser, state->second, m_key);
            QueueResult({ResultText(parser, path, state->second, isFirst)});
            return true;
        } catch (...) {
            NameCulprit(path);
            EndProcessWithCurrentException();
        }
    }

  private:
    // Names the file that ends the process: no other message does.
    static void NameCulprit(const std::wstring& path) {
        const std::string name = util::platform::WideToUtf8(path);
        std::fprintf(stderr, "[ orvel::corvane::ApplicationResults::Deliver ] Ending the process over %s\n",
                     name.c_str());
    }

    const std::vector<std::uint8_t> m_key;
    std::unordered_map<std::wstring, ReplayState>
        m_states;  // by full path; a file that is erased and comes back goes on
};

class ClientResults final : public WatchResults {
  public:
    explicit ClientResults(std::vector<std::uint8_t> key) : m_key(std::move(key)) {}

    bool Deliver(const std::wstring& path, util::FileStatus status) override {
        std::unique_ptr<ReplayParser> parser;
        try {
            const fs::path file = util::platform::PathFromWide(path);
            if (!HasReplayName(file)) return false;
            if (status == util::FileStatus::erased) return Erase(path);
            std::error_code error;
            if (!IsFile(file) || fs::file_size(file, error) == 0) return false;
            QueueResult({Text(path, parser), path});
        } catch (...) {
            m_states.erase(path);
            ReadFailure failure = CurrentFailure(parser && parser->Reader().eof());
            QueueResult({std::move(failure.reason), path, failure.code});
        }
        return true;
    }

  private:
    bool Erase(const std::wstring& path) {
        const auto erased = m_states.extract(path);
        if (!erased.empty() && erased.mapped().timestamp != 0) {
            m_erased.insert_or_assign(erased.mapped().timestamp, erased.mapped());
        }
        return false;
    }

    std::string Text(const std::wstring& path, std::unique_ptr<ReplayParser>& parser) {
        const auto [entry, isNew] = m_states.try_emplace(path);
        ReplayState& state = entry->second;
        const std::uint64_t known = state.timestamp;
        bool isFirst = isNew;
        parser = OpenReplay(path);
        Parse(*parser, state, m_key);
        const auto moved = isNew ? m_erased.extract(state.timestamp) : decltype(m_erased)::node_type();
        const bool isAnother = !isNew && state.timestamp != known;
        if (isAnother || !moved.empty()) {
            state = isAnother ? ReplayState() : moved.mapped();
            isFirst = isAnother;
            parser = OpenReplay(path);
            Parse(*parser, state, m_key);
        }
        CheckDecryption(*parser);
        return ResultText(*parser, path, state, isFirst);
    }

    const std::vector<std::uint8_t> m_key;
    std::unordered_map<std::wstring, ReplayState> m_states;   // by full path
    std::unordered_map<std::uint64_t, ReplayState> m_erased;  // by the time of the recording
};

}  // namespace

std::unique_ptr<WatchResults> ResultsForApplication(std::vector<std::uint8_t> key) {
    return std::make_unique<ApplicationResults>(std::move(key));
}

std::unique_ptr<WatchResults> ResultsForClient(std::vector<std::uint8_t> key) {
    return std::make_unique<ClientResults>(std::move(key));
}

}  // namespace orvel::corvane
