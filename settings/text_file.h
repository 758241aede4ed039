// Tab-separated text files: one record per line, CR LF, four encodings, and the program's own escapes.
//
// Writing a text field: CR LF becomes "<br />", a double quote "&#34;"; the field is enclosed in double
// quotes when it holds a space or a tab (and is not exactly one tab) or is empty.
//
// Reading takes any content: a line ends at LF, with or without a CR before it, or at the end of the file;
// fields are cut at tabs. A field that begins with a double quote runs to the next one, tabs included, or to
// the end of the line when there is none; what stands between the closing quote and the next tab belongs to
// the field too.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "platform/outcome.h"

namespace skyvault {

enum class TextEncoding : std::int32_t {
    System = 1,   ///< 8-bit text in the system code page (UTF-8 elsewhere than on Windows); no mark
    Utf16Le = 2,  ///< mark FF FE
    Utf16Be = 3,  ///< mark FE FF
    Utf8 = 4,     ///< mark EF BB BF
};

/// Bytes of a text file, its mark taken off, as text; `encoding` is what the mark says. Never fails: what is
/// not valid becomes U+FFFD, except that unpaired surrogates stay where wchar_t is UTF-16.
std::wstring DecodeText(std::span<const std::byte> bytes, TextEncoding& encoding);

/// The bytes of a text file, with the encoding's mark.
std::string EncodeText(const std::wstring& text, TextEncoding encoding);

/// A whole text file of at most 16 MiB; false when it is larger or cannot be opened or read.
bool ReadTextFile(const std::wstring& path, std::wstring& text, TextEncoding& encoding);

/// Writes beside the target and renames. CannotWrite when the file cannot be written; an older one then stays
/// as it was.
Outcome WriteTextFile(const std::wstring& path, const std::wstring& text, TextEncoding encoding);

class TextFileReader {
  public:
    /// Reads the whole file (ReadTextFile). False leaves nothing to read.
    bool Open(const std::wstring& path);
    /// The same for the bytes of a file.
    void Start(std::span<const std::byte> bytes);

    /// Moves to the next line; false at the end.
    bool NextLine();

    std::int32_t FieldCount() const;
    /// The field's text; empty when missing. unescape: "<NEW LINE>" and "<br />" become CR LF, "<QUOTE>" and
    /// "&#34;" a double quote.
    std::wstring Text(std::int32_t field, bool unescape = true) const;
    /// Decimal value; 0 when missing, empty or malformed. Saturates at the ends of 32 bits.
    std::int32_t Integer(std::int32_t field) const;
    /// 0 when missing, empty or malformed; always finite.
    float Float(std::int32_t field) const;
    /// True only for exactly "Y".
    bool Bool(std::int32_t field) const;

  private:
    const std::wstring& Raw(std::int32_t field) const;

    std::wstring text_;
    std::size_t position_ = 0;
    TextEncoding encoding_ = TextEncoding::System;
    std::vector<std::wstring> fields_;
};

/// Collects lines and writes them in one go.
class TextFileWriter {
  public:
    explicit TextFileWriter(TextEncoding encoding) : encoding_(encoding) {}

    void AddText(const std::wstring& text);
    void AddInteger(std::int32_t value);
    /// "%f" with trailing zeros, and then a trailing point, removed; never "-0".
    void AddFloat(float value);
    void AddBool(bool value);
    void EndLine();

    /// The bytes of the file so far.
    std::string Bytes() const;
    /// As WriteTextFile.
    Outcome Save(const std::wstring& path) const;

  private:
    void AddField(const std::wstring& field);

    TextEncoding encoding_;
    std::wstring text_;
    bool lineStarted_ = false;
};

}  // namespace skyvault
