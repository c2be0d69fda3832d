// The window and its position.
#include "util/window-buf.h"

#include <algorithm>
#include <ios>

namespace orvel::util {

WindowBuf::int_type WindowBuf::underflow() {
    if (gptr() == egptr()) {
        leaveWindow(m_windowEnd);
        const std::streamsize count = readSource(m_window.data(), static_cast<std::streamsize>(m_nextBytes));
        setg(m_window.data(), m_window.data(), m_window.data() + count);
        m_nextBytes = std::min(2 * m_nextBytes, kWindowBytes);
    }
    return gptr() == egptr() ? traits_type::eof() : traits_type::to_int_type(*gptr());
}

std::streamsize WindowBuf::xsgetn(char* to, std::streamsize count) {
    const std::streamsize held = std::min<std::streamsize>(count, egptr() - gptr());
    std::copy_n(gptr(), held, to);
    setg(eback(), gptr() + held, egptr());
    if (held == count) return count;
    const std::streamsize rest = count - held;
    // What the window cannot hold goes straight to the caller.
    if (rest < std::ssize(m_window)) return held + std::streambuf::xsgetn(to + held, rest);
    leaveWindow(m_windowEnd);
    return held + readSource(to + held, rest);
}

WindowBuf::pos_type WindowBuf::seekoff(off_type offset, std::ios_base::seekdir from,
                                       std::ios_base::openmode which) {
    if (from == std::ios_base::end) {
        m_sourcePosition = m_source.pubseekoff(0, std::ios_base::end, std::ios_base::in);
        if (m_sourcePosition == kUnknown) return pos_type(kUnknown);
        offset += m_sourcePosition;
    } else if (from == std::ios_base::cur) {
        offset += position();
    }
    return seekpos(pos_type(offset), which);
}

WindowBuf::pos_type WindowBuf::seekpos(pos_type target, std::ios_base::openmode /*which*/) {
    const off_type position = target;
    if (position < 0) return pos_type(kUnknown);
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

void WindowBuf::leaveWindow(off_type position) {
    setg(m_window.data(), m_window.data(), m_window.data());
    m_windowEnd = position;
}

std::streamsize WindowBuf::readSource(char* to, std::streamsize count) {
    const off_type position = m_windowEnd;
    if (m_sourcePosition != position &&
        off_type{m_source.pubseekpos(pos_type(position), std::ios_base::in)} != position) {
        throw std::ios_base::failure("seeking in the source failed");
    }
    m_sourcePosition = kUnknown;
    const std::streamsize read = m_source.sgetn(to, count);
    m_windowEnd = position + read;
    // A C runtime that has met the end may give no more, though the file grows, before it is sought.
    if (read == count) m_sourcePosition = m_windowEnd;
    return read;
}

}  // namespace orvel::util
