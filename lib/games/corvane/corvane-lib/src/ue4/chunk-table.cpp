// The scan of the chunk table.
#include "games/corvane/corvane-lib/src/ue4/chunk-table.h"

#include "util/console.h"

namespace ue4 {
namespace {

constexpr std::uint32_t kHeaderChunk = 0;
constexpr std::uint32_t kEventChunk = 3;
constexpr std::uint32_t kClearedChunk = 0xFFFFFFFF;
constexpr std::int64_t kChunkHeadBytes = 8;

// Events of a table in file order do not overlap, so all of them fit into the file. In a hostile file they
// may overlap a thousandfold and make a small file cost any amount of time and memory; this much more is let
// pass.
constexpr std::int64_t kToleratedOverlap = 1024 * 1024;

class ChunkTable {
  public:
    ChunkTable(FStreamReader& archive, ReplayFileInfo& info) : m_archive(archive), m_info(info) {}

    // Offsets are reckoned, not asked for: every position query is a system call.
    void Read() {
        std::int64_t offset = m_archive.Reader().tellg();
        while (!m_archive.Reader().eof()) {
            if (offset <= m_info.TotalDataSizeInBytes) m_info.TableEnd = offset;
            const ReplayChunkInfo chunk = ReadChunkHead(offset);
            if (!ReadChunkContent(chunk) || chunk.SizeInBytes < 0) return;
            offset = chunk.DataOffset + chunk.SizeInBytes;
            m_archive.Reader().seekg(offset);
        }
    }

  private:
    ReplayChunkInfo ReadChunkHead(std::int64_t offset) {
        ReplayChunkInfo chunk;
        chunk.TypeOffset = offset;
        chunk.ChunkType = m_archive.ReadUInt32();
        chunk.SizeInBytes = m_archive.ReadInt32();
        chunk.DataOffset = offset + kChunkHeadBytes;
        m_info.Chunks.push_back(chunk);
        return chunk;
    }

    // False at an event that cannot belong to the table.
    bool ReadChunkContent(const ReplayChunkInfo& chunk) {
        bool belongs = true;
        if (chunk.ChunkType == kHeaderChunk) {
            if (m_info.HeaderChunkIndex != -1) {
                ThrowContainerFailure("ReadReplayInfo: Found multiple header chunks\n");
            }
            m_info.HeaderChunkIndex = static_cast<std::int32_t>(m_info.Chunks.size() - 1);
        } else if (chunk.ChunkType == kEventChunk) {
            belongs = ReadEvent(chunk);
        } else if (chunk.ChunkType == kClearedChunk) {
            orvel::util::WriteConsole(
                "[ ue4::FLocalFileNetworkReplayStreamer::ReadReplayInfo ] "
                "ReadReplayInfo: Skipping unknown (cleared) chunk.\n\n");
        }
        if (m_archive.Reader().fail()) {
            ThrowContainerFailure("ReadReplayInfo: Archive error after parsing chunk.\n");
        }
        return belongs;
    }

    bool ReadEvent(const ReplayChunkInfo& chunk) {
        FLocalFileEventInfo event;
        event.Index = static_cast<std::int32_t>(m_info.Events.size());
        m_archive.ReadString(event.Id);
        m_archive.ReadString(event.Group);
        m_archive.ReadString(event.Metadata);
        event.Time1 = m_archive.ReadUInt32();
        event.Time2 = m_archive.ReadUInt32();
        event.SizeInBytes = m_archive.ReadInt32();
        event.DataOffset = m_archive.Reader().tellg();
        const std::int64_t end = event.DataOffset + event.SizeInBytes;
        if (event.SizeInBytes < 0 || end > m_info.TotalDataSizeInBytes) {
            ThrowContainerFailure("ReadReplayInfo: Invalid event disk size");
        }
        m_eventBytes += end - chunk.DataOffset;
        if (m_eventBytes > m_info.TotalDataSizeInBytes + kToleratedOverlap) return false;
        m_info.Events.push_back(std::move(event));
        return true;
    }

    FStreamReader& m_archive;
    ReplayFileInfo& m_info;
    std::int64_t m_eventBytes = 0;
};

}  // namespace

void ReadChunkTable(FStreamReader& archive, ReplayFileInfo& info) {
    try {
        ChunkTable(archive, info).Read();
    } catch (const std::ios_base::failure&) {
        // The end of the file, usually. What else fails here ends the table as well: to go on could go on for
        // ever.
    }
}

void ThrowContainerFailure(const char* staticText) { throw const_cast<char*>(staticText); }

}  // namespace ue4
