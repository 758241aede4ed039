#include "settings/text_file.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <limits>
#include <random>

#include "platform/utf8.h"
#include "settings/number_text.h"
#include "tests/data_table.h"
#include "tests/temporary_folder.h"

namespace skyvault::test {
namespace {

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

TEST(TextFileWriter, EscapesAndQuotesText) {
    const struct {
        const wchar_t* text;
        const char* asFirst;
        const char* asSecond;
    } cases[] = {
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
    for (const auto& c : cases) {
        TextFileWriter writer(TextEncoding::Utf8);
        writer.AddText(c.text), writer.EndLine();
        writer.AddText(L"key"), writer.AddText(c.text), writer.EndLine();
        EXPECT_EQ(writer.Bytes(), std::string("\xEF\xBB\xBF") + c.asFirst + "\r\n" + c.asSecond + "\r\n");
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
        EXPECT_TRUE(reader.Text(missing).empty() && !reader.Bool(missing));
        EXPECT_TRUE(reader.Integer(missing) == 0 && reader.Float(missing) == 0);
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
    Lines lines;
    for (int i = 0; i < 2000; ++i) {
        std::wstring text;
        for (unsigned length = random() % 8; length > 0; --length)
            text += pieces[random() % std::size(pieces)];
        if (text == L"\t") continue;  // written bare, so it reads as two empty fields
        lines.push_back({L"key", text, L"end"});
        for (const std::wstring& field : lines.back()) writer.AddText(field);
        writer.EndLine();
    }
    EXPECT_EQ(ReadLines(writer.Bytes()), lines);
}

TEST(NumberText, ReadsAndPrintsAnyNumber) {
    for (const DataRow& row : DataTable("number_text")) {
        SCOPED_TRACE(row.where);
        const std::wstring text = FromUtf8(row[1]);
        const float number = std::strtof(row[row[0] == "Print" ? 1 : 2].c_str(), nullptr);
        if (row[0] == "Integer") {
            EXPECT_EQ(std::to_string(ParseInteger(text)), row[2]);
        } else if (row[0] == "Truncated") {
            EXPECT_EQ(std::to_string(ParseTruncated(text)), row[2]);
        } else if (row[0] == "Float") {
            EXPECT_EQ(ParseFloat(text), number);
        } else {
            EXPECT_EQ(ToUtf8(FloatText(number)), row[2]);
        }
    }
    const std::wstring zeros(400, L'0');
    EXPECT_EQ(ParseFloat(L"0." + zeros + L"1e800"), std::numeric_limits<float>::max());
    EXPECT_EQ(ParseFloat(L"1" + zeros + L"e-800"), 0.0f);
    EXPECT_EQ(ParseInteger(L" \t8"), 8);
    EXPECT_GE(ParseFloat(L"1e-45"), 0.0f);
}

}  // namespace
}  // namespace skyvault::test
