#include <locale.h>
#include <wctype.h>

#include "platform/system_text.h"
#include "platform/utf8.h"

namespace skyvault {

namespace {

// The program never sets a locale, and the start-up one knows the letters of ASCII only.
locale_t UnicodeLocale() {
    static const locale_t locale = [] {
        locale_t unicode = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
        return unicode ? unicode : newlocale(LC_CTYPE_MASK, "C", nullptr);
    }();
    return locale;
}

}  // namespace

std::wstring UpperCase(std::wstring_view text) {
    std::wstring result(text);
    for (wchar_t& c : result) c = static_cast<wchar_t>(towupper_l(static_cast<wint_t>(c), UnicodeLocale()));
    return result;
}

std::wstring LowerCase(std::wstring_view text) {
    std::wstring result(text);
    for (wchar_t& c : result) c = static_cast<wchar_t>(towlower_l(static_cast<wint_t>(c), UnicodeLocale()));
    return result;
}

std::wstring FromSystemText(std::string_view text) {
    return FromUtf8(text);
}

std::string ToSystemText(std::wstring_view text) {
    return ToUtf8(text);
}

}  // namespace skyvault
