// Archive readers over files and memory.
#include "games/corvane/corvane-lib/src/ue4/util/ue4-binary-streams.h"

#include <algorithm>
#include <bit>
#include <utility>

#include "util/data.h"
#include "util/mem-stream.h"

namespace ue4 {
namespace {

// The place that a ReplayException names. People search for this text, so it stays the same even if the code
// moves.
constexpr const char* kSourceFile = "lib/games/corvane/corvane-lib/src/ue4/util/ue4-binary-streams.cpp";
constexpr int kInvalidSaveNumLine = 23;
constexpr int kMissingKeyLine = 51;

// std::isspace of the "C" locale, whatever the host program's locale is. Not a function, so that it is
// inlined.
constexpr auto kIsWhitespace = [](char c) { return c == ' ' || (c >= '\t' && c <= '\r'); };

std::int32_t Checked(std::int32_t saveNum) {
    if (saveNum == INT32_MIN) {
        throw ReplayException("Invalid SaveNum, corrupted FArchive.", kSourceFile, kInvalidSaveNumLine);
    }
    return saveNum;
}

// A compressed payload: int32 decompressed size, int32 compressed size, then the compressed stream. Returns
// the payload itself if decompression fails. An impossible compressed size becomes what is there, an
// impossible decompressed size 0; decoding decides.
std::vector<std::uint8_t> Decompressed(std::vector<std::uint8_t> payload) {
    PayloadReader reader(payload);
    const auto size = static_cast<std::size_t>(std::max(reader.ReadInt32(), 0));
    const auto compressedSize = static_cast<std::size_t>(std::max(reader.ReadInt32(), 0));
    const auto compressed = reader.Rest().first(std::min(compressedSize, reader.Rest().size()));
    const bool possible = size <= orvel::util::data::largestDecompressedSize(compressed.size());
    std::vector<std::uint8_t> output(possible ? size : 0);
    const auto length = static_cast<std::int32_t>(compressed.size());
    if (!orvel::util::data::decompress(compressed.data(), length, output)) return payload;
    return output;
}

}  // namespace

ReplayException::ReplayException(const std::string& message, const char* file, int line, Cause cause)
    : std::runtime_error(std::string(file) + ":" + std::to_string(line) + ": " + message), m_cause(cause) {}

FStreamReader::FStreamReader(std::istream* stream, Endianess endianness, bool giveOwnership) {
    std::unique_ptr<std::istream> owned(giveOwnership ? stream : nullptr);
    m_reader = std::make_unique<CppUtilities::BinaryReader>(stream, endianness, giveOwnership);
    static_cast<void>(owned.release());
}

std::string WithoutWhitespace(std::string text) {
    std::erase_if(text, kIsWhitespace);
    return text;
}

void FStreamReader::ReadString(std::string& text) {
    ReadStoredString(text);
    std::erase_if(text, kIsWhitespace);
}

void FStreamReader::ReadStoredString(std::string& text) {
    text.clear();
    const std::int32_t saveNum = Checked(ReadInt32());
    if (saveNum < 0) {
        const auto units = static_cast<std::uint32_t>(-saveNum);
        text = orvel::util::platform::WideToUtf8(m_reader->readWString(units));
    } else {
        text = m_reader->readTerminatedString();
    }
}

std::string FStreamReader::ReadString() {
    std::string text;
    ReadString(text);
    return text;
}

std::int32_t FStreamReader::ReadInt32() {
    std::int32_t value = 0;
    m_reader->read(value);
    return value;
}

std::uint32_t FStreamReader::ReadUInt32() {
    std::uint32_t value = 0;
    m_reader->read(value);
    return value;
}

std::uint64_t FStreamReader::ReadUInt64() {
    std::uint64_t value = 0;
    m_reader->read(value);
    return value;
}

bool FStreamReader::ReadBool() { return ReadInt32() != 0; }

float FStreamReader::ReadFloat() { return std::bit_cast<float>(ReadUInt32()); }

std::uint8_t FStreamReader::ReadByte() {
    char byte = 0;
    m_reader->read(&byte, 1);
    return static_cast<std::uint8_t>(byte);
}

std::vector<std::uint8_t> FStreamReader::ReadByteArray() {
    std::vector<std::uint8_t> bytes;
    const std::int32_t count = ReadInt32();
    if (count < 0) {
        m_reader->runOut();
    } else {
        m_reader->read(bytes, static_cast<std::uint64_t>(count));
    }
    return bytes;
}

std::vector<std::uint8_t>& FStreamReader::ReadPayload(std::uint32_t size, std::uint8_t flags) {
    m_reader->read(m_payload, size);
    if ((flags & kPayloadEncrypted) != 0) {
        if (EncryptionKey.empty()) {
            throw ReplayException("Data was encrypted, but encryption key was not set.", kSourceFile,
                                  kMissingKeyLine, ReplayException::Cause::MissingKey);
        }
        if (!m_key) m_key.emplace(EncryptionKey.data(), EncryptionKey.size());
        if (!orvel::util::data::decrypt(m_payload, *m_key)) return m_payload;
    }
    if ((flags & kPayloadCompressed) != 0) m_payload = Decompressed(std::move(m_payload));
    return m_payload;
}

void PayloadReader::ReadStoredString(std::string& text) {
    text.clear();
    const std::int32_t saveNum = Checked(ReadInt32());
    if (saveNum < 0) {
        const std::span<const std::uint8_t> bytes = ReadBytes(2 * static_cast<std::uint64_t>(-saveNum));
        std::wstring units(bytes.size() / 2, L'\0');
        for (std::size_t i = 0; i < units.size(); ++i) {
            units[i] = static_cast<wchar_t>(orvel::util::LoadLittleEndian<std::uint16_t>(&bytes[2 * i]));
        }
        text = orvel::util::platform::WideToUtf8(units);
    } else {
        const auto length = static_cast<std::size_t>(std::ranges::find(m_rest, 0) - m_rest.begin());
        const std::span<const std::uint8_t> bytes = ReadBytes(length + 1);
        if (!bytes.empty()) text.assign(bytes.begin(), bytes.end() - 1);
    }
}

FDataReader::FDataReader(const std::uint8_t* data, std::size_t size, Endianess endianness)
    : FStreamReader(new orvel::util::MemStream(data, size), endianness, true) {}

FArchiveReader::FArchiveReader(const std::wstring& path, Endianess endianness, bool /*giveOwnership*/)
    : m_disk(path) {
    m_stream.std::ios::rdbuf(&m_window);
    m_stream.exceptions(std::ios_base::failbit | std::ios_base::badbit);
    m_reader = std::make_unique<CppUtilities::BinaryReader>(&m_stream, endianness, false);
    if (!m_disk.IsOpen()) {
        orvel::util::WithFailureText(m_stream, [&] { m_stream.setstate(std::ios_base::failbit); });
    }
}

}  // namespace ue4
