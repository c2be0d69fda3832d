// The container: information block and chunk table, read through a window as from a file and through any
// other stream. Settings: 1 byte of flags (1 the resume offset follows, 4 bytes; 2 a key came from the file
// before; 4 the caller has a key). The rest is the file.
#include "fuzz-target.h"
#include "games/corvane/corvane-lib/src/ue4/local-file-replay-streamer.h"
#include "support/replay-builder.h"
#include "util/window-buf.h"

namespace {

struct Outcome {
    bool good = false;
    ue4::ResumeState resume;
    ue4::ReplayFileInfo info;
    std::string meta;

    bool operator==(const Outcome& other) const {
        const auto isSame = [](const auto& a, const auto& b) {
            return a.Id == b.Id && a.Metadata == b.Metadata && a.DataOffset == b.DataOffset;
        };
        return good == other.good && resume.Offset == other.resume.Offset && meta == other.meta &&
               info.Chunks.size() == other.info.Chunks.size() &&
               std::ranges::equal(info.Events, other.info.Events, isSame);
    }
};

Outcome Run(std::istream& stream, const std::vector<std::uint8_t>& key, ue4::ResumeState resume) {
    Outcome outcome;
    outcome.resume = resume;
    nlohmann::json document;
    ue4::FStreamReader archive(&stream, CppUtilities::LittleEndian, false);
    ue4::FLocalFileNetworkReplayStreamer streamer(archive, document);
    outcome.good = fuzz::ReadsOrFails([&] { streamer.ReadReplayInfo(key, outcome.resume); });
    outcome.info = streamer.Info();
    fuzz::ReadsOrFails([&] { outcome.meta = document.dump(); });
    return outcome;
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Settings settings({data, size});
    const std::uint32_t flags = settings.Take(1);
    ue4::ResumeState resume;
    if ((flags & 1) != 0) resume.Offset = settings.Take(4);
    resume.IsKeyFromFile = (flags & 2) != 0;
    const std::vector<std::uint8_t> key((flags & 4) != 0 ? 16 : 0, 0x5A);

    const auto input = settings.Rest();
    const Outcome outcome = Run(*corvane_test::FileLikeStream({input.begin(), input.end()}), key, resume);
    orvel::util::WindowBuf window(
        [&](std::int64_t position, char* to, std::size_t count) {
            const auto from = input.subspan(std::min(static_cast<std::size_t>(position), input.size()));
            const auto bytes = from.first(std::min(count, from.size()));
            std::ranges::copy(bytes, to);
            return std::ssize(bytes);
        },
        std::ssize(input));
    std::istream stream(&window);
    stream.exceptions(std::ios_base::failbit | std::ios_base::badbit);
    // At a position past the end the other stream fails at once, the window only when it is read.
    fuzz::Require(outcome == Run(stream, key, resume) || resume.Offset > input.size(),
                  "a window changes nothing");

    const ue4::ReplayFileInfo& info = outcome.info;
    fuzz::Require(info.bIsValid == outcome.good, "a container is valid exactly if nothing failed");
    fuzz::Require(!outcome.good || outcome.resume.Offset == input.size(),
                  "the next scan starts at the end of the file");
    fuzz::Require(info.Chunks.size() <= input.size() / 8, "every chunk has its 8 bytes in the file");
    for (const ue4::FLocalFileEventInfo& event : info.Events) {
        fuzz::Require(event.SizeInBytes >= 0 &&
                          event.DataOffset + event.SizeInBytes <= static_cast<std::int64_t>(input.size()),
                      "event data lies within the file");
    }
    return 0;
}
