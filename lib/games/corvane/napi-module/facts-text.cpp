#include "games/corvane/napi-module/facts-text.h"

#include <algorithm>
#include <map>
#include <utility>

#include <nlohmann/json.hpp>

#include "games/corvane/corvane-lib/src/event-kinds.h"

namespace orvel::corvane {
namespace {

using nlohmann::json;

// Whether the last chunk, or only its head, runs past the end of the file.
bool IsCut(const ue4::ReplayFileInfo& info) {
    if (info.TableEnd == info.TotalDataSizeInBytes) return false;
    if (info.Chunks.empty() || info.Chunks.back().TypeOffset != info.TableEnd) return true;
    return info.Chunks.back().DataOffset + info.Chunks.back().SizeInBytes > info.TotalDataSizeInBytes;
}

const char* End(const ue4::ReplayFileInfo& info, bool failed) {
    if (failed && !IsCut(info)) return "failed";
    if (info.bIsLive) return "live";
    return info.TableEnd == info.TotalDataSizeInBytes ? "complete" : "cut";
}

// These functions fill a value that already belongs to the facts: json-object.h says why.

void AddFailure(const std::optional<ReadFailure>& failure, json& value) {
    if (!failure) return;
    ue4::AsObject(value)["code"] = failure->code;
    value["reason"] = failure->reason;
}

const char* ReasonText(SkipReason reason) {
    switch (reason) {
        case SkipReason::Undecryptable:
            return "undecryptable";
        case SkipReason::TooShort:
            return "tooShort";
        case SkipReason::Unknown:
            return "unknown";
        case SkipReason::Broken:
            return "broken";
    }
    return "unknown";
}

std::string NameOf(const ue4::FLocalFileEventInfo& info) {
    const EventKind* kind = FindEventKind(info);
    return kind == nullptr ? info.Group + "/" + info.Metadata : std::string(NameOf(*kind));
}

void AddSkipped(const ReplayParser& parser, json& list) {
    std::map<std::pair<std::string, SkipReason>, std::uint32_t> counts;
    for (const SkippedEvent& event : parser.Facts().skipped) {
        const auto& info = parser.FileInfo().Events[static_cast<std::size_t>(event.index)];
        ++counts[{NameOf(info), event.reason}];
    }
    list = json::array();
    for (const auto& [event, count] : counts) {
        json& object = list.emplace_back(json::object());
        object["name"] = event.first;
        object["count"] = count;
        object["reason"] = ReasonText(event.second);
    }
}

void AddWarnings(const ReplayParser& parser, json& list) {
    constexpr std::uint32_t kClearedChunk = 0xFFFFFFFF;
    const ue4::ReplayFileInfo& info = parser.FileInfo();
    list = json::array();
    const auto cleared = std::ranges::count(info.Chunks, kClearedChunk, &ue4::ReplayChunkInfo::ChunkType);
    if (cleared != 0) list.push_back(std::to_string(cleared) + " unknown (cleared) chunks were skipped");
    if (info.HeaderChunkIndex == -1) list.push_back("there is no header chunk");
    if (!parser.Facts().headerRefusal.empty()) list.push_back(parser.Facts().headerRefusal);
    if (info.TableEnd != info.TotalDataSizeInBytes && !IsCut(info)) {
        list.push_back("the chunk at byte " + std::to_string(info.TableEnd) + " cannot belong to the file");
    }
    for (const std::string_view name : MissingStatistics(info)) {
        list.push_back("there is no " + std::string(name) + ", which a match has at its end");
    }
}

void AddTexts(const ReplayParser& parser, json& object) {
    object = json::object();
    object["FriendlyName"] = parser.FileInfo().FriendlyName;
    object["branch"] = parser.Header().EngineVersion.Branch;
    json& levels = object["levels"] = json::array();
    for (const LevelNameAndTime& level : parser.Header().LevelNamesAndTimes) levels.push_back(level.Name);
    json& gameData = object["GameSpecificData"] = json::array();
    for (const std::string& data : parser.Header().GameSpecificData) gameData.push_back(data);
    json& names = object["names"] = json::array();
    for (const BotName& bot : parser.Facts().botNames) {
        json& entry = names.emplace_back(json::array());
        entry.push_back(bot.event);
        entry.push_back(bot.key);
        entry.push_back(bot.text);
    }
}

}  // namespace

std::string FactsText(const ReplayParser& parser, const std::optional<ReadFailure>& failure) {
    const ue4::ReplayFileInfo& info = parser.FileInfo();
    ue4::Document facts(json::object());
    facts.json["end"] = End(info, failure.has_value());
    facts.json["fileBytes"] = info.TotalDataSizeInBytes;
    facts.json["cutAt"] = info.TableEnd == info.TotalDataSizeInBytes ? json() : json(info.TableEnd);
    AddFailure(failure, facts.json["failure"]);
    AddSkipped(parser, facts.json["skipped"]);
    AddWarnings(parser, facts.json["warnings"]);
    AddTexts(parser, facts.json["texts"]);
    return facts.json.dump(-1, ' ', false, json::error_handler_t::replace);
}

}  // namespace orvel::corvane
