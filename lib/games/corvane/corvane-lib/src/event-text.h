// The elements of the document's "events", written as JSON text while the events are read: they are the only
// part of a document that grows with the replay, and a tree of them would take ten times their text.
//
// The text is the one that nlohmann::json would make of the same events with an indent of 1: members sorted
// by key, numbers by its own algorithm, and texts that need escaping through the library itself.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>

namespace orvel::corvane {

// The key of an event's member as it stands in the text: on a line of its own, indented, quoted. Always
// copied whole, which is faster than as many bytes as it has.
class MemberKey {
  public:
    static constexpr std::size_t kBytes = 32;

    // key: at most 24 characters, none of which needs escaping.
    explicit constexpr MemberKey(std::string_view key) {
        Append("\n   \"");
        Append(key);
        Append("\": ");
    }
    constexpr const std::array<char, kBytes>& Bytes() const { return m_bytes; }
    constexpr std::size_t Length() const { return m_length; }
    // The order of the members in the document.
    constexpr bool operator<(const MemberKey& other) const { return m_bytes < other.m_bytes; }

  private:
    constexpr void Append(std::string_view text) {
        for (const char c : text) m_bytes.at(m_length++) = c;
    }

    std::array<char, kBytes> m_bytes{};
    std::size_t m_length = 0;
};

class EventText {
  public:
    EventText() = default;
    EventText(const EventText&) = delete;
    EventText& operator=(const EventText&) = delete;

    // Takes room for so many events of common size, so that the text need not move as it grows. A hostile
    // file can have millions that are never written: there is a limit to what is taken for them.
    void Reserve(std::size_t count) { m_text.reserve(std::min(count, kMostReserved) * kCommonBytes); }

    // An event is what is written between these two; members must come sorted by key.
    void BeginEvent();
    void EndEvent();

    void Write(const MemberKey& key, float number);  // what is not finite becomes null
    void Write(const MemberKey& key, std::uint32_t number);
    void Write(const MemberKey& key, bool flag);
    // A text that is not UTF-8 is written with U+FFFD in its place, and the first of them is kept.
    void Write(const MemberKey& key, std::string_view text);
    // Two lower-case digits for each of at most kShortText / 2 bytes.
    void WriteHex(const MemberKey& key, std::span<const std::uint8_t> bytes);
    // The member "eventMeta".
    void WriteTimes(std::uint32_t time1, std::uint32_t time2);

    std::size_t EventCount() const { return m_eventCount; }
    // The first text that was not UTF-8.
    const std::optional<std::string>& InvalidText() const { return m_invalidText; }
    // All events, a comma after each. Nothing is left.
    std::string Take() { return std::move(m_text); }

    // Of one event, with "evtName" and "eventMeta".
    static constexpr std::size_t kMostMembers = 16;

  private:
    static constexpr std::size_t kCommonBytes = 448;  // an elimination with long numbers
    static constexpr std::size_t kMostReserved = 150'000;
    // An event is put together here and appended as a whole; texts longer than kShortText go past it.
    static constexpr std::size_t kShortText = 64;
    static constexpr std::size_t kBlockBytes = kMostMembers * (MemberKey::kBytes + kShortText + 8);

    void Put(const MemberKey& key);
    void Put(std::string_view text);  // a short one
    void Put(std::uint32_t number);
    void PutLong(std::string_view text);
    void Flush();

    std::array<char, kBlockBytes> m_block;
    char* m_out = m_block.data();
    std::string m_text;
    std::size_t m_eventCount = 0;
    std::optional<std::string> m_invalidText;
};

}  // namespace orvel::corvane
