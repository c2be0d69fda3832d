// Byte arrays, the parts of every coded quantum. An array is a header, which gives the coding and both
// lengths, and the coded bytes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

#include "oodle/oodle2/core/decode_context.h"

namespace oo2 {

enum class ArrayType : std::uint8_t {
    Stored = 0,
    Tans = 1,
    Huffman = 2,
    RunLength = 3,
    HuffmanSplit = 4,
    Multi = 5,
    Count = 6,
};

struct ArrayHeader {
    ArrayType type = ArrayType::Stored;
    std::size_t size = 0;     // bytes of the header itself
    std::size_t rawLen = 0;   // at most 262,144
    std::size_t compLen = 0;  // bytes after the header
};

class HuffBatch;

// Output memory and nesting limits. A nested array is decoded into what is left of scratch, and gives it back
// when the outer array is done.
struct ArrayScratch {
    std::uint8_t* next = nullptr;
    std::uint8_t* end = nullptr;
    DecodePath path = DecodePath::Fast;
    unsigned depth = 0;  // the number of arrays around the one to read
    // If not null, Huffman arrays are only prepared: their bytes are there once the batch has run.
    HuffBatch* batch = nullptr;
    // The raw bytes that nested arrays may still have, over the whole chunk. Without this budget a few bytes
    // of input could ask for hundreds of thousands of bytes, many times over. The budget allows the largest
    // array at every level of the deepest nesting.
    std::size_t innerBytesLeft = kMaxNesting * kMaxArrayLen;

    static constexpr unsigned kMaxNesting = 16;
    static constexpr std::size_t kMaxArrayLen = 0x40000;

    std::size_t Left() const { return static_cast<std::size_t>(end - next); }
};

// The scratch of a context, all of it free.
inline ArrayScratch ScratchOf(const DecodeContext& context) {
    return {.next = context.scratch.data(),
            .end = context.scratch.data() + context.scratch.size(),
            .path = context.path};
}

struct DecodedArray {
    std::span<const std::uint8_t> bytes;  // in the input when stored; else at `dest` or in scratch
    std::size_t compUsed = 0;             // header included
};

// Decodes the array at the start of `in`, of at most `capacity` raw bytes, into `dest`. With a null `dest` it
// goes into scratch, and scratch.next moves past it. A stored array stays in `in`. Returns nothing if the
// array is corrupt or too long. Logs some reasons; the caller reports the rest.
std::optional<DecodedArray> newLZ_get_array(std::span<const std::uint8_t> in, std::uint8_t* dest,
                                            std::size_t capacity, ArrayScratch& scratch);

// Reads only the header, under the same conditions.
std::optional<ArrayHeader> newLZ_get_array_header(std::span<const std::uint8_t> in, std::size_t capacity);

}  // namespace oo2
