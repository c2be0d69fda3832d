// Counts what operator new has given out in a test program that links it, and lets it fail.
#pragma once

#include <cstddef>

namespace corvane_test {

// Both numbers are beyond what was held when the object was made. One object and one thread at a time.
class AllocationMeter {
  public:
    AllocationMeter();
    // The largest number of bytes that were held at once.
    std::size_t Peak() const;
    // Bytes held now; negative if more was given back than taken.
    std::ptrdiff_t Held() const;

  private:
    std::size_t m_before;
};

// While it lives, the allocation after `before` others fails with std::bad_alloc; those after it succeed. One
// object and one thread at a time.
class FailingAllocation {
  public:
    explicit FailingAllocation(std::size_t before);
    ~FailingAllocation();
    FailingAllocation(const FailingAllocation&) = delete;
    FailingAllocation& operator=(const FailingAllocation&) = delete;

    bool Happened() const;
};

}  // namespace corvane_test
