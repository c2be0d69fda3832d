// Readers of the engine's archive encodings, over a replay file or a block of memory.
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
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

#include "util/aes.h"
#include "util/binary-reader.h"
#include "util/byte-order.h"
#include "util/platform/platform.h"
#include "util/stream-reader.h"
#include "util/window-buf.h"

namespace ue4 {

using CppUtilities::Endianess;

// Reading the replay cannot go on. what() is "file:line: message".
class ReplayException : public std::runtime_error {
  public:
    enum class Cause { Corrupt, MissingKey };

    ReplayException(const std::string& message, const char* file, int line, Cause cause = Cause::Corrupt);
    Cause cause() const { return m_cause; }

  private:
    Cause m_cause;
};

// Removes all whitespace of the "C" locale, also inside. Documents have texts in this form.
std::string WithoutWhitespace(std::string text);

// Reads engine values from a stream. The stream decides what happens when the data runs out
// (binary-reader.h): a file's stream throws std::ios_base::failure; over memory the reader returns 0, false
// or "".
class FStreamReader : public orvel::util::StreamReader {
  public:
    // stream: not null. With giveOwnership the reader deletes it, else it must outlive the reader.
    FStreamReader(std::istream* stream, Endianess endianness, bool giveOwnership);

    // Reads one engine string as UTF-8 and replaces text with it. Two properties of this format matter:
    //
    //     SaveNum >= 0   bytes up to the next zero, which is consumed and not stored; SaveNum is not used as
    //                    a length, not even when it is 0
    //     SaveNum < 0    -SaveNum UTF-16 units, all of which are kept: the stored terminator ends the result
    //                    as a zero character
    //
    // Removes all whitespace of the "C" locale. SaveNum INT32_MIN throws ReplayException.
    void ReadString(std::string& text) override;
    // The same, but keeps whitespace.
    void ReadStoredString(std::string& text);

    std::string ReadString();
    std::int32_t ReadInt32();
    std::uint32_t ReadUInt32();
    std::uint64_t ReadUInt64();
    bool ReadBool();
    float ReadFloat();
    std::uint8_t ReadByte();
    // A negative count counts as the end of the data.
    std::vector<std::uint8_t> ReadByteArray();

    // The bits of ReadPayload's flags; other bits are ignored.
    static constexpr std::uint8_t kPayloadEncrypted = 2;
    static constexpr std::uint8_t kPayloadCompressed = 4;

    // Reads size bytes at the current position, then decrypts them with EncryptionKey and decompresses them,
    // as the flags ask. After a failed decryption the payload is empty, after a failed decompression it is
    // still compressed (each with a line on standard output). An encrypted payload without a key throws
    // ReplayException. All payloads share one buffer: the result is valid until the next call.
    std::vector<std::uint8_t>& ReadPayload(std::uint32_t size, std::uint8_t flags);

    // The AES key of the payloads; empty: none. Set it before the first payload is read.
    std::vector<std::uint8_t> EncryptionKey;

  protected:
    FStreamReader() = default;

  private:
    std::vector<std::uint8_t> m_payload;
    std::optional<orvel::util::data::AesKey> m_key;  // made from EncryptionKey at its first use
};

// Reads from a block of memory, which is not copied and must outlive the reader.
class FDataReader : public FStreamReader {
  public:
    FDataReader(const std::uint8_t* data, std::size_t size, Endianess endianness);
};

// Reads the same encodings from a payload in memory: no stream, one check for each value. Behind the end of
// the payload every value reads 0 or "". The payload is neither copied nor owned.
class PayloadReader {
  public:
    explicit PayloadReader(std::span<const std::uint8_t> payload) : m_rest(payload) {}

    // The next count bytes; none if there are fewer.
    std::span<const std::uint8_t> ReadBytes(std::uint64_t count) {
        if (count > m_rest.size()) return m_rest = {};
        const auto bytes = m_rest.first(static_cast<std::size_t>(count));
        m_rest = m_rest.subspan(bytes.size());
        return bytes;
    }
    void Skip(std::uint64_t count) { ReadBytes(count); }
    std::uint8_t ReadByte() { return ReadWord<std::uint8_t>(); }
    std::int32_t ReadInt32() { return static_cast<std::int32_t>(ReadUInt32()); }
    std::uint32_t ReadUInt32() { return ReadWord<std::uint32_t>(); }
    // As FStreamReader has it.
    void ReadStoredString(std::string& text);

    std::span<const std::uint8_t> Rest() const { return m_rest; }

  private:
    template <typename Word>
    Word ReadWord() {
        const std::span<const std::uint8_t> bytes = ReadBytes(sizeof(Word));
        return bytes.empty() ? Word{0} : orvel::util::LoadLittleEndian<Word>(bytes.data());
    }

    std::span<const std::uint8_t> m_rest;
};

// Reads a replay file, which stays open while the archive lives. The game may go on writing it, others may
// delete it. The file's size at opening is its end for the whole parse.
class FArchiveReader : public FStreamReader {
  public:
    // Throws std::ios_base::failure ("ios_base::failbit set") if the file cannot be opened. giveOwnership has
    // no effect: all readers are constructed alike, and this stream is always the archive's own.
    FArchiveReader(const std::wstring& path, Endianess endianness, bool giveOwnership);

  private:
    orvel::util::platform::DiskFile m_disk;
    orvel::util::WindowBuf m_window{[this](auto... arguments) { return m_disk.ReadAt(arguments...); },
                                    m_disk.Size()};
    std::fstream m_stream;  // over the window; its own file buffer stays closed
};

}  // namespace ue4
