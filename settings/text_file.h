// Tab-separated text files: one record per line, CR LF, four encodings, and the program's own escapes.
//
// Writing a text field: CR LF becomes "<br />", a double quote "&#34;"; the field is enclosed in double
// quotes when it holds a space or a tab (and is not exactly one tab) or is empty.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace skyvault {

enum class TextEncoding : std::int32_t {
    System = 1,   ///< 8-bit text in the system code page (UTF-8 elsewhere than on Windows); no mark
    Utf16Le = 2,  ///< mark FF FE
    Utf16Be = 3,  ///< mark FE FF
    Utf8 = 4,     ///< mark EF BB BF
};

class TextFileReader {
  public:
    /// Reads the whole file; the encoding follows its mark, without a mark it is System. False when the
    /// file cannot be opened or read.
    bool Open(const std::wstring& path);

    TextEncoding Encoding() const { return encoding_; }

    /// Moves to the next line; false at the end.
    bool NextLine();

    std::int32_t FieldCount() const;
    /// The field's text; empty when missing. unescape: "<NEW LINE>" and "<br />" become CR LF, "<QUOTE>" and
    /// "&#34;" a double quote.
    std::wstring Text(std::int32_t field, bool unescape = true) const;
    /// Decimal value; 0 when missing, empty or malformed. Saturates at the ends of 32 bits.
    std::int32_t Integer(std::int32_t field) const;
    float Float(std::int32_t field) const;
    /// True only for exactly "Y".
    bool Bool(std::int32_t field) const;

  private:
    std::wstring text_;
    std::size_t position_ = 0;
    TextEncoding encoding_ = TextEncoding::System;
    std::vector<std::wstring> fields_;
};

/// Collects lines and writes them in one go, beside the target and then renamed.
class TextFileWriter {
  public:
    explicit TextFileWriter(TextEncoding encoding) : encoding_(encoding) {}

    void AddText(const std::wstring& text);
    void AddInteger(std::int32_t value);
    /// "%f" with trailing zeros, and then a trailing point, removed; never "-0".
    void AddFloat(float value);
    void AddBool(bool value);
    void EndLine();

    /// False when the file cannot be written; an older file then stays as it was.
    bool Save(const std::wstring& path) const;

  private:
    void Separate();

    TextEncoding encoding_;
    std::wstring text_;
    bool lineStarted_ = false;
};

}  // namespace skyvault
