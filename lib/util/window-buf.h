// A stream buffer over a file. It reads by position into a window, and a seek does not empty the window.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <streambuf>
#include <string_view>
#include <utility>

namespace orvel::util {

// A seek reads nothing and fails only for a negative position; the next read notices a position past the end.
// Read-only. If reading fails, the buffer throws std::ios_base::failure; a stream over it then sets its
// badbit, as over a file buffer.
class WindowBuf : public std::streambuf {
  public:
    // Reads up to count bytes from a position: fewer only where the data ends, -1 if reading fails.
    using ReadAt = std::function<std::ptrdiff_t(std::int64_t position, char* to, std::size_t count)>;

    // size: the end of the data for this buffer, even if the file grows.
    WindowBuf(ReadAt readAt, std::int64_t size) : m_readAt(std::move(readAt)), m_size(size) {}

    std::int64_t Size() const { return m_size; }
    std::int64_t Position() const { return m_windowEnd - (egptr() - gptr()); }
    // The bytes in the window from the position on; valid until the buffer is used again.
    std::string_view Held() const { return {gptr(), static_cast<std::size_t>(egptr() - gptr())}; }
    // Moves the position past count of them.
    void Take(std::size_t count) { setg(eback(), gptr() + count, egptr()); }

  protected:
    int_type underflow() override;
    std::streamsize xsgetn(char* to, std::streamsize count) override;
    pos_type seekoff(off_type offset, std::ios_base::seekdir from, std::ios_base::openmode which) override;
    pos_type seekpos(pos_type position, std::ios_base::openmode which) override;

  private:
    static constexpr std::size_t kWindowBytes = 16 * 1024;
    // What a jump to another place reads: the head of a chunk, and often the event in it. Whole
    // windows would read far more than is used of chunks that lie apart.
    static constexpr std::size_t kJumpBytes = 256;
    // How many times as much each further read in sequence takes. Files with ten events in a row here and
    // there take 5 to 9 % less than with 2.
    static constexpr std::size_t kGrowth = 8;

    // Moves to a position outside the window, and empties the window.
    void leaveWindow(std::int64_t position);
    // Reads up to count bytes from the window's end on, and moves that end.
    std::streamsize readOn(char* to, std::size_t count);

    ReadAt m_readAt;
    std::int64_t m_size;
    std::int64_t m_windowEnd = 0;  // the position of egptr()
    std::size_t m_nextBytes = kJumpBytes;
    std::array<char, kWindowBytes> m_window;
};

}  // namespace orvel::util
