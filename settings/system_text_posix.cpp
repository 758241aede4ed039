#include "platform/utf8.h"
#include "settings/system_text.h"

namespace skyvault {

std::wstring FromSystemText(std::string_view text) {
    return FromUtf8(text);
}

std::string ToSystemText(std::wstring_view text) {
    return ToUtf8(text);
}

}  // namespace skyvault
