// Globally unique identifiers as the engine writes and prints them.
#pragma once

#include <cstdint>
#include <string>

#include "games/corvane/corvane-lib/src/ue4/util/ue4-binary-streams.h"

namespace orvel::corvane {

// 16 bytes as four words. Each word is read big-endian, so Plain shows the bytes in file order.
struct Guid {
    std::uint32_t A = 0;
    std::uint32_t B = 0;
    std::uint32_t C = 0;
    std::uint32_t D = 0;
};

enum class GuidFormat {
    Plain = 0,        // 32 lower-case digits
    Hyphens = 1,      // 8-4-4-4-12, upper-case digits; also in the forms below
    Braces = 2,       // {8-4-4-4-12}
    Parentheses = 3,  // (8-4-4-4-12)
    HexValues = 4,    // {0x8,0x4,0x4,{0x2 eight times}}
    FourWords = 5,    // 8-8-8-8
};

// Reads four words; a word behind the end of the data is 0.
Guid ReadGuid(ue4::FStreamReader& archive);

// A value outside GuidFormat prints as Plain. Throws std::runtime_error("Error during formatting.") if the C
// library cannot format.
std::string FormatGuid(const Guid& guid, GuidFormat format = GuidFormat::Plain);

}  // namespace orvel::corvane
