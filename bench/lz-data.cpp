// lz_data DATASET FOLDER: writes what lz_bench decodes, the raw bytes of one data set at each size and each
// codec's compressed form of them. Compressing takes minutes, so it is not part of a measurement.
#include <cstdio>
#include <filesystem>
#include <fstream>

#include "lz-codecs.h"

namespace {

void Write(const std::filesystem::path& path, const bench::Bytes& bytes) {
    std::ofstream file(path, std::ios::binary);
    file.exceptions(std::ios::failbit | std::ios::badbit);
    file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}

void WriteDataSet(const bench::DataSet& set, const std::filesystem::path& folder) {
    for (const std::size_t size : bench::kSizes) {
        const bench::Bytes raw = set.make(size);
        Write(folder / bench::FileName(set.name, size, "raw"), raw);
        for (const bench::Codec& codec : bench::Codecs()) {
            if (codec.compress == nullptr) continue;
            Write(folder / bench::FileName(set.name, size, codec.stream), codec.compress(raw));
        }
    }
}

}  // namespace

int main(int argc, char** argv) {
    for (const bench::DataSet& set : bench::DataSets()) {
        if (argc != 3 || set.name != argv[1]) continue;
        std::filesystem::create_directories(argv[2]);
        WriteDataSet(set, argv[2]);
        return 0;
    }
    std::fputs("usage: lz_data DATASET FOLDER\n", stderr);
    return 2;
}
