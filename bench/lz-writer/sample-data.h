// Deterministic data for the benchmarks of the LZ decoder: the same bytes on every target for the same
// seed.
#pragma once

#include "lz-writer/coded.h"

namespace lz {

class Random {
  public:
    explicit Random(uint64_t seed) : state_(seed * 2 + 1) {}
    uint32_t Next() {
        state_ = state_ * 6364136223846793005U + 1442695040888963407U;
        return static_cast<uint32_t>((state_ ^ (state_ >> 29)) >> 32);
    }
    // Uniform below `limit`, which must not be 0.
    uint32_t Below(uint32_t limit) { return static_cast<uint32_t>((uint64_t{Next()} * limit) >> 32); }
    // Small values are likelier, about in inverse proportion to their size.
    uint32_t Skewed(uint32_t limit);

  private:
    uint64_t state_;
};

// Invented English-like prose with markup: Zipf-distributed words with favourite successors.
Bytes MakeText(size_t size, uint64_t seed = 1);
// Records of 40 bytes: counters, timestamps, drifting floats, enumerations, references and noise.
Bytes MakeRecords(size_t size, uint64_t seed = 1);
// Two interleaved channels of 16-bit little-endian samples: decaying tones over noise.
Bytes MakeSamples(size_t size, uint64_t seed = 1);
// Pieces of all of these, runs of one byte, noise, and copies of earlier pieces.
Bytes MakeMixed(size_t size, uint64_t seed = 1);

}  // namespace lz
