// Fixed-width values, byte runs and strings from a standard input stream.
#pragma once

#include <concepts>
#include <cstdint>
#include <istream>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "util/stream-failure.h"
#include "util/window-buf.h"

namespace CppUtilities {

// The byte order of integers that are read without naming one: 0 is little-endian, anything else big-endian.
enum Endianess : int { LittleEndian = 0, BigEndian = 1 };

template <typename T>
concept ByteValue = std::same_as<T, char> || std::same_as<T, std::uint8_t>;

// A reader over a stream. A read that the stream cannot satisfy sets the stream's eofbit and failbit; the
// stream's exception mask decides whether that throws std::ios_base::failure (its text is the one of
// stream-failure.h). If it does not throw, integers keep the value they had, integers and strings that are
// returned are 0 and empty, and all later reads fail too.
//
// Lengths may come from hostile files: memory is taken for them only once the stream is known to hold as
// much, and for a string of more than a page only once its end is found. One thread at a time.
class BinaryReader {
  public:
    // stream: not null; it must outlive the reader, or is deleted with it if giveOwnership is true. It keeps
    // its buffer.
    BinaryReader(std::istream* stream, Endianess endianess, bool giveOwnership);
    BinaryReader(const BinaryReader&) = delete;
    BinaryReader& operator=(const BinaryReader&) = delete;

    void read(std::int32_t& value);
    void read(std::uint32_t& value);
    void read(std::uint64_t& value);
    std::int32_t readInt32LE();
    std::int32_t readInt32BE();

    // Exactly length bytes.
    void read(char* buffer, std::streamsize length);
    // Exactly length bytes; the vector is resized to them, or emptied if the stream does not hold so many.
    template <ByteValue Byte>
    void read(std::vector<Byte>& bytes, std::uint64_t length);
    // A string with a 32-bit length in bytes before it.
    void read(std::string& text);
    // The bytes before the terminator, which is consumed.
    std::string readTerminatedString(char terminator = '\0');
    // count 16-bit little-endian units, one per wchar_t.
    std::wstring readWString(std::uint32_t count);
    // Passes over length bytes.
    void skip(std::uint64_t length);

    // The position in bytes from the stream's start; -1 if the stream has none.
    std::int64_t tellg();
    void seekg(std::int64_t position);
    // The number of bytes from here to the end; 0 for a stream that has failed.
    std::uint64_t remaining();
    // Treats the data as run out: eofbit and failbit.
    void runOut();
    void clear();
    bool eof() const { return m_stream.eof(); }
    bool fail() const { return m_stream.fail(); }
    // The text for the stream's present state; static.
    const char* failureText() const { return orvel::util::StreamFailureText(m_stream.rdstate()); }

  private:
    template <typename Word>
    bool readWord(Word& value, bool bigEndian);
    // The stream's window while the stream is good, so that what lies in it is taken without a call of the
    // stream, which costs more than the bytes; null for a stream over anything else.
    orvel::util::WindowBuf* window() const { return m_stream.good() ? m_window : nullptr; }
    // The next length bytes if they lie in the window, which then moves on; else null.
    const char* takeHeld(std::size_t length);
    // Appends the bytes before the terminator, which is consumed. Only for a stream that has positions.
    void appendTerminated(std::string& text, char terminator);
    // The number of bytes before the next one of this value; nothing if there is none or memory cannot hold
    // as many. The position stays.
    std::optional<std::size_t> distanceTo(char byte);
    // Whether the stream has so many more bytes.
    bool holds(std::uint64_t length);
    // The same, but a small length is believed without asking the stream, which costs more than the memory.
    bool isCredible(std::uint64_t length);

    std::istream& m_stream;
    orvel::util::WindowBuf* m_window;
    std::unique_ptr<std::istream> m_owned;
    bool m_bigEndian;
};

template <ByteValue Byte>
void BinaryReader::read(std::vector<Byte>& bytes, std::uint64_t length) {
    bytes.clear();
    if (!isCredible(length)) return runOut();
    bytes.resize(static_cast<std::size_t>(length));
    read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(length));
    if (fail()) bytes.clear();
}

}  // namespace CppUtilities
