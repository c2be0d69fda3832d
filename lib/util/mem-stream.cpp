// Memory as a stream.
#include "util/mem-stream.h"

namespace orvel::util {

MemBuf::MemBuf(const std::uint8_t* data, std::size_t size) {
    // std::streambuf asks for char*, but nothing writes through a get area.
    char* first = const_cast<char*>(reinterpret_cast<const char*>(data));
    setg(first, first, first + size);
}

MemStream::MemStream(const std::uint8_t* data, std::size_t size)
    : std::istream(nullptr), m_buffer(data, size) {
    rdbuf(&m_buffer);
}

}  // namespace orvel::util
