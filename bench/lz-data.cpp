// lz_data DATASET BYTES FOLDER: writes the files that lz_bench decodes: the raw bytes of one data set, and
// each codec's compressed form of them. Compressing takes minutes, so it is not part of a measurement.
// Existing files stay as they are.
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

void WriteAll(const bench::DataSet& set, std::size_t size, const std::filesystem::path& folder) {
    const bench::Bytes raw = set.make(size);
    const auto write = [&](const std::string& stream, const auto& bytes) {
        const std::filesystem::path path = folder / bench::FileName(set.name, size, stream);
        if (std::filesystem::exists(path)) return;
        const std::filesystem::path unfinished = path.string() + ".part";
        Write(unfinished, bytes());
        std::filesystem::rename(unfinished, path);
    };
    write("raw", [&] { return raw; });
    for (const bench::Codec& codec : bench::Codecs()) {
        if (codec.compress != nullptr && size <= codec.largest)
            write(codec.stream, [&] { return codec.compress(raw); });
    }
}

}  // namespace

int main(int argc, char** argv) {
    for (const bench::DataSet& set : bench::DataSets()) {
        if (argc != 4 || set.name != argv[1]) continue;
        WriteAll(set, std::stoul(argv[2]), argv[3]);
        return 0;
    }
    std::fputs("usage: lz_data DATASET BYTES FOLDER\n", stderr);
    return 2;
}
