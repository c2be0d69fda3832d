// The platform functions: both systems must give the same for the same wide string.
#include "util/platform/platform.h"

#include <gtest/gtest.h>

namespace platform = orvel::util::platform;

TEST(WideToUtf8, pairs_are_joined_and_unpaired_surrogates_replaced) {
    const struct {
        std::wstring units;
        std::string text;
    } cases[] = {
        {{}, ""},
        {L"a\u007F\u0080\u07FF\u0800\uFFFF", "a\x7F\xC2\x80\xDF\xBF\xE0\xA0\x80\xEF\xBF\xBF"},
        {{wchar_t{0xD83D}, wchar_t{0xDE00}}, "\xF0\x9F\x98\x80"},
        {{wchar_t{0xD83D}}, "\xEF\xBF\xBD"},
        {{wchar_t{0xDE00}, L'x'}, "\xEF\xBF\xBDx"},
        {{wchar_t{0xD83D}, L'x'}, "\xEF\xBF\xBDx"},
        {{wchar_t{0xD83D}, wchar_t{0xD83D}, wchar_t{0xDE00}}, "\xEF\xBF\xBD\xF0\x9F\x98\x80"},
        {std::wstring(2, L'\0'), std::string(2, '\0')},
    };
    for (const auto& c : cases) EXPECT_EQ(platform::WideToUtf8(c.units), c.text);
}

TEST(WideFromPath, every_name_survives_the_way_there_and_back) {
    for (const std::wstring& units :
         {std::wstring(L"\u00E9\u4E2D.replay"), std::wstring{wchar_t{0xD83D}, wchar_t{0xDE00}},
          std::wstring{L'x', wchar_t{0xDCFF}, L'y'}}) {
        EXPECT_EQ(platform::WideFromPath(platform::PathFromWide(units)), units);
    }
}
