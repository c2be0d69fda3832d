// Replay files for tests, written field by field.
#pragma once

#include <cstdint>
#include <filesystem>
#include <initializer_list>
#include <istream>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace corvane_test {

using Bytes = std::vector<std::uint8_t>;

// Little-endian fields one after another.
class Writer {
  public:
    Writer& U8(std::uint8_t value);
    Writer& U16(std::uint16_t value);
    Writer& U32(std::uint32_t value);
    Writer& I32(std::int32_t value) { return U32(static_cast<std::uint32_t>(value)); }
    Writer& U64(std::uint64_t value);
    Writer& F32(float value);
    Writer& Fill(std::size_t count, std::uint8_t value = 0);
    Writer& Add(const Bytes& bytes);
    // An engine string of 8-bit characters, its zero included in the SaveNum.
    Writer& Str(std::string_view text);
    // An engine string of UTF-16 units, its zero included in the SaveNum.
    Writer& Str16(std::u16string_view units);

    Bytes bytes;
};

Bytes Join(std::initializer_list<Bytes> parts);
Bytes Sequence(std::uint8_t first, std::size_t count);  // first, first + 1, ...
Bytes Prefix(const Bytes& bytes, std::size_t length);

// Reads the bytes and throws as a replay file's stream does.
std::unique_ptr<std::istream> FileLikeStream(const Bytes& bytes);

struct InfoBlock {
    std::uint32_t version = 6;
    std::string friendlyName = "Replay";
    std::uint32_t encrypted = 0;
    Bytes key = {};

    Bytes Build() const;
};

struct Header {
    std::uint32_t version = 14;
    std::vector<std::string> levels = {"/Game/Maps/Island"};
    std::vector<std::string> gameData = {"SubGame=Athena"};

    Bytes Build() const;
};

enum ChunkType : std::uint32_t { kHeader = 0, kData = 1, kCheckpoint = 2, kEvent = 3, kCleared = 0xFFFFFFFF };

Bytes Chunk(std::uint32_t type, const Bytes& payload);

struct Event {
    std::string id = "id";
    std::string group = "group";
    std::string metadata = "metadata";
    std::uint32_t time1 = 1000;
    std::uint32_t time2 = 1001;
    Bytes data = {};

    Bytes Build() const;  // the whole chunk
};

Bytes MatchStats();      // 48 bytes: accuracy 0.5, then 1 to 10
Bytes MatchTeamStats();  // 12 bytes: ranking 3, players 100

struct Elimination {
    Bytes killed = Join({{17, 16}, Sequence(0, 16)});  // a player

    // Killed at 1, 2, 3; the killer, a bot with a name, at 4, 5, 6.5; damage type 7; knocked.
    Bytes Build() const;
};

// A file with these bytes, for as long as the object lives.
class TemporaryFile {
  public:
    explicit TemporaryFile(const Bytes& bytes);
    ~TemporaryFile();
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    std::wstring WidePath() const;
    const std::filesystem::path path;
};

// An empty folder, for as long as the object lives.
class TemporaryFolder {
  public:
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::filesystem::path path;
};

}  // namespace corvane_test
