#include "settings/number_text.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <string>
#include <system_error>
#include <type_traits>

namespace skyvault {
namespace {

/// The leading characters that can belong to a number, after spaces and a plus sign (which
/// std::from_chars does not take).
std::string NumberCharacters(std::wstring_view text, std::wstring_view allowed) {
    const std::size_t start = text.find_first_not_of(L" \t");
    if (start == std::wstring_view::npos) return {};
    text.remove_prefix(start);
    if (text.size() > 1 && text[0] == L'+' && text[1] != L'-') text.remove_prefix(1);
    text = text.substr(0, text.find_first_not_of(allowed));
    std::string characters(text.size(), '\0');
    std::transform(text.begin(), text.end(), characters.begin(),
                   [](wchar_t c) { return static_cast<char>(c); });
    return characters;
}

std::string IntegerCharacters(std::wstring_view text) {
    return NumberCharacters(text, L"0123456789-");
}
std::string FloatCharacters(std::wstring_view text) {
    return NumberCharacters(text, L"0123456789.eE+-");
}

/// True when a number out of range is too large, false when it is too close to 0: its power of ten tells.
bool IsHuge(std::string_view number) {
    const std::size_t exponentMark = number.find_first_of("eE");
    const std::string_view mantissa = number.substr(0, exponentMark);
    const std::size_t point = std::min(mantissa.find('.'), mantissa.size());
    const std::size_t firstDigit = mantissa.find_first_of("123456789");
    if (firstDigit == std::string_view::npos) return false;
    long long power = static_cast<long long>(point) - static_cast<long long>(firstDigit);
    if (exponentMark != std::string_view::npos) {
        std::string_view exponentText = number.substr(exponentMark + 1);
        const bool negative = exponentText.starts_with('-');
        if (negative || exponentText.starts_with('+')) exponentText.remove_prefix(1);
        long long exponent = 0;
        const char* end = exponentText.data() + exponentText.size();
        const auto result = std::from_chars(exponentText.data(), end, exponent);
        // Far beyond any mantissa's length.
        constexpr long long kLimit = std::numeric_limits<long long>::max() / 2;
        if (result.ec == std::errc::result_out_of_range || exponent > kLimit) exponent = kLimit;
        power += negative ? -exponent : exponent;
    }
    return power > 0;
}

/// As std::from_chars, with a defined value for numbers out of range. The result says where it stopped.
template <typename Number>
std::from_chars_result Parse(const std::string& characters, Number& value) {
    value = 0;
    const auto result = std::from_chars(characters.data(), characters.data() + characters.size(), value);
    if (result.ec != std::errc::result_out_of_range) return result;
    const std::string_view number(characters.data(),
                                  static_cast<std::size_t>(result.ptr - characters.data()));
    const bool negative = number.starts_with('-');
    using Limits = std::numeric_limits<Number>;
    if (std::is_integral_v<Number> || IsHuge(number)) {
        value = negative ? Limits::lowest() : Limits::max();
    } else {
        value = 0;
    }
    return result;
}

template <typename Number>
bool ParseWhole(const std::string& characters, std::size_t length, Number& value) {
    Number parsed = 0;
    const auto result = Parse(characters, parsed);
    const bool whole = characters.size() == length && result.ptr == characters.data() + characters.size();
    if (!whole || length == 0 || result.ec != std::errc()) return false;
    value = parsed;
    return true;
}

std::wstring Widen(std::string_view text) {
    return {text.begin(), text.end()};
}

}  // namespace

std::int32_t ParseInteger(std::wstring_view text) {
    std::int32_t value = 0;
    Parse(IntegerCharacters(text), value);
    return value;
}

float ParseFloat(std::wstring_view text) {
    float value = 0;
    Parse(FloatCharacters(text), value);
    return value;
}

std::wstring WithDecimalPoint(std::wstring text) {
    const std::size_t comma = text.find(L',');
    const bool single =
        comma != std::wstring::npos && text.find_first_of(L".,", comma + 1) == std::wstring::npos;
    if (single && text.find(L'.') == std::wstring::npos) text[comma] = L'.';
    return text;
}

std::int32_t ParseTruncated(std::wstring_view text) {
    // A float holds whole numbers of up to 24 bits only.
    std::int32_t whole = 0;
    if (ParseWholeInteger(text, whole)) return whole;
    const double value = ParseFloat(text);
    using Limits = std::numeric_limits<std::int32_t>;
    return static_cast<std::int32_t>(std::clamp<double>(value, double{Limits::min()}, double{Limits::max()}));
}

std::wstring IntegerText(std::int32_t value) {
    return std::to_wstring(value);
}

std::wstring FloatText(float value) {
    if (!std::isfinite(value)) return L"0";
    char buffer[64];  // the largest float has 39 digits before its point
    const auto result = std::to_chars(buffer, buffer + sizeof buffer, static_cast<double>(value),
                                      std::chars_format::fixed, 6);
    std::string_view text(buffer, static_cast<std::size_t>(result.ptr - buffer));
    text = text.substr(0, text.find_last_not_of('0') + 1);
    if (text.ends_with('.')) text.remove_suffix(1);
    return text == "-0" ? L"0" : Widen(text);
}

bool ParseWholeInteger(std::wstring_view text, std::int32_t& value) {
    return ParseWhole(IntegerCharacters(text), text.size(), value);
}

bool ParseWholeFloat(std::wstring_view text, float& value) {
    return ParseWhole(FloatCharacters(text), text.size(), value);
}

}  // namespace skyvault
