#include "settings/text_file.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

#include "platform/utf8.h"
#include "settings/number_text.h"
#include "tests/temporary_folder.h"

namespace skyvault::test {
namespace {

using test::TemporaryFolder;

using Lines = std::vector<std::vector<std::wstring>>;

Lines ReadLines(std::string_view bytes, bool unescape = true) {
    TextFileReader reader;
    reader.Start(std::as_bytes(std::span(bytes)));
    Lines lines;
    while (reader.NextLine()) {
        auto& fields = lines.emplace_back();
        for (std::int32_t i = 0; i < reader.FieldCount(); ++i) fields.push_back(reader.Text(i, unescape));
    }
    return lines;
}

/// What the writer makes of a line, without the mark and the line end.
template <typename Write>
std::string WrittenLine(Write write) {
    const TemporaryFolder folder;
    TextFileWriter writer(TextEncoding::Utf8);
    write(writer);
    writer.EndLine();
    EXPECT_TRUE(writer.Save(folder.Path(L"line.txt")));
    std::string bytes = folder.Read(L"line.txt");
    EXPECT_TRUE(bytes.starts_with("\xEF\xBB\xBF") && bytes.ends_with("\r\n")) << bytes;
    return bytes.substr(3, bytes.size() - 5);
}

TEST(TextFileWriter, EscapesAndQuotesText) {
    struct Case {
        const wchar_t* text;
        const char* asFirst;
        const char* asSecond;
    };
    const Case cases[] = {
        {L"plain", "plain", "key\tplain"},
        {L"C:\\My Photos", "\"C:\\My Photos\"", "key\t\"C:\\My Photos\""},
        {L"", "\t\"\"", "key\t\"\""},
        {L"\t", "\t", "key\t\t"},
        {L"\t\t", "\"\t\t\"", "key\t\"\t\t\""},
        {L"a\tb", "\"a\tb\"", "key\t\"a\tb\""},
        {L"a\r\nb", "\"a<br />b\"", "key\t\"a<br />b\""},
        {L"a\nb", "a\nb", "key\ta\nb"},
        {L"\"x\"", "&#34;x&#34;", "key\t&#34;x&#34;"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.asFirst);
        EXPECT_EQ(WrittenLine([&](TextFileWriter& w) { w.AddText(c.text); }), c.asFirst);
        EXPECT_EQ(WrittenLine([&](TextFileWriter& w) { w.AddText(L"key"), w.AddText(c.text); }), c.asSecond);
    }
}

TEST(TextFileReader, CutsLinesIntoFields) {
    const struct {
        const char* bytes;
        Lines lines;
    } cases[] = {
        {"", {}},
        {"\r\n", {{L""}}},
        {"a", {{L"a"}}},
        {"a\tb\r\nc\r\n", {{L"a", L"b"}, {L"c"}}},
        {"a\nb", {{L"a"}, {L"b"}}},
        {"a\r\r\nb", {{L"a\r"}, {L"b"}}},
        {"a\t", {{L"a", L""}}},
        {"\ta", {{L"", L"a"}}},
        {"\t\t", {{L"", L"", L""}}},
        {"k\t\"a b\"\tc", {{L"k", L"a b", L"c"}}},
        {"k\t\"a\tb\"\tc", {{L"k", L"a\tb", L"c"}}},
        {"k\t\"\"\tc", {{L"k", L"", L"c"}}},
        {"k\t\"\"", {{L"k", L""}}},
        {"k\t\"", {{L"k", L""}}},
        {"k\t\"a\tb\r\nc", {{L"k", L"a\tb"}, {L"c"}}},
        {"k\t\"a\"b\tc", {{L"k", L"ab", L"c"}}},
        {"k\ta\"b\tc\"", {{L"k", L"a\"b", L"c\""}}},
        {"x<NEW LINE>y<QUOTE>z<br />&#34;", {{L"x\r\ny\"z\r\n\""}}},
        {"<NEW &#34;<NEW LINE", {{L"<NEW \"<NEW LINE"}}},
    };
    for (const auto& c : cases) EXPECT_EQ(ReadLines(c.bytes), c.lines) << c.bytes;
    EXPECT_EQ(ReadLines("a<br />&#34;", false), (Lines{{L"a<br />&#34;"}}));
}

TEST(TextFileReader, MissingFieldsReadAsNothing) {
    TextFileReader reader;
    reader.Start(std::as_bytes(std::span("key\tY\t\xC3\xA4 1\t 12", 15)));
    ASSERT_TRUE(reader.NextLine());
    EXPECT_TRUE(reader.Bool(1));
    for (const std::int32_t missing : {-1, 4, std::numeric_limits<std::int32_t>::max()}) {
        EXPECT_EQ(reader.Text(missing), L"");
        EXPECT_EQ(reader.Integer(missing), 0);
        EXPECT_EQ(reader.Float(missing), 0.0f);
        EXPECT_FALSE(reader.Bool(missing));
    }
    EXPECT_FALSE(reader.NextLine());
    EXPECT_EQ(reader.FieldCount(), 0);
    EXPECT_FALSE(reader.NextLine());
}

TEST(TextFile, EveryEncodingReadsBack) {
    // ä, a character beyond 16 bits, and a euro sign; the system's code page may lack all but the first.
    const std::wstring plain = L"\u00e4 b";
    const std::wstring wide = plain + L" \U0001F600\u20AC";
    const struct {
        TextEncoding encoding;
        const std::wstring& text;
        std::string mark, start;
    } cases[] = {
        {TextEncoding::System, plain, "", ""},
        {TextEncoding::Utf16Le, wide, "\xFF\xFE",
         std::string("\"\0\xE4\0 \0b\0 \0\x3D\xD8\x00\xDE\xAC\x20", 16)},
        {TextEncoding::Utf16Be, wide, "\xFE\xFF",
         std::string("\0\"\0\xE4\0 \0b\0 \xD8\x3D\xDE\x00\x20\xAC", 16)},
        {TextEncoding::Utf8, wide, "\xEF\xBB\xBF", "\"\xC3\xA4 b \xF0\x9F\x98\x80\xE2\x82\xAC"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(static_cast<int>(c.encoding));
        const TemporaryFolder folder;
        TextFileWriter writer(c.encoding);
        writer.AddText(c.text);
        writer.EndLine();
        ASSERT_TRUE(writer.Save(folder.Path(L"\u00e4.txt")));
        EXPECT_TRUE(folder.Read(L"\u00e4.txt").starts_with(c.mark + c.start));
        TextFileReader reader;
        ASSERT_TRUE(reader.Open(folder.Path(L"\u00e4.txt")));
        EXPECT_EQ(reader.Encoding(), c.encoding);
        ASSERT_TRUE(reader.NextLine());
        EXPECT_EQ(reader.Text(0), c.text);
        EXPECT_FALSE(reader.NextLine());
    }
}

TEST(TextFile, UnpairedSurrogatesStayWhereWideTextIsUtf16) {
    const Lines lines = ReadLines(std::string_view("\xFF\xFEk\0\t\0\x00\xD8\t\0\xDE\xDC\x00\xD8", 14));
    ASSERT_EQ(lines.size(), 1u);
    ASSERT_EQ(lines[0].size(), 3u);
    EXPECT_EQ(lines[0][0], L"k");
    const bool wideIsUtf16 = sizeof(wchar_t) == 2;  // there a path with such a name must survive
    EXPECT_EQ(lines[0][1], std::wstring(1, static_cast<wchar_t>(wideIsUtf16 ? 0xD800 : 0xFFFD)));
}

TEST(TextFile, AnyTextReadsBack) {
    const std::wstring pieces[] = {L"a", L" ",  L"\t",     L"\"",         L"\r\n",
                                   L"<", L"&#", L"\u00e9", L"\U0001F600", L"\\"};
    std::mt19937 random(7);
    TextFileWriter writer(TextEncoding::Utf16Le);
    std::vector<std::wstring> texts;
    for (int i = 0; i < 2000; ++i) {
        std::wstring text;
        for (unsigned length = random() % 8; length > 0; --length)
            text += pieces[random() % std::size(pieces)];
        if (text == L"\t") continue;  // written bare, so it reads as two empty fields
        texts.push_back(text);
        writer.AddInteger(i);
        writer.AddText(text);
        writer.AddText(L"end");
        writer.EndLine();
    }
    const TemporaryFolder folder;
    ASSERT_TRUE(writer.Save(folder.Path(L"texts.txt")));
    TextFileReader reader;
    ASSERT_TRUE(reader.Open(folder.Path(L"texts.txt")));
    for (const std::wstring& text : texts) {
        ASSERT_TRUE(reader.NextLine());
        ASSERT_EQ(reader.FieldCount(), 3) << ToUtf8(text);
        EXPECT_EQ(reader.Text(1), text) << ToUtf8(text);
    }
    EXPECT_FALSE(reader.NextLine());
}

TEST(NumberText, ParsesIntegers) {
    const struct {
        const wchar_t* text;
        std::int32_t value;
    } cases[] = {
        {L"0", 0},
        {L"12", 12},
        {L"-7", -7},
        {L"+7", 7},
        {L" \t8", 8},
        {L"12abc", 12},
        {L"12.9", 12},
        {L"007", 7},
        {L"", 0},
        {L" ", 0},
        {L"-", 0},
        {L"+", 0},
        {L"--5", 0},
        {L"+-5", 0},
        {L"5-3", 5},
        {L"abc", 0},
        {L"0x10", 0},
        {L"nan", 0},
        {L"\uff11", 0},
        {L"2147483647", 2147483647},
        {L"2147483648", 2147483647},
        {L"-2147483649", -2147483647 - 1},
        {L"99999999999999999999999", 2147483647},
        {L"-99999999999999999999999x", -2147483647 - 1},
    };
    for (const auto& c : cases) EXPECT_EQ(ParseInteger(c.text), c.value) << ToUtf8(c.text);
}

TEST(NumberText, ParsesFloatsToFiniteValues) {
    constexpr float kMost = std::numeric_limits<float>::max();
    const std::wstring zeros(400, L'0');
    const struct {
        std::wstring text;
        float value;
    } cases[] = {
        {L"0.2", 0.2f},
        {L"3", 3.0f},
        {L"-1.5", -1.5f},
        {L"+1.5", 1.5f},
        {L".5", 0.5f},
        {L"5.", 5.0f},
        {L"1e3", 1000.0f},
        {L"2.5E-1", 0.25f},
        {L"1,5", 1.0f},
        {L"1.5abc", 1.5f},
        {L"1e", 1.0f},
        {L"1.2.3", 1.2f},
        {L"  4", 4.0f},
        {L"", 0.0f},
        {L"x", 0.0f},
        {L"-", 0.0f},
        {L".", 0.0f},
        {L"nan", 0.0f},
        {L"-nan", 0.0f},
        {L"inf", 0.0f},
        {L"-infinity", 0.0f},
        {L"0x10", 0.0f},
        {L"1e39", kMost},
        {L"-1e39", -kMost},
        {L"1e99999999999999999999", kMost},
        {L"1" + zeros, kMost},
        {L"0." + zeros + L"1", 0.0f},
        {L"0." + zeros + L"1e800", kMost},
        {L"1" + zeros + L"e-800", 0.0f},
        {L"1e-99999999999999999999", 0.0f},
        {L"0e99999999999999999999", 0.0f},
        {L"340282346638528859811704183484516925440", kMost},
    };
    for (const auto& c : cases) EXPECT_EQ(ParseFloat(c.text), c.value) << ToUtf8(c.text);
    EXPECT_GE(ParseFloat(L"1e-45"), 0.0f);
}

TEST(NumberText, TruncatesNumbersToIntegers) {
    const struct {
        const wchar_t* text;
        std::int32_t value;
    } cases[] = {
        {L"12.9", 12},
        {L"-12.9", -12},
        {L"16777217", 16777217},
        {L"1.5e9", 1500000000},
        {L"2147483647", 2147483647},
        {L"2147483648", 2147483647},
        {L"-1e30", -2147483647 - 1},
        {L"1e39", 2147483647},
        {L"0.99", 0},
        {L"nan", 0},
        {L"", 0},
        {L"twelve", 0},
    };
    for (const auto& c : cases) EXPECT_EQ(ParseTruncated(c.text), c.value) << ToUtf8(c.text);
}

TEST(NumberText, PrintsFloatsWithUpToSixDecimals) {
    const struct {
        float value;
        const wchar_t* text;
    } cases[] = {
        {0.2f, L"0.2"},
        {3.0f, L"3"},
        {0.7f, L"0.7"},
        {1.05f, L"1.05"},
        {10.0f, L"10"},
        {100.5f, L"100.5"},
        {-2.5f, L"-2.5"},
        {0.0f, L"0"},
        {-0.0f, L"0"},
        {-0.0000001f, L"0"},
        {0.0000006f, L"0.000001"},
        {1.0f / 3.0f, L"0.333333"},
        {-1000000.0f, L"-1000000"},
        {std::numeric_limits<float>::max(), L"340282346638528859811704183484516925440"},
        {std::numeric_limits<float>::infinity(), L"0"},
        {std::nanf(""), L"0"},
    };
    for (const auto& c : cases) EXPECT_EQ(FloatText(c.value), c.text);
}

}  // namespace
}  // namespace skyvault::test
