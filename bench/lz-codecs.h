// The LZ decoders that are measured, and what compresses for each of them.
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
    std::string stream;  // what its compressed data is called; zlib and libdeflate decode the same
    Bytes (*compress)(std::span<const std::uint8_t> raw);  // null: another codec's stream
    // raw has the size that the data was compressed from. False if that is not what came out.
    bool (*decode)(std::span<const std::uint8_t> compressed, std::span<std::uint8_t> raw);
    std::size_t largest = kSizes.back();  // what it is given to compress at most, for the time that takes
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
