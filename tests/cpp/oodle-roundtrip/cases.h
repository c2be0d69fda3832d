// The streams of the round-trip and mutation tests: together they use every form that the decoder knows.
#pragma once

#include "support/lz/stream-writer.h"

namespace lz {

struct Case {
    std::string name;
    Bytes raw;
    Bytes stream;
    Forms forms;
    std::vector<size_t> blocks;  // compressed positions of the block headers
};

// Made once; small ones first.
const std::vector<Case>& AllCases();

}  // namespace lz
