// The base of every archive reader: a binary reader, and how strings are read.
#pragma once

#include <memory>
#include <string>

#include "util/binary-reader.h"

namespace orvel::util {

class StreamReader {
  public:
    virtual ~StreamReader() = default;

    // Reads one string and replaces text with it. Here: the binary reader's form, with the length in front.
    virtual void ReadString(std::string& text) { m_reader->read(text); }

    CppUtilities::BinaryReader& Reader() { return *m_reader; }

  protected:
    StreamReader() = default;

    // The subclass's constructor sets it.
    std::unique_ptr<CppUtilities::BinaryReader> m_reader;
};

}  // namespace orvel::util
