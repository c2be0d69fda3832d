// Runs a fuzz target over the files of a folder, for builds without the fuzzer: PROGRAM FOLDER.
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

#include "fuzz-target.h"

int main(int count, char** arguments) {
    if (count != 2) return 2;
    std::size_t inputs = 0;
    for (const auto& entry : std::filesystem::directory_iterator(arguments[1])) {
        std::ifstream file(entry.path(), std::ios_base::binary);
        const std::vector<char> bytes{std::istreambuf_iterator<char>(file), {}};
        // The last name on the screen is the input that failed.
        std::fprintf(stderr, "%s\n", entry.path().filename().string().c_str());
        LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
        ++inputs;
    }
    std::fprintf(stderr, "%zu inputs\n", inputs);
    // A folder that is not there or empty is no pass.
    return inputs > 0 ? 0 : 1;
}
