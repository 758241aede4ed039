#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/debug_line.h"
#include "platform/path_text.h"
#include "platform/system_text.h"
#include "platform/utf8.h"
#include "tests/data_table.h"

namespace skyvault {
namespace {

TEST(TextCase, IsTheSystemsForLettersBeyondAscii) {
    const std::wstring upper = L"PANOR\u00c4ME \u0178 \u03a9 \u0414.JPG1";
    const std::wstring lower = L"panor\u00e4me \u00ff \u03c9 \u0434.jpg1";
    EXPECT_EQ(UpperCase(L"Panor\u00e4me \u00ff \u03c9 \u0434.jpg1"), upper);
    EXPECT_EQ(LowerCase(upper), lower);
}

TEST(Utf8, EveryCharacterOfUnicodeComesBack) {
    std::u16string all;
    for (char32_t c = 1; c <= 0x10FFFF; c += c < 0x3000 ? 1 : 61) {
        if (c >= 0xD800 && c < 0xE000) continue;
        if (c >= 0x10000) all += static_cast<char16_t>(0xD7C0 + (c >> 10));
        all += static_cast<char16_t>(c < 0x10000 ? c : 0xDC00 + (c & 0x3FF));
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
    EXPECT_EQ(FromUtf16(u"\xDC00\xD83D\xDE00\xD83Dz\xD83D"), L"\uFFFD\U0001F600\uFFFDz\uFFFD");
    EXPECT_EQ(ToUtf8(std::wstring{L'a', static_cast<wchar_t>(0xD800)}), "a\xEF\xBF\xBD");
}

TEST(PathText, IsCutAtTheLastSeparatorAndFullStop) {
    for (const DataRow& row : DataTable("path_text")) {
        SCOPED_TRACE(row.where);
        const std::wstring path = FromUtf8(row[0]);
        EXPECT_EQ(ToUtf8(FileNamePart(path)), row[1]);
        EXPECT_EQ(ToUtf8(FolderPart(path)), row[2]);
        EXPECT_EQ(ToUtf8(UpperExtension(path)), row[3]);
        EXPECT_EQ(ToUtf8(WithoutExtension(path)), row[4]);
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
    for (const wchar_t* const line : {L"one\n", L"two\n"}) {
        const DebugLineCapture capture;
        DebugLine(line);
        EXPECT_EQ(capture.Text(), line);
    }
}

}  // namespace
}  // namespace skyvault
