// The Kraken quantum decoder.
#pragma once

#include <cstddef>

#include "oodle/oodle2/core/quantum.h"

namespace oo2 {

// Decodes one quantum. Returns the bytes of its payload that it took, or -1 if it is corrupt or does not fit
// the scratch. Of a threaded quantum, each phase returns that.
std::ptrdiff_t Kraken_DecodeOneQuantum(const Quantum& quantum);

}  // namespace oo2
