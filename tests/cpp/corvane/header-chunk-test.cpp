// The lists of the network demo header. What each version holds is tests/js/header.test.js's business.
#include "games/corvane/corvane-lib/src/header-chunk.h"

#include <gtest/gtest.h>

#include "support/replay-builder.h"

namespace {

using namespace corvane_test;

// False if the data ran out or was not all read.
bool Read(const Bytes& bytes, orvel::corvane::NetworkDemoHeader& header) {
    ue4::FDataReader archive(bytes.data(), bytes.size(), CppUtilities::LittleEndian);
    return ReadNetworkDemoHeader(archive, header) && !archive.Reader().fail() &&
           archive.Reader().remaining() == 0;
}

TEST(HeaderChunk, every_version_is_read_to_its_end) {
    for (std::uint32_t version = 5; version <= 14; ++version) {
        orvel::corvane::NetworkDemoHeader header;
        EXPECT_TRUE(Read(Header{.version = version}.Build(), header)) << version;
    }
}

TEST(HeaderChunk, a_list_has_as_many_strings_as_it_counts_or_runs_out) {
    const Bytes whole = Header{.gameData = {}}.Build();
    constexpr std::int32_t kStored = 100'000;
    for (const std::int32_t count : {kStored, kStored + 1, -1, INT32_MAX, INT32_MIN}) {
        Writer writer;
        writer.Add(Prefix(whole, whole.size() - 4)).I32(count);
        for (std::int32_t i = 0; i < kStored; ++i) writer.Str("");
        orvel::corvane::NetworkDemoHeader header;
        EXPECT_EQ(Read(writer.bytes, header), count == kStored) << count;
        EXPECT_EQ(header.GameSpecificData.size(), count == kStored ? std::size_t{kStored} : 0U);
    }
}

}  // namespace
