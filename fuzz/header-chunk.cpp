// The payload of the header chunk, read from a file's stream.
#include "games/corvane/corvane-lib/src/header-chunk.h"

#include "fuzz-target.h"
#include "support/replay-builder.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::span input(data, size);
    const auto stream = corvane_test::FileLikeStream({input.begin(), input.end()});
    ue4::FStreamReader archive(stream.get(), CppUtilities::LittleEndian, false);
    orvel::corvane::NetworkDemoHeader header;
    fuzz::ReadsOrFails([&] {
        if (ReadNetworkDemoHeader(archive, header).empty()) HeaderObject(header).dump();
    });
    fuzz::Require(header.LevelNamesAndTimes.size() + header.GameSpecificData.size() <= size / 5 + 2,
                  "every string of a list but the last has its length and a zero in the payload");
    return 0;
}
