// What the parts of the seed writer share.
#pragma once

#include <filesystem>
#include <fstream>
#include <string>

#include "support/replay-builder.h"

namespace fuzz {

// The seeds of one target: files named seed-..., so that they are told from inputs that a fuzzer found.
class Seeds {
  public:
    Seeds(const std::string& corpus, const std::string& target)
        : m_folder(std::filesystem::path(corpus) / target) {
        std::filesystem::create_directories(m_folder);
    }
    void Add(const std::string& name, const corvane_test::Bytes& bytes) const {
        std::ofstream file(m_folder / ("seed-" + name), std::ios_base::binary);
        file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    }

  private:
    std::filesystem::path m_folder;
};

// The targets of the LZ decoder.
void AddLzSeeds(const std::string& corpus);

}  // namespace fuzz
