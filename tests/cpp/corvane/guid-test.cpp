// The printed forms of a GUID.
#include "games/corvane/corvane-lib/src/guid.h"

#include <gtest/gtest.h>

namespace {

using orvel::corvane::FormatGuid;
using orvel::corvane::Guid;
using orvel::corvane::GuidFormat;

TEST(Guid, prints_in_six_forms) {
    const Guid guid{0x00ABCDEF, 0x0102A304, 0xFEDC0098, 0x70543210};
    const std::pair<int, const char*> forms[] = {
        {0, "00abcdef0102a304fedc009870543210"},
        {1, "00ABCDEF-0102-A304-FEDC-009870543210"},
        {2, "{00ABCDEF-0102-A304-FEDC-009870543210}"},
        {3, "(00ABCDEF-0102-A304-FEDC-009870543210)"},
        {4, "{0x00ABCDEF,0x0102,0xA304,{0xFE,0xDC,0x00,0x98,0x70,0x54,0x32,0x10}}"},
        {5, "00ABCDEF-0102A304-FEDC0098-70543210"},
        {6, "00abcdef0102a304fedc009870543210"},
        {-1, "00abcdef0102a304fedc009870543210"},
    };
    for (const auto& [format, text] : forms)
        EXPECT_EQ(FormatGuid(guid, static_cast<GuidFormat>(format)), text);
}

}  // namespace
