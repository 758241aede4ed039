// Random numbers by their place instead of by their turn: the same at a place in whatever order it is asked
// for.
#pragma once

#include <cstdint>

namespace skyvault {

/// Every bit of the result depends on every bit of the value.
constexpr std::uint32_t Scramble(std::uint32_t value) {
    value = (value ^ (value >> 16)) * 0x85ebca6bu;
    value = (value ^ (value >> 13)) * 0xc2b2ae35u;
    return value ^ (value >> 16);
}

/// −1..1 for a number, evenly spread.
constexpr float NoiseOf(std::uint32_t number) {
    return static_cast<float>(static_cast<std::int32_t>(Scramble(number))) * 4.656613e-10f;  // 2^−31
}

}  // namespace skyvault
