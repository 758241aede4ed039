#include <algorithm>
#include <array>
#include <string_view>
#include <vector>

#include "platform/file_stream.h"
#include "platform/output_file.h"
#include "platform/system_text.h"
#include "platform/utf8.h"
#include "settings/text_file.h"

namespace skyvault {
namespace {

constexpr std::uint64_t kLargestTextFile = std::uint64_t{16} << 20;

struct EncodingMark {
    TextEncoding encoding;
    std::string_view mark;
};

constexpr std::array kMarks = {
    EncodingMark{TextEncoding::Utf16Le, "\xFF\xFE"},
    EncodingMark{TextEncoding::Utf16Be, "\xFE\xFF"},
    EncodingMark{TextEncoding::Utf8, "\xEF\xBB\xBF"},
};

// Where wchar_t is UTF-16 already, code units pass unchanged: file names may hold unpaired surrogates.
constexpr bool kWideIsUtf16 = sizeof(wchar_t) == 2;

std::wstring FromUtf16Bytes(std::string_view bytes, bool bigEndian) {
    std::u16string units(bytes.size() / 2, u'\0');
    for (std::size_t i = 0; i < units.size(); ++i) {
        const auto first = static_cast<unsigned char>(bytes[2 * i]);
        const auto second = static_cast<unsigned char>(bytes[2 * i + 1]);
        units[i] = static_cast<char16_t>(bigEndian ? first << 8 | second : second << 8 | first);
    }
    if constexpr (kWideIsUtf16) return std::wstring(units.begin(), units.end());
    return FromUtf16(units);
}

std::string ToUtf16Bytes(const std::wstring& text, bool bigEndian) {
    const std::u16string units = kWideIsUtf16 ? std::u16string(text.begin(), text.end()) : ToUtf16(text);
    std::string bytes;
    bytes.reserve(units.size() * 2);
    for (const char16_t unit : units) {
        const char high = static_cast<char>(unit >> 8);
        const char low = static_cast<char>(unit & 0xff);
        bytes.push_back(bigEndian ? high : low);
        bytes.push_back(bigEndian ? low : high);
    }
    return bytes;
}

std::string EncodeWithoutMark(const std::wstring& text, TextEncoding encoding) {
    switch (encoding) {
        case TextEncoding::System:
            return ToSystemText(text);
        case TextEncoding::Utf16Le:
            return ToUtf16Bytes(text, false);
        case TextEncoding::Utf16Be:
            return ToUtf16Bytes(text, true);
        case TextEncoding::Utf8:
            return ToUtf8(text);
    }
    return {};
}

}  // namespace

std::wstring DecodeText(std::span<const std::byte> bytes, TextEncoding& encoding) {
    std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    const auto mark = std::find_if(kMarks.begin(), kMarks.end(), [&](const EncodingMark& candidate) {
        return text.starts_with(candidate.mark);
    });
    encoding = mark != kMarks.end() ? mark->encoding : TextEncoding::System;
    if (mark != kMarks.end()) text.remove_prefix(mark->mark.size());
    switch (encoding) {
        case TextEncoding::System:
            return FromSystemText(text);
        case TextEncoding::Utf16Le:
            return FromUtf16Bytes(text, false);
        case TextEncoding::Utf16Be:
            return FromUtf16Bytes(text, true);
        case TextEncoding::Utf8:
            return FromUtf8(text);
    }
    return {};
}

std::string EncodeText(const std::wstring& text, TextEncoding encoding) {
    std::string bytes;
    for (const EncodingMark& candidate : kMarks) {
        if (candidate.encoding == encoding) bytes = candidate.mark;
    }
    return bytes + EncodeWithoutMark(text, encoding);
}

bool ReadTextFile(const std::wstring& path, std::wstring& text, TextEncoding& encoding) {
    std::vector<std::byte> bytes;
    if (!ReadWholeFile(path, bytes, kLargestTextFile)) return false;
    text = DecodeText(bytes, encoding);
    return true;
}

Outcome WriteTextFile(const std::wstring& path, const std::wstring& text, TextEncoding encoding) {
    const std::string bytes = EncodeText(text, encoding);
    OutputFile output(path);
    FileStream stream(output.TemporaryPath(), FileUse::Write);
    const bool written = stream.IsOpen() && (bytes.empty() || stream.Write(bytes.data(), bytes.size()));
    return stream.Close() && written && output.Commit() ? Outcome{} : output.Failed();
}

}  // namespace skyvault
