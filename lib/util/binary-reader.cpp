// Reads values from standard input streams.
#include "util/binary-reader.h"

#include <algorithm>
#include <array>
#include <span>
#include <string_view>
#include <utility>

#include "util/byte-order.h"

namespace CppUtilities {
namespace {

using orvel::util::LoadBigEndian;
using orvel::util::LoadLittleEndian;
using orvel::util::WithFailureText;

// Lengths up to here are believed: asking the stream for its size costs more than the memory.
constexpr std::uint64_t kBelievedBytes = 4096;

}  // namespace

BinaryReader::BinaryReader(std::istream* stream, Endianess endianess, bool giveOwnership)
    : m_stream(*stream),
      m_window(dynamic_cast<orvel::util::WindowBuf*>(stream->rdbuf())),
      m_owned(giveOwnership ? stream : nullptr),
      m_bigEndian(endianess != LittleEndian) {}

const char* BinaryReader::takeHeld(std::size_t length) {
    if (window() == nullptr || m_window->Held().size() < length) return nullptr;
    const char* const bytes = m_window->Held().data();
    m_window->Take(length);
    return bytes;
}

template <typename Word>
bool BinaryReader::readWord(Word& value, bool bigEndian) {
    std::array<char, sizeof(Word)> block;
    const char* bytes = takeHeld(block.size());
    if (bytes == nullptr) {
        read(block.data(), block.size());
        if (fail()) return false;
        bytes = block.data();
    }
    value = bigEndian ? LoadBigEndian<Word>(bytes) : LoadLittleEndian<Word>(bytes);
    return true;
}

void BinaryReader::read(std::int32_t& value) {
    std::uint32_t word = 0;
    if (readWord(word, m_bigEndian)) value = static_cast<std::int32_t>(word);
}

void BinaryReader::read(std::uint32_t& value) { readWord(value, m_bigEndian); }

void BinaryReader::read(std::uint64_t& value) { readWord(value, m_bigEndian); }

std::int32_t BinaryReader::readInt32LE() {
    std::uint32_t word = 0;
    readWord(word, false);
    return static_cast<std::int32_t>(word);
}

std::int32_t BinaryReader::readInt32BE() {
    std::uint32_t word = 0;
    readWord(word, true);
    return static_cast<std::int32_t>(word);
}

void BinaryReader::read(char* buffer, std::streamsize length) {
    if (const char* const bytes = takeHeld(static_cast<std::size_t>(length))) {
        std::copy_n(bytes, length, buffer);
        return;
    }
    WithFailureText(m_stream, [&] { m_stream.read(buffer, length); });
}

void BinaryReader::read(std::string& text) {
    text.clear();
    std::uint32_t length = 0;
    read(length);
    if (!isCredible(length)) return runOut();
    std::string bytes(length, '\0');
    read(bytes.data(), static_cast<std::streamsize>(length));
    if (!fail()) text = std::move(bytes);
}

std::string BinaryReader::readTerminatedString(char terminator) {
    if (window() != nullptr) {
        const std::string_view held = m_window->Held();
        const std::size_t length = held.find(terminator);
        if (length != held.npos) {
            m_window->Take(length + 1);
            return std::string(held.substr(0, length));
        }
    }
    std::string text;
    WithFailureText(m_stream, [&] {
        std::array<char, kBelievedBytes + 1> block;  // one more for the zero that get() appends
        std::size_t count = 0;
        do {
            // get() fails if the terminator comes first, so that case is tested before.
            if (m_stream.peek() == std::istream::traits_type::to_int_type(terminator)) break;
            m_stream.get(block.data(), block.size(), terminator);
            count = static_cast<std::size_t>(m_stream.gcount());
            text.append(block.data(), count);
            if (count == kBelievedBytes && tellg() >= 0) return appendTerminated(text, terminator);
        } while (count == kBelievedBytes);
        m_stream.get();
    });
    return fail() ? std::string{} : text;
}

void BinaryReader::appendTerminated(std::string& text, char terminator) {
    const std::optional<std::size_t> length = distanceTo(terminator);
    if (!length) return runOut();
    const std::size_t before = text.size();
    text.resize(before + *length);
    read(text.data() + before, static_cast<std::streamsize>(*length));
    m_stream.get();
}

std::optional<std::size_t> BinaryReader::distanceTo(char byte) {
    const std::int64_t here = tellg();
    std::array<char, 16 * 1024> block;
    std::uint64_t distance = 0;
    std::size_t count = 0;
    bool found = false;
    do {
        // Reads the buffer directly: here the end of the data is no failure, but a failing device is.
        try {
            count = static_cast<std::size_t>(m_stream.rdbuf()->sgetn(block.data(), std::ssize(block)));
        } catch (const std::ios_base::failure&) {
            m_stream.setstate(std::ios_base::badbit);
            return std::nullopt;
        }
        const auto end = block.begin() + static_cast<std::ptrdiff_t>(count);
        const auto at = std::find(block.begin(), end, byte);
        found = at != end;
        distance += static_cast<std::uint64_t>(at - block.begin());
    } while (!found && count == block.size());
    seekg(here);
    if (!found || !std::in_range<std::ptrdiff_t>(distance)) return std::nullopt;
    return static_cast<std::size_t>(distance);
}

std::wstring BinaryReader::readWString(std::uint32_t count) {
    constexpr std::uint64_t kUnitBytes = 2;
    if (!isCredible(count * kUnitBytes)) {
        runOut();
        return {};
    }
    std::wstring text(static_cast<std::size_t>(count), L'\0');
    // Through a block on the stack, so that the stored form never fills memory beside the wide one.
    std::array<char, 1024> block;
    for (std::span<wchar_t> rest = text; !rest.empty() && !fail();) {
        const std::size_t units = std::min<std::size_t>(rest.size(), block.size() / kUnitBytes);
        read(block.data(), static_cast<std::streamsize>(units * kUnitBytes));
        for (std::size_t i = 0; i < units; ++i) {
            rest[i] = static_cast<wchar_t>(LoadLittleEndian<std::uint16_t>(&block[i * kUnitBytes]));
        }
        rest = rest.subspan(units);
    }
    return fail() ? std::wstring{} : text;
}

std::int64_t BinaryReader::tellg() {
    if (window() != nullptr) return m_window->Position();
    return WithFailureText(m_stream, [&] { return std::int64_t{std::streamoff{m_stream.tellg()}}; });
}

void BinaryReader::seekg(std::int64_t position) {
    if (window() != nullptr && position >= 0) {
        m_window->pubseekpos(std::streampos{std::streamoff{position}});
        return;
    }
    WithFailureText(m_stream, [&] { m_stream.seekg(std::streampos{std::streamoff{position}}); });
}

std::uint64_t BinaryReader::remaining() {
    if (!m_stream.good()) return 0;
    if (m_window != nullptr) {
        return static_cast<std::uint64_t>(std::max<std::int64_t>(m_window->Size() - m_window->Position(), 0));
    }
    const std::int64_t here = tellg();
    // Without positions the stream is over memory, and its buffer holds all there is.
    if (here < 0)
        return static_cast<std::uint64_t>(std::max<std::streamsize>(m_stream.rdbuf()->in_avail(), 0));
    return WithFailureText(m_stream, [&] {
        m_stream.seekg(0, std::ios_base::end);
        const std::int64_t end = std::streamoff{m_stream.tellg()};
        m_stream.seekg(std::streampos{std::streamoff{here}});
        return static_cast<std::uint64_t>(std::max<std::int64_t>(end - here, 0));
    });
}

void BinaryReader::runOut() {
    WithFailureText(m_stream, [&] { m_stream.setstate(std::ios_base::eofbit | std::ios_base::failbit); });
}

void BinaryReader::clear() {
    WithFailureText(m_stream, [&] { m_stream.clear(); });
}

bool BinaryReader::holds(std::uint64_t length) {
    // A 32-bit process cannot hold more than this, whatever the file has.
    return std::in_range<std::ptrdiff_t>(length) && length <= remaining();
}

bool BinaryReader::isCredible(std::uint64_t length) { return length <= kBelievedBytes || holds(length); }

}  // namespace CppUtilities
