// The container where it is broken, cut or resumed. What each version holds is tests/js/container.test.js's
// business.
#include "games/corvane/corvane-lib/src/ue4/local-file-replay-streamer.h"

#include <algorithm>
#include <sstream>

#include <gmock/gmock.h>

#include "support/replay-builder.h"

namespace {

using namespace corvane_test;

const std::size_t kBlockBytes = InfoBlock{}.Build().size();

// One call over bytes in memory, as the file stream behaves: it throws.
struct Container {
    explicit Container(const Bytes& bytes, Bytes key = {}, std::uint32_t resume = 0, bool keyFromFile = false)
        : resumeOffset(resume), flag(keyFromFile) {
        ue4::FStreamReader archive(FileLikeStream(bytes).release(), CppUtilities::LittleEndian, true);
        testing::internal::CaptureStdout();
        try {
            ue4::FLocalFileNetworkReplayStreamer().ReadReplayInfo(archive, info, document, resumeOffset, flag,
                                                                  std::move(key));
        } catch (char* text) {
            failure = text;
        } catch (const ue4::ReplayException&) {
            failure = "ReplayException";
        }
        output = testing::internal::GetCapturedStdout();
    }

    ue4::ReplayFileInfo info;
    nlohmann::json document;
    std::uint32_t resumeOffset;
    bool flag;
    std::string failure;  // empty: none
    std::string output;
};

Bytes File(std::initializer_list<Bytes> chunks) { return Join({InfoBlock{}.Build(), Join(chunks)}); }

// Overwrites a 32-bit field.
Bytes WithField(Bytes bytes, std::size_t offset, std::int64_t value) {
    const Bytes field = Writer().U32(static_cast<std::uint32_t>(value)).bytes;
    std::copy(field.begin(), field.end(), bytes.begin() + static_cast<std::ptrdiff_t>(offset));
    return bytes;
}

TEST(InformationBlock, the_key_in_effect_is_the_files_if_it_ever_had_one) {
    const Bytes none, zeros(16), caller = Sequence(1, 16), stored = Sequence(0, 16);
    struct Case {
        std::uint32_t version;
        Bytes fileKey, callerKey;
        bool flagBefore;
        Bytes expected;
        bool flagAfter;
    };
    const Case cases[] = {
        {6, stored, caller, false, stored, true}, {6, stored, none, true, stored, true},
        {6, zeros, caller, false, caller, false}, {6, zeros, caller, true, zeros, true},
        {6, none, caller, false, caller, false},  {6, none, caller, true, none, true},
        {5, stored, caller, false, none, false},  {5, stored, caller, true, none, true},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << "case " << &c - cases);
        const Bytes bytes = InfoBlock{.version = c.version, .key = c.fileKey}.Build();
        const Container file(bytes, c.callerKey, 0, c.flagBefore);
        EXPECT_EQ(file.info.EncryptionKey, c.expected);
        EXPECT_EQ(file.flag, c.flagAfter);
    }
}

TEST(InformationBlock, a_broken_one_fails_with_the_streams_text) {
    EXPECT_EQ(Container({}).failure, "The Replay file had no data in it.\n");
    const Bytes whole = InfoBlock{.key = Sequence(1, 16)}.Build();
    for (std::size_t length = 1; length < whole.size(); ++length) {
        const Container file(Prefix(whole, length));
        EXPECT_EQ(file.failure, "ios_base::failbit set") << length;
        EXPECT_TRUE(file.document.is_null());
    }
    const std::size_t keyCount = whole.size() - 16 - 4;
    for (const std::int64_t count : {-1LL, 17LL, 70'000LL, 0x7FFFFFFFLL, 0x80000000LL}) {
        const Container file(WithField(whole, keyCount, count), Sequence(1, 3));
        EXPECT_EQ(file.failure, "ios_base::failbit set") << count;
        EXPECT_EQ(file.info.EncryptionKey, Sequence(1, 3));  // stored before the file's was read
    }
    EXPECT_EQ(Container(WithField(whole, 20, INT32_MIN)).failure, "ReplayException");
}

TEST(ChunkTable, records_every_chunk_and_describes_the_events) {
    const Event first{.id = "a", .group = "b", .metadata = "c", .time1 = 5, .time2 = 6, .data = {1, 2, 3}};
    const Bytes bytes = File({Chunk(kData, {9}), Chunk(kHeader, Bytes(4)), first.Build(),
                              Chunk(kCleared, {7, 7}), Chunk(77, {}), Event{}.Build()});
    const Container file(bytes);
    ASSERT_EQ(file.info.Chunks.size(), 6U);
    EXPECT_EQ(file.info.HeaderChunkIndex, 1);
    EXPECT_EQ(file.info.Chunks[0].TypeOffset, static_cast<std::int64_t>(kBlockBytes));
    EXPECT_EQ(file.info.Chunks[1].DataOffset, static_cast<std::int64_t>(kBlockBytes) + 9 + 8);
    EXPECT_EQ(file.info.Chunks[3].ChunkType, 0xFFFFFFFF);
    ASSERT_EQ(file.info.Events.size(), 2U);
    const ue4::FLocalFileEventInfo& event = file.info.Events[0];
    EXPECT_EQ(std::tie(event.Id, event.Group, event.Metadata), std::tuple("a", "b", "c"));
    EXPECT_EQ(std::tuple(event.Index, event.Time1, event.Time2, event.SizeInBytes), std::tuple(0, 5U, 6U, 3));
    EXPECT_EQ(bytes[static_cast<std::size_t>(event.DataOffset)], 1);
    EXPECT_EQ(file.info.Events[1].Index, 1);
    EXPECT_EQ(file.output,
              "\n[ ue4::FLocalFileNetworkReplayStreamer::ReadReplayInfo ] "
              "ReadReplayInfo: Skipping unknown (cleared) chunk.\n\n");
    EXPECT_EQ(file.resumeOffset, bytes.size());
}

// The game may be writing while we read: a cut is no error, except inside an event's data.
TEST(ChunkTable, a_file_cut_anywhere_lists_the_chunks_before_the_cut) {
    const Bytes event = Event{.data = Bytes(5, 1)}.Build();
    const Bytes whole = File({event, Chunk(kData, Bytes(5)), Chunk(kHeader, {}), event});
    const std::size_t secondEvent = whole.size() - event.size();
    for (std::size_t length = kBlockBytes + event.size(); length <= whole.size(); ++length) {
        SCOPED_TRACE(length);
        const Container file(Prefix(whole, length));
        const bool inData = length >= whole.size() - 5 && length < whole.size();
        EXPECT_EQ(file.failure, inData ? "ReadReplayInfo: Invalid event disk size" : "");
        EXPECT_EQ(file.info.Events.size(), length == whole.size() ? 2U : 1U);
        const std::size_t headEnds[] = {kBlockBytes + event.size() + 8, secondEvent, secondEvent + 8};
        const auto heads =
            std::ranges::count_if(headEnds, [length](std::size_t end) { return end <= length; });
        EXPECT_EQ(std::ssize(file.info.Chunks), 1 + heads);
        EXPECT_EQ(file.resumeOffset, inData ? 0 : length);
    }
}

TEST(ChunkTable, a_resumed_scan_sees_only_what_was_added) {
    Bytes bytes = File({Event{}.Build(), Chunk(kHeader, {})});
    const Container first(bytes);
    const Container unchanged(bytes, {}, first.resumeOffset);
    EXPECT_TRUE(unchanged.info.Chunks.empty() && unchanged.document.contains("ReplayFileMeta"));
    bytes = Join({bytes, Event{.id = "new"}.Build()});
    const Container grown(bytes, {}, first.resumeOffset);
    ASSERT_EQ(grown.info.Events.size(), 1U);
    EXPECT_EQ(grown.info.Events[0].Id, "new");
    EXPECT_EQ(grown.resumeOffset, bytes.size());
}

// Each chunk of 12 bytes begins a UTF-16 string that all the following ones are part of.
TEST(ChunkTable, overlapping_events_cannot_multiply_a_file) {
    constexpr std::int32_t kUnits = 100'000;
    Writer table;
    for (int i = 0; i < 5000; ++i) table.U32(kEvent).I32(4).I32(-kUnits);
    const Container file(Join({InfoBlock{}.Build(), table.bytes, Bytes(std::size_t{kUnits} * 2 + 60000)}));
    EXPECT_EQ(file.failure, "");
    std::size_t kept = 0;
    for (const ue4::FLocalFileEventInfo& event : file.info.Events) kept += event.Id.size();
    EXPECT_GT(file.info.Events.size(), 1U);
    EXPECT_LT(kept, 2'000'000U);
}

// Only a stream that does not throw can get there.
TEST(ChunkTable, a_stream_that_fails_silently_is_noticed) {
    const Bytes bytes = InfoBlock{}.Build();
    ue4::FStreamReader archive(new std::istringstream(std::string(bytes.begin(), bytes.end())),
                               CppUtilities::LittleEndian, true);
    ue4::ReplayFileInfo info;
    nlohmann::json document;
    std::uint32_t resume = 0;
    bool flag = false;
    try {
        ue4::FLocalFileNetworkReplayStreamer().ReadReplayInfo(archive, info, document, resume, flag, {});
        ADD_FAILURE() << "nothing was thrown";
    } catch (char* text) {
        EXPECT_STREQ(text, "ReadReplayInfo: Archive error after parsing chunk.\n");
    }
}

}  // namespace
