// The container: information block and chunk table. Settings: 1 byte of flags (1 the resume offset follows, 4
// bytes; 2 a key came from the file before; 4 the caller has a key). The rest is the file.
#include "fuzz-target.h"
#include "games/corvane/corvane-lib/src/ue4/local-file-replay-streamer.h"
#include "support/replay-builder.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Settings settings({data, size});
    const std::uint32_t flags = settings.Take(1);
    std::uint32_t resumeOffset = (flags & 1) != 0 ? settings.Take(4) : 0;
    bool keyFromFile = (flags & 2) != 0;
    const std::vector<std::uint8_t> key((flags & 4) != 0 ? 16 : 0, 0x5A);

    const auto input = settings.Rest();
    const auto stream = corvane_test::FileLikeStream({input.begin(), input.end()});
    ue4::FStreamReader archive(stream.get(), CppUtilities::LittleEndian, false);
    ue4::ReplayFileInfo info;
    nlohmann::json document;
    const bool good = fuzz::ReadsOrFails([&] {
        ue4::FLocalFileNetworkReplayStreamer().ReadReplayInfo(archive, info, document, resumeOffset,
                                                              keyFromFile, key);
    });
    fuzz::ReadsOrFails([&] { document.dump(); });

    fuzz::Require(info.bIsValid == good, "a container is valid exactly if nothing failed");
    fuzz::Require(!good || resumeOffset == input.size(), "the next scan starts at the end of the file");
    fuzz::Require(info.Chunks.size() <= input.size() / 8, "every chunk has its 8 bytes in the file");
    for (const ue4::FLocalFileEventInfo& event : info.Events) {
        fuzz::Require(event.SizeInBytes >= 0 &&
                          event.DataOffset + event.SizeInBytes <= static_cast<std::int64_t>(input.size()),
                      "event data lies within the file");
    }
    return 0;
}
