// The base of every archive reader: a binary reader and the way in which strings are read through it.
#pragma once

#include <memory>
#include <string>

#include "util/binary-reader.h"

namespace orvel::util {

class StreamReader {
  public:
    virtual ~StreamReader() = default;

    // Reads one string in place of what text holds. Here: the binary reader's own length-prefixed form.
    virtual void ReadString(std::string& text) { m_reader->read(text); }

    CppUtilities::BinaryReader& Reader() { return *m_reader; }

  protected:
    StreamReader() = default;

    // Set by the subclass's constructor.
    std::unique_ptr<CppUtilities::BinaryReader> m_reader;
};

}  // namespace orvel::util
