// Moves the window and the position in it.
#include "util/window-buf.h"

#include <algorithm>
#include <ios>

namespace orvel::util {

WindowBuf::int_type WindowBuf::underflow() {
    if (gptr() == egptr()) {
        leaveWindow(m_windowEnd);
        const std::streamsize count = readOn(m_window.data(), m_nextBytes);
        setg(m_window.data(), m_window.data(), m_window.data() + count);
        m_nextBytes = std::min(kGrowth * m_nextBytes, kWindowBytes);
    }
    return gptr() == egptr() ? traits_type::eof() : traits_type::to_int_type(*gptr());
}

std::streamsize WindowBuf::xsgetn(char* to, std::streamsize count) {
    const std::streamsize held = std::min<std::streamsize>(count, egptr() - gptr());
    std::copy_n(gptr(), held, to);
    Take(static_cast<std::size_t>(held));
    if (held == count) return count;
    const std::streamsize rest = count - held;
    // Bytes that do not fit into the window go straight to the caller.
    if (rest < std::ssize(m_window)) return held + std::streambuf::xsgetn(to + held, rest);
    leaveWindow(m_windowEnd);
    return held + readOn(to + held, static_cast<std::size_t>(rest));
}

WindowBuf::pos_type WindowBuf::seekoff(off_type offset, std::ios_base::seekdir from,
                                       std::ios_base::openmode which) {
    if (from == std::ios_base::end) {
        offset += m_size;
    } else if (from == std::ios_base::cur) {
        offset += Position();
    }
    return seekpos(pos_type(offset), which);
}

WindowBuf::pos_type WindowBuf::seekpos(pos_type target, std::ios_base::openmode /*which*/) {
    const off_type position = target;
    if (position < 0) return pos_type(off_type(-1));
    const off_type begin = m_windowEnd - (egptr() - eback());
    if (position >= begin && position <= m_windowEnd) {
        setg(eback(), eback() + (position - begin), egptr());
    } else {
        const bool isNear = position > m_windowEnd && position - m_windowEnd < std::ssize(m_window);
        if (!isNear) m_nextBytes = kJumpBytes;
        leaveWindow(position);
    }
    return target;
}

void WindowBuf::leaveWindow(std::int64_t position) {
    setg(m_window.data(), m_window.data(), m_window.data());
    m_windowEnd = position;
}

std::streamsize WindowBuf::readOn(char* to, std::size_t count) {
    const auto left = static_cast<std::uint64_t>(std::max<std::int64_t>(m_size - m_windowEnd, 0));
    const std::ptrdiff_t read =
        m_readAt(m_windowEnd, to, static_cast<std::size_t>(std::min<std::uint64_t>(count, left)));
    if (read < 0) throw std::ios_base::failure("reading failed");
    m_windowEnd += read;
    return read;
}

}  // namespace orvel::util
