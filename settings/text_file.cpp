#include "settings/text_file.h"

#include <algorithm>
#include <string_view>

#include "settings/number_text.h"

namespace skyvault {
namespace {

constexpr wchar_t kTab = L'\t';
constexpr wchar_t kQuote = L'"';

void ReplaceAll(std::wstring& text, std::wstring_view from, std::wstring_view to) {
    std::size_t found = text.find(from);
    if (found == std::wstring::npos) return;
    std::wstring replaced;
    std::size_t position = 0;
    for (; found != std::wstring::npos; found = text.find(from, position)) {
        replaced.append(text, position, found - position).append(to);
        position = found + from.size();
    }
    text = replaced.append(text, position);
}

/// Cuts the first field and the tab behind it off the line. True while more fields follow.
bool TakeField(std::wstring_view& line, std::wstring& field) {
    field.clear();
    if (line.starts_with(kQuote)) {
        const std::size_t closing = line.find(kQuote, 1);
        field = line.substr(1, closing == std::wstring_view::npos ? closing : closing - 1);
        line.remove_prefix(closing == std::wstring_view::npos ? line.size() : closing + 1);
    }
    const std::size_t tab = line.find(kTab);
    field.append(line.substr(0, tab));
    if (tab == std::wstring_view::npos) return false;
    line.remove_prefix(tab + 1);
    return true;
}

}  // namespace

bool TextFileReader::Open(const std::wstring& path) {
    *this = TextFileReader();
    return ReadTextFile(path, text_, encoding_);
}

void TextFileReader::Start(std::span<const std::byte> bytes) {
    *this = TextFileReader();
    text_ = DecodeText(bytes, encoding_);
}

/// Fields of a line beyond these are left out: a file of nothing but tabs must not fill the memory.
constexpr std::size_t kMostFields = 4096;

bool TextFileReader::NextLine() {
    fields_.clear();
    if (position_ >= text_.size()) return false;
    const std::size_t end = std::min(text_.find(L'\n', position_), text_.size());
    std::wstring_view line = std::wstring_view(text_).substr(position_, end - position_);
    position_ = end + 1;
    if (line.ends_with(L'\r')) line.remove_suffix(1);
    bool more = true;
    while (more && fields_.size() < kMostFields) more = TakeField(line, fields_.emplace_back());
    return true;
}

std::int32_t TextFileReader::FieldCount() const {
    return static_cast<std::int32_t>(fields_.size());
}

const std::wstring& TextFileReader::Raw(std::int32_t field) const {
    static const std::wstring missing;
    return field >= 0 && field < FieldCount() ? fields_[static_cast<std::size_t>(field)] : missing;
}

std::wstring TextFileReader::Text(std::int32_t field, bool unescape) const {
    std::wstring text = Raw(field);
    if (unescape) {
        ReplaceAll(text, L"<NEW LINE>", L"\r\n");
        ReplaceAll(text, L"<QUOTE>", L"\"");
        ReplaceAll(text, L"<br />", L"\r\n");
        ReplaceAll(text, L"&#34;", L"\"");
    }
    return text;
}

std::int32_t TextFileReader::Integer(std::int32_t field) const {
    return ParseInteger(Raw(field));
}

float TextFileReader::Float(std::int32_t field) const {
    return ParseFloat(Raw(field));
}

bool TextFileReader::Bool(std::int32_t field) const {
    return Raw(field) == L"Y";
}

void TextFileWriter::AddField(const std::wstring& field) {
    if (lineStarted_) text_.push_back(kTab);
    text_ += field;
    lineStarted_ = true;
}

void TextFileWriter::AddText(const std::wstring& text) {
    if (text.empty()) {
        // Unlike every other field, an empty one brings its tab even to the start of a line.
        lineStarted_ = true;
        AddField(L"\"\"");
        return;
    }
    std::wstring field = text;
    ReplaceAll(field, L"\r\n", L"<br />");
    ReplaceAll(field, L"\"", L"&#34;");
    const bool quoted = field.find_first_of(L" \t") != std::wstring::npos && field != L"\t";
    AddField(quoted ? kQuote + field + kQuote : field);
}

void TextFileWriter::AddInteger(std::int32_t value) {
    AddField(IntegerText(value));
}

void TextFileWriter::AddFloat(float value) {
    AddField(FloatText(value));
}

void TextFileWriter::AddBool(bool value) {
    AddField(value ? L"Y" : L"N");
}

void TextFileWriter::EndLine() {
    text_ += L"\r\n";
    lineStarted_ = false;
}

std::string TextFileWriter::Bytes() const {
    return EncodeText(text_, encoding_);
}

Outcome TextFileWriter::Save(const std::wstring& path) const {
    return WriteTextFile(path, text_, encoding_);
}

}  // namespace skyvault
