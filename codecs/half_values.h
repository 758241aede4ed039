// Values of any size put into halves, which reach to 65504: what is beyond is counted, so that it can be
// told.
#pragma once

#include <cstdint>
#include <string>

#include "image/pixel.h"

namespace skyvault {

inline constexpr float kLargestHalf = 65504.0f;

/// How many values a half could not hold.
struct HalfLosses {
    std::uint64_t beyond = 0;      ///< above 65504 or below −65504, infinities too: made ±65504
    std::uint64_t notNumbers = 0;  ///< made 0

    void Add(const HalfLosses& other) {
        beyond += other.beyond;
        notNumbers += other.notNumbers;
    }
};

/// The nearest finite half.
inline Half HoldInHalf(float value, HalfLosses& losses) {
    const bool number = value == value;
    const float held = value > kLargestHalf ? kLargestHalf : value < -kLargestHalf ? -kLargestHalf : value;
    losses.beyond += held != value && number ? 1 : 0;
    losses.notNumbers += number ? 0 : 1;
    return number ? FloatToHalf(held) : Half{};
}

/// One line that tells the file's losses; empty without any.
std::wstring TextOfLosses(const std::wstring& path, const HalfLosses& losses);

}  // namespace skyvault
