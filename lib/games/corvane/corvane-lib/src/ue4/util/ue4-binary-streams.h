// The engine's archive encodings over a replay file or a block of memory.
//
//     int32, uint32   4 bytes
//     uint64          8 bytes
//     boolean         an int32; true when not 0
//     byte array      int32 count, then as many bytes
//     string          int32 SaveNum, then characters: see FStreamReader::ReadString
//
// All integers are little-endian.
#pragma once

#include <cstdint>
#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "util/binary-reader.h"
#include "util/stream-reader.h"
#include "util/window-buf.h"

namespace ue4 {

using CppUtilities::Endianess;

// A replay that cannot be read on. what() is "file:line: message".
class ReplayException : public std::runtime_error {
  public:
    ReplayException(const std::string& message, const char* file, int line);
};

// The text without whitespace of the "C" locale, wherever it stands: the form in which documents have it.
std::string WithoutWhitespace(std::string text);

// Reads engine values from a stream. What data that runs out does is the stream's business (binary-reader.h):
// over a file it throws std::ios_base::failure; over memory nothing is thrown and 0, false or "" is returned.
class FStreamReader : public orvel::util::StreamReader {
  public:
    // stream: not null; deleted with the reader if giveOwnership is true, else it must outlive the reader.
    FStreamReader(std::istream* stream, Endianess endianness, bool giveOwnership);

    // One engine string, as UTF-8, in place of what text holds. Two habits of this format's readers matter:
    //
    //     SaveNum >= 0   bytes up to the next zero, which is consumed and not stored; SaveNum is not used as
    //                    a length, not even when it is 0
    //     SaveNum < 0    -SaveNum UTF-16 units, all of which are kept: the stored terminator ends the result
    //                    as a zero character
    //
    // Whitespace of the "C" locale is removed wherever it stands. SaveNum INT32_MIN throws ReplayException.
    void ReadString(std::string& text) override;
    // The same with the whitespace left in.
    void ReadStoredString(std::string& text);

    std::string ReadString();
    std::int32_t ReadInt32();
    std::uint32_t ReadUInt32();
    std::uint64_t ReadUInt64();
    bool ReadBool();
    float ReadFloat();
    std::uint8_t ReadByte();
    // A negative count is treated as data that runs out.
    std::vector<std::uint8_t> ReadByteArray();

    // Bits of ReadPayload's flags; others are ignored.
    static constexpr std::uint8_t kPayloadEncrypted = 2;
    static constexpr std::uint8_t kPayloadCompressed = 4;

    // The payload of size bytes at the current position, decrypted with EncryptionKey and decompressed as the
    // flags ask. Empty if decryption fails; still compressed if decompression fails (each after a line on
    // standard output). Throws ReplayException if it is encrypted and there is no key.
    std::vector<std::uint8_t> ReadPayload(std::uint32_t size, std::uint8_t flags);

    // The AES key of the replay's payloads, set by the owner before the first one is read; empty: none.
    std::vector<std::uint8_t> EncryptionKey;

  protected:
    FStreamReader() = default;
};

// Over a block of memory, which is not copied and must outlive the reader.
class FDataReader : public FStreamReader {
  public:
    FDataReader(const std::uint8_t* data, std::size_t size, Endianess endianness);
};

// Over a replay file, open while the archive lives in such a way that the game can go on writing it.
class FArchiveReader : public FStreamReader {
  public:
    // Throws std::ios_base::failure ("ios_base::failbit set") if the file cannot be opened. The stream stays
    // the archive's own, whatever giveOwnership says; readers of each kind are constructed alike.
    FArchiveReader(const std::wstring& path, Endianess endianness, bool giveOwnership);

  private:
    std::fstream m_file;
    orvel::util::WindowBuf m_window{m_file.rdbuf()};
};

}  // namespace ue4
