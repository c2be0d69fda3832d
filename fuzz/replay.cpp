// A whole replay, as the add-on reads it from a file. Settings: 1 byte, whether the caller has a key.
#include <fstream>

#include "fuzz-target.h"
#include "games/corvane/corvane-lib/src/replay-parser.h"
#include "support/replay-builder.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const corvane_test::TemporaryFile file({});  // one for the whole run; TMPDIR says where
    fuzz::Settings settings({data, size});
    const std::vector<std::uint8_t> key((settings.Take(1) & 1) != 0 ? 16 : 0, 0x5A);
    std::ofstream(file.path, std::ios_base::binary)
        .write(reinterpret_cast<const char*>(settings.Rest().data()), std::ssize(settings.Rest()));
    fuzz::ReadsOrFails([&] {
        ue4::ResumeState resume;
        orvel::corvane::ReplayParser parser(file.WidePath());
        parser.ParseReplay(resume, key);
        const std::string text = parser.TakeText();
        fuzz::Require(nlohmann::json::parse(text).dump(1) == text, "the text is nlohmann::json's own");
    });
    return 0;
}
