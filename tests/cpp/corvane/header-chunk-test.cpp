// The network demo header in all its versions.
#include "games/corvane/corvane-lib/src/header-chunk.h"

#include <sstream>

#include <gmock/gmock.h>

#include "support/replay-builder.h"

namespace {

using namespace corvane_test;
using orvel::corvane::HeaderObject;
using orvel::corvane::NetworkDemoHeader;

// One read over bytes in memory, as the file stream behaves: it throws.
struct HeaderRead {
    explicit HeaderRead(const Bytes& bytes) {
        auto stream = std::make_unique<std::istringstream>(std::string(bytes.begin(), bytes.end()));
        stream->exceptions(std::ios_base::failbit | std::ios_base::badbit);
        ue4::FStreamReader archive(stream.release(), CppUtilities::LittleEndian, true);
        testing::internal::CaptureStdout();
        try {
            good = ReadNetworkDemoHeader(archive, header);
            rest = archive.Reader().remaining();
        } catch (const std::ios_base::failure&) {
            ranOut = true;
        }
        output = testing::internal::GetCapturedStdout();
    }

    NetworkDemoHeader header;
    bool good = false;
    bool ranOut = false;
    std::uint64_t rest = 0;
    std::string output;
};

TEST(HeaderChunk, holds_the_fields_of_its_version) {
    for (std::uint32_t version = 5; version <= 16; ++version) {
        SCOPED_TRACE(version);
        Header header{.version = version, .levels = {"One"}};
        if (version >= 6) header.levels.push_back("Two");
        const HeaderRead read(header.Build());
        ASSERT_TRUE(read.good);
        EXPECT_EQ(read.rest, 0U);
        const bool named = version >= 11;
        const nlohmann::json expected = {
            {"magic", 0x2CF5A13D},
            {"NetworkVersion", version},
            {"NetworkChecksum", 0xC0FFEE},
            {"EngineNetworkVersion", 23},
            {"GameNetworkProtocolVersion", 7},
            {"guid", version >= 12 ? "0102030405060708090a0b0c0d0e0f10" : std::string(32, '0')},
            {"EngineVersion",
             {{"branch", named ? "++Corvane+Release" : ""},
              {"major", named ? 4 : 0},
              {"minor", named ? 20 : 0},
              {"patch", named ? 1 : 0},
              {"changelist", 0x89ABCDEFU}}},
            {"levels", header.levels},
            {"GameSpecificData", header.gameData}};
        EXPECT_EQ(HeaderObject(read.header), expected);
        EXPECT_EQ(read.header.Flags, version >= 9 ? 0xF1A65U : 0U);
        EXPECT_EQ(read.header.LevelNamesAndTimes[0].Time, version >= 7 ? 77U : 0U);
    }
}

TEST(HeaderChunk, empty_lists_stay_arrays) {
    const HeaderRead read(Header{.levels = {}, .gameData = {}}.Build());
    EXPECT_EQ(HeaderObject(read.header)["levels"], nlohmann::json::array());
    EXPECT_EQ(HeaderObject(read.header)["GameSpecificData"], nlohmann::json::array());
}

TEST(HeaderChunk, an_unknown_one_is_reported_and_left) {
    const std::string function = "[ orvel::corvane::ReplayParser::ParseHeaderChunk ] ";
    const std::pair<Header, std::string> cases[] = {
        {{.magic = 0x2CF5A13C}, "Header.Magic != NETWORK_DEMO_MAGIC\n"},
        {{.version = 4},
         "Header.Version < MIN_NETWORK_DEMO_VERSION. Header.Version: 4, MIN_NETWORK_DEMO_VERSION: 5\n"},
        {{.engineVersion = 24}, "EngineNetworkProtocolVersion != HISTORY_ENGINENETVERSION_LATEST\n"},
    };
    for (const auto& [header, line] : cases) {
        const HeaderRead read(header.Build());
        EXPECT_FALSE(read.good || read.ranOut);
        EXPECT_EQ(read.output, function + line);
    }
    EXPECT_EQ(HeaderRead(Header{.magic = 0x2CF5A13C}.Build()).header.Version,
              0U);  // nothing behind it was read
}

TEST(HeaderChunk, one_that_is_cut_or_counts_more_than_it_holds_runs_out) {
    for (const std::uint32_t version : {5U, 6U, 10U, 14U}) {
        Header header{.version = version};
        const Bytes whole = header.Build();
        for (std::size_t length = 0; length < whole.size(); ++length) {
            EXPECT_TRUE(
                HeaderRead(Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length))).ranOut)
                << version << " cut at " << length;
        }
    }
    Bytes counted = Header{.gameData = {}}.Build();
    counted.resize(counted.size() - 4);
    const std::int32_t most = orvel::corvane::kMaxHeaderListCount;
    for (const auto& [count, good] : {std::pair(most, true), std::pair(most + 1, false), std::pair(-1, false),
                                      std::pair(INT32_MAX, false), std::pair(INT32_MIN, false)}) {
        Writer writer;
        writer.Add(counted).I32(count);
        for (std::int32_t i = 0; i <= most; ++i) writer.Str("");
        const HeaderRead read(writer.bytes);
        EXPECT_EQ(read.ranOut, !good) << count;
        EXPECT_EQ(read.header.GameSpecificData.size(), good ? static_cast<std::size_t>(count) : 0U);
    }
}

}  // namespace
