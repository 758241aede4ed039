#include "codecs/icc_profile.h"

#include <algorithm>
#include <string_view>

#include "codecs/bytes.h"
#include "platform/utf8.h"

namespace skyvault {
namespace {

constexpr std::size_t kHeaderSize = 128, kTableEntry = 12;

std::string_view FourLetters(const std::byte* at) {
    return {reinterpret_cast<const char*>(at), 4};
}

/// The profile description: ASCII text in older profiles, UTF-16 in several languages in newer ones.
std::wstring TextOfDescription(std::span<const std::byte> tag) {
    constexpr std::size_t kLongest = 200;
    if (tag.size() < 12) return {};
    if (FourLetters(tag.data()) == "desc") {
        const std::size_t length = std::min<std::size_t>(Big32(tag.data() + 8), tag.size() - 12);
        std::string_view text(reinterpret_cast<const char*>(tag.data()) + 12, std::min(length, kLongest));
        return FromUtf8(text.substr(0, text.find('\0')));
    }
    if (FourLetters(tag.data()) != "mluc" || tag.size() < 28) return {};
    const std::size_t at = Big32(tag.data() + 24), length = Big32(tag.data() + 20);
    if (at > tag.size() || length > tag.size() - at) return {};
    std::u16string text;
    for (std::size_t i = 0; i + 1 < std::min(length, 2 * kLongest); i += 2) {
        const char16_t unit = Big16(tag.data() + at + i);
        if (unit == 0) break;
        text += unit;
    }
    return FromUtf16(text);
}

}  // namespace

ProfileColours ColoursOfProfile(std::span<const std::byte> icc) {
    if (icc.size() < kHeaderSize + 4 || FourLetters(icc.data() + 36) != "acsp" ||
        Big32(icc.data()) > icc.size()) {
        return ProfileColours::None;
    }
    const std::string_view space = FourLetters(icc.data() + 16);
    return space == "RGB "   ? ProfileColours::Rgb
           : space == "GRAY" ? ProfileColours::Grey
                             : ProfileColours::Other;
}

std::wstring NameOfProfile(std::span<const std::byte> icc) {
    if (ColoursOfProfile(icc) == ProfileColours::None) return {};
    const std::size_t room = (icc.size() - kHeaderSize - 4) / kTableEntry;
    const std::size_t count = std::min<std::size_t>(Big32(icc.data() + kHeaderSize), room);
    for (std::size_t i = 0; i < count; ++i) {
        const std::byte* const entry = icc.data() + kHeaderSize + 4 + i * kTableEntry;
        const std::size_t at = Big32(entry + 4), bytes = Big32(entry + 8);
        if (FourLetters(entry) != "desc" || at > icc.size() || bytes > icc.size() - at) continue;
        return TextOfDescription(icc.subspan(at, bytes));
    }
    return {};
}

}  // namespace skyvault
