#include "settings/text_file.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <limits>

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

TEST(TextFile, LinesAreCutIntoFieldsAndTextsQuoted) {
    for (const DataRow& row : DataTable("text_lines")) {
        SCOPED_TRACE(row.where);
        if (row[0] == "write") {
            TextFileWriter writer(TextEncoding::Utf8);
            writer.AddText(FromUtf8(row.Text(1))), writer.EndLine();
            writer.AddText(L"key"), writer.AddText(FromUtf8(row.Text(1))), writer.EndLine();
            EXPECT_EQ(writer.Bytes(), "\xEF\xBB\xBF" + row.Text(2) + "\r\nkey\t" + row.Text(3) + "\r\n");
            continue;
        }
        std::wstring read;
        for (const auto& fields : ReadLines(row.Text(1))) {
            for (const std::wstring& field : fields) read += field + L',';
            read += L';';
        }
        EXPECT_EQ(ToUtf8(read), row.Text(2));
    }
    EXPECT_EQ(ReadLines("a<br />&#34;", false), (Lines{{L"a<br />&#34;"}}));
}

TEST(TextFile, EveryEncodingReadsBack) {
    // ä, a character beyond 16 bits, and a euro sign; the system's code page may lack all but the first.
    const std::wstring plain = L"\u00e4 b", wide = plain + L" \U0001F600\u20AC";
    for (const auto& [encoding, text, start] :
         {std::tuple{TextEncoding::System, plain, std::string("\"")},
          {TextEncoding::Utf16Le, wide,
           std::string("\xFF\xFE\"\0\xE4\0 \0b\0 \0\x3D\xD8\x00\xDE\xAC\x20", 18)},
          {TextEncoding::Utf16Be, wide,
           std::string("\xFE\xFF\0\"\0\xE4\0 \0b\0 \xD8\x3D\xDE\x00\x20\xAC", 18)},
          {TextEncoding::Utf8, wide, "\xEF\xBB\xBF\"\xC3\xA4 b \xF0\x9F\x98\x80\xE2\x82\xAC"}}) {
        SCOPED_TRACE(static_cast<int>(encoding));
        const TemporaryFolder folder;
        TextFileWriter writer(encoding);
        writer.AddText(text), writer.EndLine();
        ASSERT_TRUE(writer.Save(folder / L"\u00e4.txt").IsDone());
        EXPECT_TRUE(folder.Read(L"\u00e4.txt").starts_with(start));
        TextFileReader reader;
        ASSERT_TRUE(reader.Open(folder / L"\u00e4.txt") && reader.NextLine());
        EXPECT_EQ(reader.Text(0), text);
        EXPECT_FALSE(reader.NextLine());
    }
}

TEST(TextFile, UnpairedSurrogatesStayWhereWideTextIsUtf16) {
    const bool wideIsUtf16 = sizeof(wchar_t) == 2;  // there a path with such a name must survive
    const auto kept = [&](int c) { return static_cast<wchar_t>(wideIsUtf16 ? c : 0xFFFD); };
    EXPECT_EQ(ReadLines(std::string_view("\xFF\xFEk\0\t\0\x00\xD8\t\0\xDE\xDC\x00\xD8", 14)),
              (Lines{{L"k", {kept(0xD800)}, {kept(0xDCDE), kept(0xD800)}}}));
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
