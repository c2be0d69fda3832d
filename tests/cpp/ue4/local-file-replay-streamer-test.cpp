// The container's key, its chunk table, and resuming. tests/js/container.test.js tests the fields of each
// version, tests/cpp/faults/ files that are cut or changed.
#include "games/corvane/corvane-lib/src/ue4/local-file-replay-streamer.h"

#include <gmock/gmock.h>

#include "support/replay-builder.h"

namespace {

using namespace corvane_test;

const std::size_t kBlockBytes = InfoBlock{}.Build().size();

// One call over bytes in memory, which throw as a file does.
struct Container {
    explicit Container(const Bytes& bytes, Bytes key = {}, ue4::ResumeState before = {},
                       std::ios_base::iostate thrown = std::ios_base::failbit)
        : resume(before) {
        auto stream = FileLikeStream(bytes);
        stream->exceptions(thrown);
        ue4::FStreamReader archive(stream.get(), CppUtilities::LittleEndian, false);
        ue4::FLocalFileNetworkReplayStreamer streamer(archive, document);
        testing::internal::CaptureStdout();
        try {
            streamer.ReadReplayInfo(std::move(key), resume);
        } catch (char* text) {
            failure = text;
        }
        info = streamer.Info();
        output = testing::internal::GetCapturedStdout();
    }

    ue4::ReplayFileInfo info;
    nlohmann::json document;
    ue4::ResumeState resume;
    std::string failure;  // empty: none
    std::string output;
};

Bytes File(std::initializer_list<Bytes> chunks) { return Join({InfoBlock{}.Build(), Join(chunks)}); }

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
        const Container file(bytes, c.callerKey, {.Offset = 0, .IsKeyFromFile = c.flagBefore});
        EXPECT_EQ(file.info.EncryptionKey, c.expected);
        EXPECT_EQ(file.resume.IsKeyFromFile, c.flagAfter);
    }
}

TEST(ChunkTable, records_every_chunk_and_where_events_lie) {
    const Event event{.id = "a", .group = "b", .metadata = "c", .time1 = 5, .time2 = 6, .data = {1, 2, 3}};
    const Bytes bytes = File({Chunk(kData, {9}), Chunk(kHeader, Bytes(4)), event.Build(), Chunk(77, {})});
    const Container file(bytes);
    ASSERT_EQ(file.info.Chunks.size(), 4U);
    EXPECT_EQ(file.info.HeaderChunkIndex, 1);
    EXPECT_EQ(file.info.Chunks[1].TypeOffset, static_cast<std::int64_t>(kBlockBytes) + 9);
    EXPECT_EQ(file.info.Chunks[1].DataOffset, static_cast<std::int64_t>(kBlockBytes) + 9 + 8);
    ASSERT_EQ(file.info.Events.size(), 1U);
    const ue4::FLocalFileEventInfo& found = file.info.Events[0];
    EXPECT_EQ(std::tie(found.Id, found.Group, found.Metadata), std::tuple("a", "b", "c"));
    EXPECT_EQ(std::tuple(found.Index, found.Time1, found.Time2, found.SizeInBytes), std::tuple(0, 5U, 6U, 3));
    EXPECT_EQ(bytes[static_cast<std::size_t>(found.DataOffset)], 1);
    EXPECT_EQ(file.info.TableEnd, std::ssize(bytes));
}

TEST(ChunkTable, a_resumed_scan_sees_only_what_was_added) {
    Bytes bytes = File({Event{}.Build(), Chunk(kHeader, {})});
    const Container first(bytes);
    const Container unchanged(bytes, {}, first.resume);
    EXPECT_TRUE(unchanged.info.Chunks.empty() && unchanged.document.contains("ReplayFileMeta"));
    bytes = Join({bytes, Event{.id = "new"}.Build()});
    const Container grown(bytes, {}, first.resume);
    ASSERT_EQ(grown.info.Events.size(), 1U);
    EXPECT_EQ(grown.info.Events[0].Id, "new");
    EXPECT_EQ(grown.resume.Offset, bytes.size());
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
    Bytes cut = InfoBlock{}.Build();
    cut.resize(cut.size() + 4);
    EXPECT_EQ(Container(cut, {}, {}, std::ios_base::goodbit).failure,
              "ReadReplayInfo: Archive error after parsing chunk.\n");
}

}  // namespace
