// tANS arrays (type 1): table description and data, without the array header.
#pragma once

#include <optional>

#include "lz-writer/coded.h"

namespace lz {

// Nothing when this array cannot be coded so: fewer than 8 bytes would result, or the table cannot hold it.
std::optional<Coded> EncodeTans(ByteSpan raw);

}  // namespace lz
