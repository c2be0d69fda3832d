// Reads fixed-width values, bytes and strings from a standard input stream.
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

// The byte order of integers for the functions that do not name one: 0 little-endian, any other value
// big-endian.
enum Endianess : int { LittleEndian = 0, BigEndian = 1 };

template <typename T>
concept ByteValue = std::same_as<T, char> || std::same_as<T, std::uint8_t>;

// Reads from a stream. A read that the stream cannot satisfy sets the stream's eofbit and failbit. The
// stream's exception mask decides whether that throws std::ios_base::failure (with the text of
// stream-failure.h). If not, integer arguments keep their value, returned integers are 0, returned strings
// are empty, and all later reads fail too.
//
// Lengths may come from hostile files. So memory is taken only when the stream is known to hold that much;
// for a string of more than a page, only when its end is found. One thread at a time.
class BinaryReader {
  public:
    // stream: not null. With giveOwnership the reader deletes it, else it must outlive the reader. It keeps
    // its buffer.
    BinaryReader(std::istream* stream, Endianess endianess, bool giveOwnership);
    BinaryReader(const BinaryReader&) = delete;
    BinaryReader& operator=(const BinaryReader&) = delete;

    void read(std::int32_t& value);
    void read(std::uint32_t& value);
    void read(std::uint64_t& value);
    std::int32_t readInt32LE();
    std::int32_t readInt32BE();

    // Reads exactly length bytes.
    void read(char* buffer, std::streamsize length);
    // Reads exactly length bytes. The vector gets this size, or is emptied if the stream does not hold as
    // many.
    template <ByteValue Byte>
    void read(std::vector<Byte>& bytes, std::uint64_t length);
    // Reads a string with its 32-bit length in bytes before it.
    void read(std::string& text);
    // Reads the bytes up to the terminator, and the terminator, which is not part of the result.
    std::string readTerminatedString(char terminator = '\0');
    // count 16-bit little-endian units, one per wchar_t.
    std::wstring readWString(std::uint32_t count);

    // The position in bytes from the stream's start; -1 if the stream has no positions.
    std::int64_t tellg();
    void seekg(std::int64_t position);
    // The number of bytes from here to the end; 0 if the stream has failed.
    std::uint64_t remaining();
    // Acts as if the data had run out: sets eofbit and failbit.
    void runOut();
    void clear();
    bool eof() const { return m_stream.eof(); }
    bool fail() const { return m_stream.fail(); }
    // The text for the stream's present state; a static string.
    const char* failureText() const { return orvel::util::StreamFailureText(m_stream.rdstate()); }

  private:
    template <typename Word>
    bool readWord(Word& value, bool bigEndian);
    // The stream's window, or null if the stream is over something else or not good. Bytes in the window are
    // taken from there directly: calling the stream costs more than the bytes.
    orvel::util::WindowBuf* window() const { return m_stream.good() ? m_window : nullptr; }
    // If the next length bytes lie in the window, takes them; else null.
    const char* takeHeld(std::size_t length);
    // Appends the bytes up to the terminator, and takes the terminator. Only for streams with positions.
    void appendTerminated(std::string& text, char terminator);
    // The number of bytes before the next byte of this value; nothing if there is none, or more than memory
    // can hold. Keeps the position.
    std::optional<std::size_t> distanceTo(char byte);
    // Whether the stream has at least length more bytes.
    bool holds(std::uint64_t length);
    // The same, but small lengths are believed: asking the stream costs more than the memory.
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
