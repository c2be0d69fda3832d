// A whole replay, as the add-on reads it from a file. Settings: 1 byte, whether the caller has a key.
#include <filesystem>
#include <fstream>
#include <random>

#include "fuzz-target.h"
#include "games/corvane/corvane-lib/src/replay-parser.h"
#include "util/platform/platform.h"

namespace {

// One file for the whole run; TMPDIR says where.
class InputFile {
  public:
    InputFile()
        : m_path(std::filesystem::temp_directory_path() /
                 ("corvane-fuzz-" + std::to_string(std::random_device{}()) + ".replay")) {}
    ~InputFile() {
        std::error_code ignored;
        std::filesystem::remove(m_path, ignored);
    }
    void Write(std::span<const std::uint8_t> bytes) const {
        std::ofstream file(m_path, std::ios_base::binary);
        file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    }
    std::wstring WidePath() const { return orvel::util::platform::WideFromPath(m_path); }

  private:
    std::filesystem::path m_path;
};

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const InputFile file;
    fuzz::Settings settings({data, size});
    const std::vector<std::uint8_t> key((settings.Take(1) & 1) != 0 ? 16 : 0, 0x5A);
    file.Write(settings.Rest());
    fuzz::ReadsOrFails([&] {
        std::uint32_t resumePosition = 0;
        bool resumeFlag = false;
        orvel::corvane::ReplayParser parser(file.WidePath());
        parser.ParseReplay(resumePosition, resumeFlag, key);
        parser.Document().dump(1, ' ', false, nlohmann::json::error_handler_t::strict);
    });
    return 0;
}
