// Huffman arrays (types 2 and 4): code description and data, without the array header.
#pragma once

#include <optional>

#include "lz-writer/coded.h"

namespace lz {

// split: type 4, two halves of three streams. Nothing if the array is too short or too long for this coding.
std::optional<Coded> EncodeHuffman(ByteSpan raw, bool split);

}  // namespace lz
