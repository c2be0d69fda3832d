// The Kraken quantum decoder.
#pragma once

#include <cstddef>

#include "oodle/oodle2/core/quantum.h"

namespace oo2 {

// A QuantumDecoder.
std::ptrdiff_t Kraken_DecodeOneQuantum(const Quantum& quantum);

}  // namespace oo2
