#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

#include "platform/clock.h"
#include "platform/debug_line.h"
#include "platform/path_text.h"
#include "platform/text_case.h"
#include "platform/utf8.h"

namespace skyvault {
namespace {

TEST(TextCase, IsTheSystemsForLettersBeyondAscii) {
    EXPECT_EQ(UpperCase(L"Panor\u00e4me \u00ff \u03c9 \u0434.jpg1"),
              L"PANOR\u00c4ME \u0178 \u03a9 \u0414.JPG1");
    EXPECT_EQ(LowerCase(L"PANOR\u00c4ME \u0178 \u03a9 \u0414.JPG1"),
              L"panor\u00e4me \u00ff \u03c9 \u0434.jpg1");
}

TEST(Utf8, EveryCharacterOfUnicodeComesBack) {
    std::u16string all;
    for (char32_t c = 1; c <= 0x10FFFF; c += c < 0x3000 ? 1 : 61) {
        if (c >= 0xD800 && c < 0xE000) continue;
        if (c < 0x10000) {
            all += static_cast<char16_t>(c);
        } else {
            all += static_cast<char16_t>(0xD7C0 + (c >> 10));
            all += static_cast<char16_t>(0xDC00 + (c & 0x3FF));
        }
    }
    const std::wstring wide = FromUtf16(all);
    EXPECT_EQ(FromUtf8(ToUtf8(wide)), wide);
    EXPECT_EQ(ToUtf16(wide), all);
    EXPECT_EQ(ToUtf8(L"a\u00e9\u20ac\U0001F600"), "a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80");
}

TEST(Utf8, DamageBecomesReplacementCharacters) {
    const struct {
        std::string bytes;
        std::wstring text;
    } rows[] = {
        {"a\x80z", L"a\uFFFDz"},                            // a lone continuation byte
        {"\xC0\xAF", L"\uFFFD\uFFFD"},                      // overlong
        {"\xE0\x9F\xBF", L"\uFFFD\uFFFD\uFFFD"},            // overlong, three bytes
        {"\xED\xA0\x80", L"\uFFFD\uFFFD\uFFFD"},            // a surrogate
        {"\xF4\x90\x80\x80", L"\uFFFD\uFFFD\uFFFD\uFFFD"},  // beyond the last character
        {"\xE2\x82", L"\uFFFD"},                            // cut short by the end
        {"\xF0\x9F\x98!", L"\uFFFD!"},                      // cut short by another character
        {"\xFF\xC3\xA9", L"\uFFFD\u00e9"},                  // and what follows is read again
        {std::string("a\0b", 3), std::wstring(L"a\0b", 3)},
    };
    for (const auto& row : rows)
        EXPECT_EQ(FromUtf8(row.bytes), row.text) << testing::PrintToString(row.bytes);

    EXPECT_EQ(FromUtf16(u"a\xD800z"), L"a\uFFFDz");
    EXPECT_EQ(FromUtf16(u"\xDC00\xD83D\xDE00\xD83D"), L"\uFFFD\U0001F600\uFFFD");
    const std::wstring lone{L'a', static_cast<wchar_t>(0xD800)};
    EXPECT_EQ(ToUtf8(lone), "a\xEF\xBF\xBD");
}

TEST(PathText, IsCutAtTheLastSeparatorAndFullStop) {
    const struct {
        std::wstring path, name, folder, extension, without;
    } rows[] = {
        {L"C:\\Photos\\pano.jpg", L"pano.jpg", L"C:\\Photos", L"JPG", L"C:\\Photos\\pano"},
        {L"/home/user/a.b.Tiff", L"a.b.Tiff", L"/home/user", L"TIFF", L"/home/user/a.b"},
        {L"C:pano.tga", L"pano.tga", L"", L"TGA", L"C:pano"},
        {L"C:\\mixed/slashes\\x", L"x", L"C:\\mixed/slashes", L"", L"C:\\mixed/slashes\\x"},
        {L"C:\\v1.2\\pano", L"pano", L"C:\\v1.2", L"2\\PANO", L"C:\\v1.2\\pano"},
        {L"pano", L"pano", L"", L"", L"pano"},
        {L"pano.", L"pano.", L"", L"", L"pano"},
        {L"folder/", L"", L"folder", L"", L"folder/"},
        {L"", L"", L"", L"", L""},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(ToUtf8(row.path));
        EXPECT_EQ(FileNamePart(row.path), row.name);
        EXPECT_EQ(FolderPart(row.path), row.folder);
        EXPECT_EQ(UpperExtension(row.path), row.extension);
        EXPECT_EQ(WithoutExtension(row.path), row.without);
    }
}

TEST(PathText, JoiningNeverDoublesOrLosesASeparator) {
    const std::wstring s(1, kPathSeparator);
    EXPECT_EQ(JoinPath(L"a", L"b"), L"a" + s + L"b");
    EXPECT_EQ(JoinPath(L"a\\", L"b"), L"a\\b");
    EXPECT_EQ(JoinPath(L"a/", L"/b"), L"a/b");
    EXPECT_EQ(JoinPath(L"a", s + L"b"), L"a" + s + L"b");
    EXPECT_EQ(JoinPath(L"/", L"b"), L"/b");
    EXPECT_EQ(JoinPath(L"", L"b"), L"b");
}

TEST(DebugLine, ACaptureSeesOnlyItsOwnTime) {
    {
        const DebugLineCapture first;
        DebugLine(L"one\n");
        DebugLine(L"two\n");
        EXPECT_EQ(first.Text(), L"one\ntwo\n");
    }
    const DebugLineCapture second;
    EXPECT_EQ(second.Text(), L"");
}

TEST(Clock, SleepingTakesAtLeastItsTime) {
    const std::uint32_t start = MillisecondClock();
    SleepMilliseconds(60);
    const std::uint32_t elapsed = MillisecondClock() - start;
    EXPECT_GE(elapsed, 55u);
    EXPECT_LT(elapsed, 5000u);
}

}  // namespace
}  // namespace skyvault
