// Numbers as text, in files and dialogs. Nothing here depends on the user's locale: the decimal point is
// always a full stop.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace skyvault {

/// The leading decimal number of a text: spaces, one sign, digits; what follows is ignored. 0 when there is
/// none. Saturates at the ends of 32 bits.
std::int32_t ParseInteger(std::wstring_view text);

/// The same for a number with fraction and exponent. Always finite: what is too large becomes the largest
/// float, and "inf" and "nan" are no numbers.
float ParseFloat(std::wstring_view text);

/// What somebody types as a number: a single decimal comma is taken for the point ("0,5" is 0.5).
std::wstring WithDecimalPoint(std::wstring text);

/// ParseFloat without its fraction ("12.9" is 12), saturating; whole numbers keep all their digits.
std::int32_t ParseTruncated(std::wstring_view text);

std::wstring IntegerText(std::int32_t value);

/// Six decimals, then without trailing zeros and without a trailing point; never "-0". What is not finite
/// is written "0".
std::wstring FloatText(float value);

/// The whole text as a number, without spaces; false when it holds anything else or does not fit.
bool ParseWholeInteger(std::wstring_view text, std::int32_t& value);
bool ParseWholeFloat(std::wstring_view text, float& value);

}  // namespace skyvault
