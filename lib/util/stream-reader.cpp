// The base of the archive readers.
#include "util/stream-reader.h"

namespace orvel::util {

void StreamReader::ReadString(std::string& text) { m_reader->read(text); }

}  // namespace orvel::util
