// The text of events.
#include "games/corvane/corvane-lib/src/event-text.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstring>
#include <utility>

#include <nlohmann/json.hpp>

namespace orvel::corvane {
namespace {

// The two digits of each byte. Ids are a fifth of the text, and this takes a third of the time of single
// digits.
constexpr auto kHexDigits = [] {
    constexpr std::string_view kDigits = "0123456789abcdef";
    std::array<std::array<char, 2>, 256> pairs{};
    for (std::size_t byte = 0; byte < pairs.size(); ++byte)
        pairs[byte] = {kDigits[byte >> 4], kDigits[byte & 0xF]};
    return pairs;
}();

// Whether the text can stand between quotes as it is.
bool IsPlain(std::string_view text) {
    const auto isPlain = [](unsigned char c) { return c >= 0x20 && c < 0x80 && c != '"' && c != '\\'; };
    return std::ranges::all_of(text, isPlain);
}

using ErrorHandler = nlohmann::json::error_handler_t;

std::string Quoted(std::string_view text, ErrorHandler handler) {
    return nlohmann::json(text).dump(-1, ' ', false, handler);
}

}  // namespace

void EventText::BeginEvent(bool mayBeRow) {
    m_isRow = m_wantsRows && mayBeRow;
    m_nextFloat = 0;
    Put(m_isRow ? "\n  [" : "\n  {");
}

void EventText::EndEvent() {
    --m_out;  // drops the comma behind the last member
    Put(m_isRow ? "]," : "\n  },");
    Flush();
    ++m_eventCount;
}

void EventText::Write(const MemberKey& key, float number) {
    Put(key);
    if (m_isRow) {
        PutBits(number);
        Put(",");
    } else if (std::isfinite(number)) {
        // Not std::to_chars, which in rare cases gives other digits.
        m_out = nlohmann::detail::to_chars(m_out, m_block.data() + m_block.size(), double{number});
        Put(",");
    } else {
        Put("null,");
    }
}

void EventText::Write(const MemberKey& key, std::uint32_t number) {
    Put(key);
    Put(number);
    Put(",");
}

void EventText::Write(const MemberKey& key, bool flag) {
    Put(key);
    Put(flag ? "true," : "false,");
}

void EventText::Write(const MemberKey& key, std::string_view text) {
    Put(key);
    if (text.size() <= kShortText && IsPlain(text)) {
        PutText(text);
        Put(",");
        return;
    }
    if (m_isRow) ++m_rowTextCount;
    try {
        PutLong(Quoted(text, ErrorHandler::strict));
    } catch (const nlohmann::json::type_error&) {
        if (!m_invalidText) m_invalidText = text;
        PutLong(Quoted(text, ErrorHandler::replace));
    }
    Put(",");
}

void EventText::WriteHex(const MemberKey& key, std::span<const std::uint8_t> bytes) {
    Put(key);
    std::array<char, kShortText> digits;
    char* end = digits.data();
    for (const std::uint8_t byte : bytes) end = std::ranges::copy(kHexDigits[byte], end).out;
    PutText({digits.data(), end});
    Put(",");
}

void EventText::Omit() {
    if (m_isRow) Put("null,");
}

void EventText::WriteTimes(std::uint32_t time1, std::uint32_t time2) {
    if (!m_isRow) Put("\n   \"eventMeta\": {\n    \"time1\": ");
    Put(time1);
    Put(m_isRow ? "," : ",\n    \"time2\": ");
    Put(time2);
    Put(m_isRow ? "," : "\n   },");
}

void EventText::Put(const MemberKey& key) {
    if (m_isRow) return;
    std::memcpy(m_out, key.Bytes().data(), MemberKey::kBytes);
    m_out += key.Length();
}

void EventText::Put(std::string_view text) {
    std::memcpy(m_out, text.data(), text.size());
    m_out += text.size();
}

void EventText::Put(std::uint32_t number) {
    m_out = std::to_chars(m_out, m_block.data() + m_block.size(), number).ptr;
}

void EventText::PutBits(float number) {
    const auto bits = std::bit_cast<std::uint32_t>(number);
    Put(bits ^ std::exchange(m_rowFloats[m_nextFloat++], bits));
}

void EventText::PutText(std::string_view plain) {
    if (m_isRow) {
        const auto found = m_rowTexts.find(plain);
        if (found != m_rowTexts.end()) return Put(found->second);
        if (m_rowTexts.size() < kMostKept) m_rowTexts.emplace(plain, m_rowTextCount);
        ++m_rowTextCount;
    }
    Put("\"");
    Put(plain);
    Put("\"");
}

void EventText::PutLong(std::string_view text) {
    Flush();
    m_text += text;
}

void EventText::Flush() {
    m_text.append(m_block.data(), m_out);
    m_out = m_block.data();
}

}  // namespace orvel::corvane
