// The elements of the document's "events", written as JSON text while the events are read. Only this part of
// a document grows with the replay, and as a tree it would take ten times the memory of its text.
//
// The text is what nlohmann::json would write with an indent of 1: members sorted by key, numbers by the
// library's own algorithm. Texts that need escaping go through the library itself.
//
// An event can also be written as a row, for programs that parse many documents: its values alone, in an
// array. A float is the integer that its bits are, XOR those of the float at the same place in the row
// before (0 before the first): that has few digits, and whoever parses it need not convert decimals. Texts
// in rows are numbered from 0, and one that comes again can be its first number; but a long text, one that
// needs escaping, or one behind many others comes again as a text, with a new number.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>

namespace orvel::corvane {

// The key of a member as it stands in the text: on its own line, indented, quoted. All bytes of the array are
// copied each time: a fixed number is faster than the key's own length.
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
    // The order of members in the document.
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

    // Reserves memory for this many events of common size, so that the text need not move as it grows. Only
    // up to a limit: a hostile file can have millions of events that are never written.
    void Reserve(std::size_t count) { m_text.reserve(std::min(count, kMostReserved) * kCommonBytes); }

    // Call before the first event: events that may be rows are written as rows.
    void WantRows() { m_wantsRows = true; }

    // Between these two calls, write one event's members, sorted by key. mayBeRow: events of its kind have
    // the same members each time, with Omit() in place of those that are not there.
    void BeginEvent(bool mayBeRow);
    void EndEvent();

    void Write(const MemberKey& key, float number);  // NaN and infinities become null, but not in rows
    void Write(const MemberKey& key, std::uint32_t number);
    void Write(const MemberKey& key, bool flag);
    // In a text that is not UTF-8, U+FFFD replaces the invalid bytes; the first such text is kept
    // (InvalidText).
    void Write(const MemberKey& key, std::string_view text);
    // Writes two lower-case digits for each byte; at most kShortText / 2 bytes.
    void WriteHex(const MemberKey& key, std::span<const std::uint8_t> bytes);
    // A member that this event does not have: null in a row.
    void Omit();
    // The member "eventMeta"; in a row, two values.
    void WriteTimes(std::uint32_t time1, std::uint32_t time2);

    std::size_t EventCount() const { return m_eventCount; }
    // The first text that was not UTF-8, if any.
    const std::optional<std::string>& InvalidText() const { return m_invalidText; }
    // Moves the text out: all events, a comma behind each.
    std::string Take() { return std::move(m_text); }

    // Members of one event, "evtName" and "eventMeta" included.
    static constexpr std::size_t kMostMembers = 16;

  private:
    static constexpr std::size_t kCommonBytes = 448;  // an elimination with long numbers
    static constexpr std::size_t kMostReserved = 150'000;
    // An event is put together in this block and appended as a whole. Texts longer than kShortText are
    // appended directly.
    static constexpr std::size_t kShortText = 64;
    static constexpr std::size_t kBlockBytes = kMostMembers * (MemberKey::kBytes + kShortText + 8);
    // So many texts of rows are kept at most: a hostile file can name a million bots.
    static constexpr std::size_t kMostKept = 1024;

    struct TextHash : std::hash<std::string_view> {
        using is_transparent = void;
    };

    void Put(const MemberKey& key);
    void Put(std::string_view text);  // a short one
    void Put(std::uint32_t number);
    void PutBits(float number);
    void PutText(std::string_view plain);  // a short one, between quotes; or its number
    void PutLong(std::string_view text);
    void Flush();

    bool m_wantsRows = false;
    bool m_isRow = false;                                   // the present event
    std::array<std::uint32_t, kMostMembers> m_rowFloats{};  // the bits of those in the row before
    std::size_t m_nextFloat = 0;                            // its place in the present row
    std::uint32_t m_rowTextCount = 0;
    std::unordered_map<std::string, std::uint32_t, TextHash, std::equal_to<>> m_rowTexts;
    std::array<char, kBlockBytes> m_block;
    char* m_out = m_block.data();
    std::string m_text;
    std::size_t m_eventCount = 0;
    std::optional<std::string> m_invalidText;
};

}  // namespace orvel::corvane
