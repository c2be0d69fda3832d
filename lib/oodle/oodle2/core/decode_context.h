// What every level of the decoder needs to know of a call: frame, quantum and chunk hand it down.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace oo2 {

// Fast copies and reads in wide units wherever a margin allows it; Careful goes byte by byte. Both give the
// same bytes and the same failures: tests compare them.
enum class DecodePath : std::uint8_t { Fast, Careful };

// The phases of OodleLZ_Decode_ThreadPhase as a set.
struct Phases {
    bool unpack = true;  // phase 1: arrays from the payload into scratch
    bool write = true;   // phase 2: from scratch into the output
    bool Threaded() const { return !(unpack && write); }
};

// Positions are raw bytes from the window's begin.
struct DecodeContext {
    // The window: the dictionary, if there is one, and the output behind it.
    std::uint8_t* windowBase = nullptr;
    std::int64_t windowEnd = 0;
    std::int64_t rawEnd = 0;  // where the output that is wanted ends

    // What has been decoded.
    std::int64_t rawPos = 0;    // up to here
    std::int64_t resetPos = 0;  // of the last reset: matches do not reach before it

    // Scratch: the bytes in decoder memory, and how many of them one LZ chunk may use. That limit is computed
    // from the block's compressor alone. More memory does not raise it, so that a stream is good or corrupt
    // whoever provides the memory.
    std::span<std::uint8_t> scratch;
    std::size_t chunkScratch = 0;

    DecodePath path = DecodePath::Fast;
    Phases phases;
    bool fuzzSafe = false;
    bool checkCRC = false;
    int verbosity = 0;  // above 2, each block and quantum is logged

    std::uint8_t* Out() const { return windowBase + rawPos; }
    std::size_t BytesSinceReset() const { return static_cast<std::size_t>(rawPos - resetPos); }
    bool LogsSteps() const { return verbosity > 2; }
};

}  // namespace oo2
