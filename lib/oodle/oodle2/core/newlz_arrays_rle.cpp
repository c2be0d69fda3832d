#include "oodle/oodle2/core/newlz_arrays_rle.h"

#include <algorithm>
#include <cstring>

namespace oo2 {
namespace {

struct RunLengthCommand {
    std::size_t literals = 0;  // bytes to copy
    std::size_t fills = 0;     // fill bytes behind the literals
    std::size_t size = 1;      // bytes of the command
    bool setsFill = false;     // does only this: the next literal becomes the fill byte
};

// Commands are read backward from the buffer's end. c is the last byte, u = c * 256 + the byte before it:
//   c = 0, c >= 0x30     1 byte    15 - (c & 15) literals, c >> 4 fills
//   c = 1                1 byte    the next literal becomes the fill byte
//   c = 2 to 8           2 bytes   (u - 0x1FF) * 64 literals
//   c = 9 to 0x0F        2 bytes   (u - 0x8FF) * 128 fills
//   c = 0x10 to 0x2F     2 bytes   with t = u - 0x1000: t & 63 literals, t >> 6 fills
RunLengthCommand CommandAt(std::size_t c, std::size_t before) {
    const std::size_t u = c << 8 | before;
    if (c == 0 || c >= 0x30) return {.literals = 15 - (c & 15), .fills = c >> 4};
    if (c == 1) return {.setsFill = true};
    if (c <= 8) return {.literals = (u - 0x1FF) * 64, .size = 2};
    if (c <= 0x0F) return {.fills = (u - 0x8FF) * 128, .size = 2};
    return {.literals = (u - 0x1000) & 63, .fills = (u - 0x1000) >> 6, .size = 2};
}

bool Run(std::span<const std::uint8_t> buffer, std::span<std::uint8_t> out) {
    std::uint8_t fill = 0;
    while (!buffer.empty()) {
        const std::size_t last = buffer.size() - 1;
        const RunLengthCommand command = CommandAt(buffer[last], last > 0 ? buffer[last - 1] : 0);
        if (command.size > buffer.size()) return false;
        buffer = buffer.first(buffer.size() - command.size);
        if (command.setsFill) {
            if (buffer.empty()) return false;
            fill = buffer[0];
            buffer = buffer.subspan(1);
            continue;
        }
        if (command.literals > buffer.size() || command.literals > out.size() ||
            command.fills > out.size() - command.literals) {
            return false;
        }
        if (command.literals > 0) std::memcpy(out.data(), buffer.data(), command.literals);
        if (command.fills > 0) std::memset(out.data() + command.literals, fill, command.fills);
        buffer = buffer.subspan(command.literals);
        out = out.subspan(command.literals + command.fills);
    }
    return out.empty();
}

// Puts the array at the start of `comp` and the bytes behind it together in scratch. Empty if that fails.
std::span<const std::uint8_t> JoinInScratch(std::span<const std::uint8_t> comp, ArrayScratch& scratch) {
    std::uint8_t* const joined = scratch.next;
    const auto front = newLZ_get_array(comp, nullptr, ArrayScratch::kMaxArrayLen, scratch);
    if (!front) return {};
    const std::span<const std::uint8_t> rest = comp.subspan(front->compUsed);
    const std::size_t room = static_cast<std::size_t>(scratch.end - joined);
    if (front->bytes.size() > room || rest.size() > room - front->bytes.size()) return {};
    if (front->bytes.data() != joined) std::copy(front->bytes.begin(), front->bytes.end(), joined);
    std::copy(rest.begin(), rest.end(), joined + front->bytes.size());
    return {joined, front->bytes.size() + rest.size()};
}

}  // namespace

// The compressed bytes:
//   one byte                  the whole array repeats that byte
//   0, then the buffer        (no array header begins with 0 here)
//   an array, then more       the array's bytes and the bytes behind it together are the buffer
bool newLZ_decode_rle(std::span<const std::uint8_t> comp, std::span<std::uint8_t> out,
                      ArrayScratch& scratch) {
    if (comp.size() == 1) {
        std::memset(out.data(), comp[0], out.size());
        return true;
    }
    return Run(comp[0] == 0 ? comp.subspan(1) : JoinInScratch(comp, scratch), out);
}

}  // namespace oo2
