#include "platform/utf8.h"

#include <cstddef>
#include <cstdint>

namespace skyvault {

namespace {

constexpr char32_t kReplacement = 0xFFFD;
/// A byte from 0x80 on that is no UTF-8, added to this.
constexpr char32_t kCarried = 0xDC00, kFirstCarried = 0xDC80, kLastCarried = 0xDCFF;

bool IsHighSurrogate(char32_t c) {
    return c >= 0xD800 && c < 0xDC00;
}
bool IsLowSurrogate(char32_t c) {
    return c >= 0xDC00 && c < 0xE000;
}
bool IsSurrogate(char32_t c) {
    return c >= 0xD800 && c < 0xE000;
}

// Each Next… takes one character off the text from position i on and moves i past it.

template <typename Unit>
char32_t NextUtf16(std::basic_string_view<Unit> text, std::size_t& i) {
    const char32_t first = static_cast<std::uint16_t>(text[i++]);
    if (!IsSurrogate(first)) return first;
    if (!IsHighSurrogate(first) || i == text.size()) return kReplacement;
    const char32_t second = static_cast<std::uint16_t>(text[i]);
    if (!IsLowSurrogate(second)) return kReplacement;
    ++i;
    return 0x10000 + ((first - 0xD800) << 10) + (second - 0xDC00);
}

char32_t NextWide(std::wstring_view text, std::size_t& i) {
    if constexpr (sizeof(wchar_t) == 2) {
        return NextUtf16(text, i);
    } else {
        const char32_t c = static_cast<char32_t>(text[i++]);
        return c > 0x10FFFF || IsSurrogate(c) ? kReplacement : c;
    }
}

// A damaged sequence gives one replacement for as many bytes as could have begun a good one.
char32_t NextUtf8(std::string_view text, std::size_t& i) {
    const auto byteAt = [&](std::size_t k) { return static_cast<unsigned char>(text[k]); };
    const unsigned char first = byteAt(i++);
    if (first < 0x80) return first;
    if (first < 0xC2 || first > 0xF4) return kReplacement;

    const int further = first < 0xE0 ? 1 : first < 0xF0 ? 2 : 3;
    char32_t value = first & (0x3Fu >> further);
    // The second byte's narrower ranges exclude overlong forms, surrogates and what is beyond U+10FFFF.
    unsigned char low = first == 0xE0 ? 0xA0 : first == 0xF0 ? 0x90 : 0x80;
    unsigned char high = first == 0xED ? 0x9F : first == 0xF4 ? 0x8F : 0xBF;
    for (int k = 0; k < further; ++k) {
        if (i == text.size() || byteAt(i) < low || byteAt(i) > high) return kReplacement;
        value = (value << 6) | (byteAt(i++) & 0x3Fu);
        low = 0x80;
        high = 0xBF;
    }
    return value;
}

void AppendUtf8(std::string& text, char32_t c) {
    const auto add = [&](char32_t byte) { text += static_cast<char>(byte); };
    if (c < 0x80) {
        add(c);
        return;
    }
    if (c < 0x800) {
        add(0xC0 | (c >> 6));
    } else {
        if (c < 0x10000) {
            add(0xE0 | (c >> 12));
        } else {
            add(0xF0 | (c >> 18));
            add(0x80 | ((c >> 12) & 0x3F));
        }
        add(0x80 | ((c >> 6) & 0x3F));
    }
    add(0x80 | (c & 0x3F));
}

template <typename Unit>
void AppendUtf16(std::basic_string<Unit>& text, char32_t c) {
    if (c < 0x10000) {
        text += static_cast<Unit>(c);
    } else {
        text += static_cast<Unit>(0xD800 + ((c - 0x10000) >> 10));
        text += static_cast<Unit>(0xDC00 + ((c - 0x10000) & 0x3FF));
    }
}

void AppendWide(std::wstring& text, char32_t c) {
    if constexpr (sizeof(wchar_t) == 2) {
        AppendUtf16(text, c);
    } else {
        text += static_cast<wchar_t>(c);
    }
}

}  // namespace

std::string ToUtf8(std::wstring_view text) {
    std::string result;
    result.reserve(text.size());
    for (std::size_t i = 0; i < text.size();) AppendUtf8(result, NextWide(text, i));
    return result;
}

std::wstring FromUtf8(std::string_view text) {
    std::wstring result;
    result.reserve(text.size());
    for (std::size_t i = 0; i < text.size();) AppendWide(result, NextUtf8(text, i));
    return result;
}

std::string ToSystemBytes(std::wstring_view text) {
    std::string bytes;
    bytes.reserve(text.size());
    for (std::size_t i = 0; i < text.size();) {
        const char32_t c = static_cast<char32_t>(text[i]);
        if (sizeof(wchar_t) > 2 && c >= kFirstCarried && c <= kLastCarried) {
            bytes += static_cast<char>(c - kCarried);
            ++i;
        } else {
            AppendUtf8(bytes, NextWide(text, i));
        }
    }
    return bytes;
}

std::wstring FromSystemBytes(std::string_view bytes) {
    std::wstring text;
    text.reserve(bytes.size());
    for (std::size_t i = 0; i < bytes.size();) {
        const std::size_t start = i;
        const char32_t c = NextUtf8(bytes, i);
        constexpr std::size_t kReplacementBytes = 3;
        // A good sequence may say U+FFFD itself.
        const bool valid = c != kReplacement || bytes.substr(start, kReplacementBytes) == "\xEF\xBF\xBD";
        if (sizeof(wchar_t) == 2 || valid) {
            AppendWide(text, c);
        } else {
            AppendWide(text, kCarried + static_cast<unsigned char>(bytes[start]));
            i = start + 1;
        }
    }
    return text;
}

std::u16string ToUtf16(std::wstring_view text) {
    std::u16string result;
    result.reserve(text.size());
    for (std::size_t i = 0; i < text.size();) AppendUtf16(result, NextWide(text, i));
    return result;
}

std::wstring FromUtf16(std::u16string_view text) {
    std::wstring result;
    result.reserve(text.size());
    for (std::size_t i = 0; i < text.size();) AppendWide(result, NextUtf16(text, i));
    return result;
}

}  // namespace skyvault
