// Decryption and decompression of a chunk payload. Settings: 1 byte of flags as ReadPayload takes them, from
// bit 4 on the length of the key in 8 bytes; then the key. The rest is the payload.
#include "games/corvane/corvane-lib/src/ue4/util/ue4-binary-streams.h"
#include "lz-target.h"
#include "support/replay-builder.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Oodle_SetLogHook(&fuzz::FormatLine);
    fuzz::Settings settings({data, size});
    const std::uint32_t flags = settings.Take(1);
    std::vector<std::uint8_t> key(flags >> 4 << 3);
    for (std::uint8_t& byte : key) byte = static_cast<std::uint8_t>(settings.Take(1));

    const auto input = settings.Rest();
    const auto stream = corvane_test::FileLikeStream({input.begin(), input.end()});
    ue4::FStreamReader archive(stream.get(), CppUtilities::LittleEndian, false);
    archive.EncryptionKey = key;
    fuzz::ReadsOrFails([&] {
        const auto bytes = archive.ReadPayload(static_cast<std::uint32_t>(input.size()),
                                               static_cast<std::uint8_t>(flags & 7));
        fuzz::Require((flags & 6) != 0 || std::ranges::equal(bytes, input), "plain bytes are as stored");
    });
    return 0;
}
