// LZ decoding beside the usual peers. Rows are DATASET-BYTES/CODEC, with the compressed size as a counter.
//
// The folder of what lz_data has written comes in the environment as CORVANE_LZ_DATA.
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>

#include <benchmark/benchmark.h>

#include "lz-codecs.h"

namespace {

bench::Bytes Read(const std::filesystem::path& path) {
    bench::Bytes bytes(std::filesystem::file_size(path));
    std::ifstream file(path, std::ios::binary);
    file.exceptions(std::ios::failbit | std::ios::badbit);
    file.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    return bytes;
}

using Shared = std::shared_ptr<const bench::Bytes>;

void Run(benchmark::State& state, const bench::Codec& codec, const bench::Bytes& raw,
         const bench::Bytes& compressed) {
    bench::Bytes out(raw.size());
    if (!codec.decode(compressed, out) || out != raw) return state.SkipWithError("wrong result");
    for ([[maybe_unused]] auto _ : state) {
        benchmark::DoNotOptimize(codec.decode(compressed, out));
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(raw.size()));
    state.counters["compressed"] = static_cast<double>(compressed.size());
}

void RegisterAll(const std::filesystem::path& folder) {
    for (const bench::DataSet& set : bench::DataSets()) {
        for (const std::size_t size : bench::kSizes) {
            const auto load = [&](const std::string& stream) -> Shared {
                return std::make_shared<bench::Bytes>(Read(folder / bench::FileName(set.name, size, stream)));
            };
            const Shared raw = load("raw");
            for (const bench::Codec& codec : bench::Codecs()) {
                if (size > codec.largest) continue;
                const Shared compressed = load(codec.stream);
                const std::string row = set.name + '-' + std::to_string(size) + '/' + codec.name;
                benchmark::RegisterBenchmark(
                    row.c_str(), [=](benchmark::State& state) { Run(state, codec, *raw, *compressed); });
            }
        }
    }
}

}  // namespace

int main(int argc, char** argv) {
    const char* const folder = std::getenv("CORVANE_LZ_DATA");
    RegisterAll(folder != nullptr ? folder : ".");
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
