// A block of memory as a file's stream: it has positions, and it throws when it fails.
#pragma once

#include <algorithm>
#include <cstdint>
#include <istream>
#include <span>
#include <streambuf>

namespace fuzz {

class SeekableBuffer : public std::streambuf {
  public:
    explicit SeekableBuffer(std::span<std::uint8_t> bytes) {
        char* begin = reinterpret_cast<char*>(bytes.data());
        setg(begin, begin, begin + bytes.size());
    }

  private:
    // As a file has it, a position past the end is one, and nothing can be read there.
    pos_type seekoff(off_type offset, std::ios_base::seekdir from, std::ios_base::openmode) override {
        const off_type size = egptr() - eback();
        const off_type here = gptr() - eback() + m_beyond;
        const off_type target = offset + (from == std::ios_base::beg   ? 0
                                          : from == std::ios_base::end ? size
                                                                       : here);
        if (target < 0) return pos_type(off_type(-1));
        m_beyond = std::max<off_type>(target - size, 0);
        setg(eback(), eback() + std::min(target, size), egptr());
        return pos_type(target);
    }
    pos_type seekpos(pos_type position, std::ios_base::openmode mode) override {
        return seekoff(off_type(position), std::ios_base::beg, mode);
    }

    off_type m_beyond = 0;
};

class SeekableMemory : public std::istream {
  public:
    explicit SeekableMemory(std::span<std::uint8_t> bytes) : std::istream(nullptr), m_buffer(bytes) {
        rdbuf(&m_buffer);
        exceptions(std::ios_base::failbit | std::ios_base::badbit);
    }

  private:
    SeekableBuffer m_buffer;
};

}  // namespace fuzz
