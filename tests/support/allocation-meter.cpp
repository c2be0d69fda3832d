// operator new and delete with a count. The block's size is kept in front of it.
#include "support/allocation-meter.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

constexpr std::size_t kFront = alignof(std::max_align_t);

std::atomic<std::size_t> held = 0;
std::atomic<std::size_t> peak = 0;

// The number of the allocation that fails, counted from 1; 0 when none is to.
std::atomic<std::size_t> failing = 0;
std::atomic<std::size_t> asked = 0;

}  // namespace

void* operator new(std::size_t size) {
    const bool fails = failing != 0 && ++asked == failing;
    void* block = fails || size > SIZE_MAX - kFront ? nullptr : std::malloc(size + kFront);
    if (block == nullptr) throw std::bad_alloc();
    *static_cast<std::size_t*>(block) = size;
    const std::size_t now = held += size;
    if (now > peak) peak = now;
    return static_cast<char*>(block) + kFront;
}

void operator delete(void* data) noexcept {
    if (data == nullptr) return;
    void* block = static_cast<char*>(data) - kFront;
    held -= *static_cast<std::size_t*>(block);
    std::free(block);
}

void operator delete(void* data, std::size_t) noexcept { operator delete(data); }

namespace corvane_test {

AllocationMeter::AllocationMeter() : m_before(held) { peak = held.load(); }

std::size_t AllocationMeter::Peak() const { return peak - m_before; }

std::ptrdiff_t AllocationMeter::Held() const { return static_cast<std::ptrdiff_t>(held - m_before); }

FailingAllocation::FailingAllocation(std::size_t before) {
    asked = 0;
    failing = before + 1;
}

FailingAllocation::~FailingAllocation() { failing = 0; }

bool FailingAllocation::Happened() const { return asked >= failing; }

}  // namespace corvane_test
