// Counts what operator new has given out in a test program that links it.
#pragma once

#include <cstddef>

namespace corvane_test {

// The largest number of bytes that were held at once since the object was made, beyond those held then. One
// object and one thread at a time.
class AllocationMeter {
  public:
    AllocationMeter();
    std::size_t Peak() const;

  private:
    std::size_t m_before;
};

}  // namespace corvane_test
