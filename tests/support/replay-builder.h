// Replay files for tests, written field by field; files and folders that are there for as long as a test
// needs them.
#pragma once

#include <atomic>
#include <bit>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <istream>
#include <memory>
#include <random>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "util/platform/platform.h"

namespace corvane_test {

using Bytes = std::vector<std::uint8_t>;

// Little-endian fields one after another.
class Writer {
  public:
    Writer& U8(std::uint8_t value) { return Little(value, 1); }
    Writer& U16(std::uint16_t value) { return Little(value, 2); }
    Writer& U32(std::uint32_t value) { return Little(value, 4); }
    Writer& I32(std::int32_t value) { return U32(static_cast<std::uint32_t>(value)); }
    Writer& U64(std::uint64_t value) { return Little(value, 8); }
    Writer& F32(float value) { return U32(std::bit_cast<std::uint32_t>(value)); }
    Writer& Fill(std::size_t count, std::uint8_t value = 0) { return Add(Bytes(count, value)); }
    Writer& Add(const Bytes& more) {
        bytes.insert(bytes.end(), more.begin(), more.end());
        return *this;
    }
    // An engine string of 8-bit characters, its zero included in the SaveNum.
    Writer& Str(std::string_view text) {
        return I32(static_cast<std::int32_t>(text.size() + 1)).Add({text.begin(), text.end()}).U8(0);
    }
    // An engine string of UTF-16 units, its zero included in the SaveNum.
    Writer& Str16(std::u16string_view units) {
        I32(-static_cast<std::int32_t>(units.size() + 1));
        for (const char16_t unit : units) U16(unit);
        return U16(0);
    }

    Bytes bytes;

  private:
    Writer& Little(std::uint64_t value, int count) {
        for (; count > 0; --count, value >>= 8) bytes.push_back(static_cast<std::uint8_t>(value & 0xFF));
        return *this;
    }
};

inline Bytes Join(std::initializer_list<Bytes> parts) {
    Writer writer;
    for (const Bytes& part : parts) writer.Add(part);
    return writer.bytes;
}

// first, first + 1, ...
inline Bytes Sequence(std::uint8_t first, std::size_t count) {
    Writer writer;
    for (std::size_t i = 0; i < count; ++i) writer.U8(static_cast<std::uint8_t>(first + i));
    return writer.bytes;
}

inline Bytes Prefix(const Bytes& bytes, std::size_t length) {
    return {bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(length)};
}

// Reads the bytes and throws as a replay file's stream does.
inline std::unique_ptr<std::istream> FileLikeStream(const Bytes& bytes) {
    auto stream = std::make_unique<std::istringstream>(std::string(bytes.begin(), bytes.end()));
    stream->exceptions(std::ios_base::failbit | std::ios_base::badbit);
    return stream;
}

struct InfoBlock {
    std::uint32_t version = 6;
    std::string friendlyName = "Replay";
    std::uint32_t encrypted = 0;
    Bytes key = {};

    Bytes Build() const {
        Writer writer;
        writer.U32(0x1CA2E27F).U32(version).U32(1500).U32(2).U32(3).Str(friendlyName).U32(0);
        if (version >= 3) writer.U64(637000000000000000);
        if (version >= 2) writer.U32(0);
        if (version >= 6) writer.U32(encrypted).U32(static_cast<std::uint32_t>(key.size())).Add(key);
        return writer.bytes;
    }
};

struct Header {
    std::uint32_t version = 14;
    std::vector<std::string> levels = {"/Game/Maps/Island"};
    std::vector<std::string> gameData = {"SubGame=Athena"};

    Bytes Build() const {
        Writer writer;
        writer.U32(0x2CF5A13D).U32(version).U32(0xC0FFEE).U32(23).U32(7);
        if (version >= 12) writer.Add(Sequence(1, 16));
        if (version >= 11) writer.U16(4).U16(20).U16(1).U16(0xEEEE);
        writer.U32(0x89ABCDEF);
        if (version >= 11) writer.Str("++Corvane+Release");
        if (version >= 6) writer.U32(static_cast<std::uint32_t>(levels.size()));
        for (const std::string& level : levels) {
            writer.Str(level);
            if (version >= 7) writer.U32(77);
        }
        if (version >= 9) writer.U32(0xF1A65);
        writer.U32(static_cast<std::uint32_t>(gameData.size()));
        for (const std::string& data : gameData) writer.Str(data);
        return writer.bytes;
    }
};

enum ChunkType : std::uint32_t { kHeader = 0, kData = 1, kCheckpoint = 2, kEvent = 3, kCleared = 0xFFFFFFFF };

inline Bytes Chunk(std::uint32_t type, const Bytes& payload) {
    return Writer().U32(type).U32(static_cast<std::uint32_t>(payload.size())).Add(payload).bytes;
}

struct Event {
    std::string id = "id";
    std::string group = "group";
    std::string metadata = "metadata";
    std::uint32_t time1 = 1000;
    std::uint32_t time2 = 1001;
    Bytes data = {};

    // The whole chunk.
    Bytes Build() const {
        Writer payload;
        payload.Str(id).Str(group).Str(metadata).U32(time1).U32(time2);
        return Chunk(kEvent, payload.U32(static_cast<std::uint32_t>(data.size())).Add(data).bytes);
    }
};

// 48 bytes: accuracy 0.5, then 1 to 10.
inline Bytes MatchStats() {
    Writer writer;
    writer.U32(0xFFFFFFFF).F32(0.5F);
    for (std::uint32_t i = 1; i <= 10; ++i) writer.U32(i);
    return writer.bytes;
}

// 12 bytes: ranking 3, players 100.
inline Bytes MatchTeamStats() { return Writer().U32(0xFFFFFFFF).U32(3).U32(100).bytes; }

struct Elimination {
    Bytes killed = Join({{17, 16}, Sequence(0, 16)});  // a player

    // Killed at 1, 2, 3; the killer, a bot with a name, at 4, 5, 6.5; damage type 7; knocked.
    Bytes Build() const {
        Writer writer;
        writer.U32(5).Fill(5, 0x99).Fill(8, 0xAA);
        writer.F32(1).F32(2).F32(3).Fill(28, 0xBB).F32(4).F32(5).F32(6.5F).Fill(12, 0xCC);
        return writer.Add(killed).U8(16).Str("Bot").U8(7).U32(1).bytes;
    }
};

// A unique path in the temporary folder. Whatever is put there is deleted with the object.
struct TemporaryPath {
    TemporaryPath() : path(Unique()) {}
    ~TemporaryPath() {
        std::error_code ignored;
        std::filesystem::remove_all(path, ignored);
    }
    TemporaryPath(const TemporaryPath&) = delete;
    TemporaryPath& operator=(const TemporaryPath&) = delete;

    std::wstring WidePath() const { return orvel::util::platform::WideFromPath(path); }
    const std::filesystem::path path;

  private:
    static std::filesystem::path Unique() {
        static std::atomic<unsigned> count = 0;
        const std::string name =
            "corvane-" + std::to_string(std::random_device{}()) + "-" + std::to_string(++count);
        return std::filesystem::temp_directory_path() / (name + ".replay");
    }
};

// A file with these bytes.
struct TemporaryFile : TemporaryPath {
    explicit TemporaryFile(const Bytes& bytes) {
        std::ofstream file(path, std::ios_base::binary);
        file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    }
};

// An empty folder.
struct TemporaryFolder : TemporaryPath {
    TemporaryFolder() { std::filesystem::create_directory(path); }
};

}  // namespace corvane_test
