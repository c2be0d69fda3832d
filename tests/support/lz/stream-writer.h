// Streams: block and quantum headers, and the compressor that tests and benchmarks call.
#pragma once

#include "support/lz/chunk-writer.h"

namespace lz {

constexpr size_t kBlockSize = 0x40000;

// The decode types that block headers of the tests name.
enum class DecodeType : uint8_t { lzb16 = 2, kraken = 6, mermaid = 10, leviathan = 12 };

struct BlockHeader {
    bool reset = true;
    bool memcpy = false;  // the block's raw bytes follow, without quantum header
    bool check = false;   // quanta carry three check bytes (made up: nothing verifies them here)
    DecodeType type = DecodeType::kraken;
};

// The chunks of one quantum. Matches reach back to `floor`, the position of the last reset.
Coded EncodeQuantum(Parser& parser, ByteSpan raw, size_t start, size_t end, size_t floor,
                    const ChunkOptions& options);

// Composes a stream piece by piece. Every quantum belongs to the block begun last.
class StreamWriter {
  public:
    void BeginBlock(const BlockHeader& header);
    void Memcpy(ByteSpan raw);
    void Quantum(const Coded& payload);  // must be smaller than the raw bytes
    void StoredByLength(ByteSpan raw);   // a coded quantum of exactly the raw size
    void StoredSpecial(ByteSpan raw);
    void Memset(uint8_t value);
    void WholeMatch(uint64_t distance);  // at least 2
    const Coded& stream() const { return stream_; }
    // Compressed positions of the block headers.
    const std::vector<size_t>& blocks() const { return blocks_; }

  private:
    bool IsLong() const { return header_.type != DecodeType::lzb16; }
    void PutLength(size_t size);
    void PutSpecial(unsigned kind);
    void PutCheck(ByteSpan payload);
    void NoteQuantum(const char* form);

    BlockHeader header_;
    Coded stream_;
    std::vector<size_t> blocks_;
};

struct CompressOptions {
    ParseOptions parse;
    ChunkOptions chunk;
    bool reset_blocks = false;  // every block begins afresh, not only the first
    bool check = false;
};

struct Compressed {
    Bytes bytes;
    Forms forms;
    std::vector<size_t> blocks;  // compressed positions of the block headers
};

Compressed Compress(ByteSpan raw, const CompressOptions& options = {});

}  // namespace lz
