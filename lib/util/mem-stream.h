// A block of memory as a standard input stream.
#pragma once

#include <cstddef>
#include <cstdint>
#include <istream>
#include <streambuf>

namespace orvel::util {

// A read-only stream buffer over a block, which it neither owns nor copies. It has no positions: tellg gives
// -1 and a seek fails.
class MemBuf : public std::streambuf {
  public:
    // data: size bytes that must outlive the buffer; may be null if size is 0.
    MemBuf(const std::uint8_t* data, std::size_t size);
};

// A stream over the size bytes at data, which must outlive it. Its exception mask is empty: a read past the
// end sets eofbit and failbit and throws nothing.
class MemStream : public std::istream {
  public:
    MemStream(const std::uint8_t* data, std::size_t size);

  private:
    MemBuf m_buffer;
};

}  // namespace orvel::util
