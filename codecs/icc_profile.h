// The few things about a colour profile that this program has to know; its bytes are never changed.
#pragma once

#include <cstddef>
#include <span>
#include <string>

namespace skyvault {

/// The colours a profile is for, as channels of a picture without alpha.
enum class ProfileColours { None, Grey, Rgb, Other };

/// None for what is no profile, or not all of one.
ProfileColours ColoursOfProfile(std::span<const std::byte> icc);

/// The profile's name ("sRGB IEC61966-2.1"); empty when it has none.
std::wstring NameOfProfile(std::span<const std::byte> icc);

}  // namespace skyvault
