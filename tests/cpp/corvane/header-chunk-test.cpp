// The network demo header where it is cut or lies. What each version holds is tests/js/header.test.js's
// business.
#include "games/corvane/corvane-lib/src/header-chunk.h"

#include <gtest/gtest.h>

#include "support/replay-builder.h"

namespace {

using namespace corvane_test;
using orvel::corvane::NetworkDemoHeader;

// False if the data ran out.
bool Read(const Bytes& bytes, NetworkDemoHeader& header) {
    ue4::FStreamReader archive(FileLikeStream(bytes).release(), CppUtilities::LittleEndian, true);
    try {
        return ReadNetworkDemoHeader(archive, header) && archive.Reader().remaining() == 0;
    } catch (const std::ios_base::failure&) {
        return false;
    }
}

TEST(HeaderChunk, one_that_is_cut_anywhere_runs_out) {
    for (std::uint32_t version = 5; version <= 14; ++version) {
        const Bytes whole = Header{.version = version}.Build();
        for (std::size_t length = 0; length <= whole.size(); ++length) {
            NetworkDemoHeader header;
            EXPECT_EQ(Read(Prefix(whole, length), header), length == whole.size())
                << version << ", " << length;
        }
    }
}

TEST(HeaderChunk, a_list_has_as_many_strings_as_it_counts_or_runs_out) {
    const Bytes whole = Header{.gameData = {}}.Build();
    constexpr std::int32_t kStored = 100'000;
    for (const std::int32_t count : {kStored, kStored + 1, -1, INT32_MAX, INT32_MIN}) {
        Writer writer;
        writer.Add(Prefix(whole, whole.size() - 4)).I32(count);
        for (std::int32_t i = 0; i < kStored; ++i) writer.Str("");
        NetworkDemoHeader header;
        const bool good = count == kStored;
        EXPECT_EQ(Read(writer.bytes, header), good) << count;
        EXPECT_EQ(header.GameSpecificData.size(), good ? static_cast<std::size_t>(count) : 0U);
    }
}

}  // namespace
