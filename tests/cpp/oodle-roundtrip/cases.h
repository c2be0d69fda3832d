// The streams of the round-trip and mutation tests: with tests/data/lz they use every form that the decoder
// knows.
#pragma once

#include "support/lz/stream-writer.h"

namespace lz {

struct Case {
    std::string name;
    Bytes raw;
    Bytes stream;
    Forms forms;
};

// Made once; the same on every target.
const std::vector<Case>& AllCases();

}  // namespace lz
