// The writer of replay files for tests.
#include "support/replay-builder.h"

#include <atomic>
#include <bit>
#include <fstream>
#include <random>
#include <sstream>

#include "util/platform/platform.h"

namespace corvane_test {

Writer& Writer::U8(std::uint8_t value) { return Fill(1, value); }

Writer& Writer::U16(std::uint16_t value) {
    return U8(static_cast<std::uint8_t>(value & 0xFF)).U8(static_cast<std::uint8_t>(value >> 8));
}

Writer& Writer::U32(std::uint32_t value) {
    return U16(static_cast<std::uint16_t>(value & 0xFFFF)).U16(static_cast<std::uint16_t>(value >> 16));
}

Writer& Writer::U64(std::uint64_t value) {
    return U32(static_cast<std::uint32_t>(value & 0xFFFFFFFF)).U32(static_cast<std::uint32_t>(value >> 32));
}

Writer& Writer::F32(float value) { return U32(std::bit_cast<std::uint32_t>(value)); }

Writer& Writer::Fill(std::size_t count, std::uint8_t value) {
    bytes.insert(bytes.end(), count, value);
    return *this;
}

Writer& Writer::Add(const Bytes& more) {
    bytes.insert(bytes.end(), more.begin(), more.end());
    return *this;
}

Writer& Writer::Str(std::string_view text) {
    I32(static_cast<std::int32_t>(text.size() + 1));
    bytes.insert(bytes.end(), text.begin(), text.end());
    return U8(0);
}

Writer& Writer::Str16(std::u16string_view units) {
    I32(-static_cast<std::int32_t>(units.size() + 1));
    for (const char16_t unit : units) U16(unit);
    return U16(0);
}

Bytes Join(std::initializer_list<Bytes> parts) {
    Writer writer;
    for (const Bytes& part : parts) writer.Add(part);
    return writer.bytes;
}

Bytes Sequence(std::uint8_t first, std::size_t count) {
    Writer writer;
    for (std::size_t i = 0; i < count; ++i) writer.U8(static_cast<std::uint8_t>(first + i));
    return writer.bytes;
}

Bytes Prefix(const Bytes& bytes, std::size_t length) {
    return {bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(length)};
}

std::unique_ptr<std::istream> FileLikeStream(const Bytes& bytes) {
    auto stream = std::make_unique<std::istringstream>(std::string(bytes.begin(), bytes.end()));
    stream->exceptions(std::ios_base::failbit | std::ios_base::badbit);
    return stream;
}

Bytes InfoBlock::Build() const {
    Writer writer;
    writer.U32(0x1CA2E27F).U32(version).U32(1500).U32(2).U32(3).Str(friendlyName).U32(0);
    if (version >= 3) writer.U64(637000000000000000);
    if (version >= 2) writer.U32(0);
    if (version >= 6) writer.U32(encrypted).U32(static_cast<std::uint32_t>(key.size())).Add(key);
    return writer.bytes;
}

Bytes Header::Build() const {
    Writer writer;
    writer.U32(0x2CF5A13D).U32(version).U32(0xC0FFEE).U32(23).U32(7);
    if (version >= 12) writer.Add(Sequence(1, 16));
    if (version >= 11) {
        writer.U16(4).U16(20).U16(1).U16(0xEEEE).U32(0x89ABCDEF).Str("++Corvane+Release");
    } else {
        writer.U32(0x89ABCDEF);
    }
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

Bytes Chunk(std::uint32_t type, const Bytes& payload) {
    return Writer().U32(type).U32(static_cast<std::uint32_t>(payload.size())).Add(payload).bytes;
}

Bytes Event::Build() const {
    Writer payload;
    payload.Str(id).Str(group).Str(metadata).U32(time1).U32(time2);
    payload.U32(static_cast<std::uint32_t>(data.size())).Add(data);
    return Chunk(kEvent, payload.bytes);
}

Bytes MatchStats() {
    Writer writer;
    writer.U32(0xFFFFFFFF).F32(0.5F);
    for (std::uint32_t i = 1; i <= 10; ++i) writer.U32(i);
    return writer.bytes;
}

Bytes MatchTeamStats() { return Writer().U32(0xFFFFFFFF).U32(3).U32(100).bytes; }

Bytes Elimination::Build() const {
    Writer writer;
    writer.U32(5).Fill(5, 0x99).Fill(8, 0xAA);
    writer.F32(1).F32(2).F32(3).Fill(28, 0xBB).F32(4).F32(5).F32(6.5F).Fill(12, 0xCC);
    return writer.Add(killed).U8(16).Str("Bot").U8(7).U32(1).bytes;
}

namespace {

std::filesystem::path UniquePath() {
    static std::atomic<unsigned> count = 0;
    const std::string name =
        "corvane-" + std::to_string(std::random_device{}()) + "-" + std::to_string(++count);
    return std::filesystem::temp_directory_path() / (name + ".replay");
}

}  // namespace

TemporaryFile::TemporaryFile(const Bytes& bytes) : path(UniquePath()) {
    std::ofstream file(path, std::ios_base::binary);
    file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}

TemporaryFile::~TemporaryFile() {
    std::error_code ignored;
    std::filesystem::remove(path, ignored);
}

TemporaryFolder::TemporaryFolder() : path(UniquePath()) { std::filesystem::create_directory(path); }

TemporaryFolder::~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path, ignored);
}

std::wstring TemporaryFile::WidePath() const { return orvel::util::platform::WideFromPath(path); }

}  // namespace corvane_test
