// Block headers, quantum headers and the loop over blocks and chunks.
#include "lz-writer/stream-writer.h"

#include <utility>

namespace lz {
namespace {

// A block of one coded quantum, whose payload must be smaller than the raw bytes. The first one is a reset.
void AppendBlock(Coded& stream, const Coded& payload) {
    stream.AppendBig(stream.size() == 0 ? 0x8C06 : 0x0C06, 2);
    stream.AppendBig(payload.size() - 1, 3);
    stream.Append(payload);
}

}  // namespace

Coded Compress(ByteSpan raw, const CompressOptions& options) {
    Coded stream, payload;
    Parser parser(raw, options.parse);
    for (size_t start = 0; start < raw.size(); start += kChunkSize) {
        const size_t size = std::min(kChunkSize, raw.size() - start);
        const bool first = start == 0;
        std::vector<Command> commands;
        if (size >= kMinLzChunk) commands = parser.Parse(start + (first ? 8 : 0), start + size);
        payload.Append(EncodeChunk(raw, start, size, first, commands, options.store_growth));
        const size_t end = start + size;
        if (end % kBlockSize == 0 || end == raw.size()) AppendBlock(stream, std::exchange(payload, {}));
    }
    return stream;
}

}  // namespace lz
