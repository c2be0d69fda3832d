// The LZ decoders that are measured, and the compressor of each.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace bench {

inline constexpr std::array<std::size_t, 4> kSizes{64 << 10, 1 << 20, 8 << 20, 64 << 20};

using Bytes = std::vector<std::uint8_t>;

struct Codec {
    std::string name;
    std::string stream;  // the name of its compressed data; zlib and libdeflate decode the same
    Bytes (*compress)(std::span<const std::uint8_t> raw);  // null: another codec's stream
    // raw has the size of the data before compression. Returns false unless exactly that many bytes come out.
    bool (*decode)(std::span<const std::uint8_t> compressed, std::span<std::uint8_t> raw);
    std::size_t largest = kSizes.back();  // the most bytes it compresses, since that takes time
};

const std::vector<Codec>& Codecs();

struct DataSet {
    std::string name;
    Bytes (*make)(std::size_t size);
};

const std::vector<DataSet>& DataSets();

// The name of the file with the raw bytes ("raw") or those of a codec's stream.
inline std::string FileName(const std::string& dataSet, std::size_t size, const std::string& stream) {
    return dataSet + '-' + std::to_string(size) + '.' + stream;
}

}  // namespace bench
