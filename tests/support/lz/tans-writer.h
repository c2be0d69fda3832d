// tANS arrays (type 1): table description and data, without the array header.
#pragma once

#include <optional>

#include "support/lz/coded.h"

namespace lz {

struct TansOptions {
    enum class Table { cheapest, dense, sparse };
    Table table = Table::cheapest;
    std::optional<unsigned> table_bits;  // 8 to 11; none: by the array's length
    std::optional<unsigned> q;           // smallest width of a count in a dense table, 0 to 7; none: cheapest
};

// Nothing when this array cannot be coded so: fewer than 8 bytes would result, or the table cannot hold it.
std::optional<Coded> EncodeTans(ByteSpan raw, const TansOptions& options);

}  // namespace lz
