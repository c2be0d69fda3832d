// Decoding for the tests: into buffers in which every byte beyond the permitted ones is guarded.
#pragma once

#include <optional>

#include "cases.h"

namespace lz {

enum class Path { fast, careful };

// The bytes, or nothing when the decoder refuses the stream. Input and output are copied to and from buffers
// of exactly their size; under a sanitizer any other access ends the test, elsewhere a write beside the
// output fails it.
std::optional<Bytes> Decode(ByteSpan stream, size_t raw_size, Path path = Path::fast);

// The same, one block a call: phase 1, then phase 2 on the same decoder memory.
std::optional<Bytes> DecodeInPhases(const Case& example);

}  // namespace lz
