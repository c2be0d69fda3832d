// The cheapest listing of a folder with last-write times, in each operating system's own terms.
#pragma once

#include <cstdint>
#include <string>

namespace bench {

// The sum of the last-write times, in the system's units. folder: as in platform.h, no links in it.
std::int64_t SumOfSystemListing(const std::wstring& folder);

}  // namespace bench
