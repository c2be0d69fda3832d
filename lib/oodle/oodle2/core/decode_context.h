// What every level of the decoder needs to know about a call. Frame, quantum and chunk pass it down.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace oo2 {

// Fast copies and reads in wide units where a margin allows it. Careful goes byte by byte. Both give the same
// bytes and the same failures; tests compare them.
enum class DecodePath : std::uint8_t { Fast, Careful };

// A set of the phases of OodleLZ_Decode_ThreadPhase.
struct Phases {
    bool unpack = true;  // phase 1: arrays from the payload into scratch
    bool write = true;   // phase 2: from scratch into the output
    bool Threaded() const { return !(unpack && write); }
};

// Positions are in raw bytes from the start of the window.
struct DecodeContext {
    // The window: the dictionary, if there is one, and the output behind it.
    std::uint8_t* windowBase = nullptr;
    std::int64_t windowEnd = 0;
    std::int64_t rawEnd = 0;  // where the output that is wanted ends

    // Progress.
    std::int64_t rawPos = 0;    // raw bytes are decoded up to here
    std::int64_t resetPos = 0;  // the last reset: matches do not reach before it

    // Scratch: the bytes in decoder memory, and how many of them one LZ chunk may use. The block's compressor
    // alone decides this limit. More memory does not raise it, so a stream is good or corrupt whoever
    // provides the memory.
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
