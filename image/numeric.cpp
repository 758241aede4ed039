#include "image/numeric.h"

#include <cmath>

namespace skyvault {

namespace {

std::uint8_t LerpChannel(std::uint8_t a, std::uint8_t b, float t) {
    if (a == b) return a;
    return static_cast<std::uint8_t>(
        static_cast<int>(static_cast<float>(b) * t + static_cast<float>(a) * (1.0f - t)));
}

}  // namespace

std::int32_t NextPowerOfTwo(std::int32_t n) {
    std::int32_t power = 2;
    while (power < n && power < (1 << 30)) power *= 2;
    return power;
}

Color8 LerpColor8(const Color8& a, const Color8& b, float t) {
    Color8 mixed;
    mixed.blue = LerpChannel(a.blue, b.blue, t);
    mixed.green = LerpChannel(a.green, b.green, t);
    mixed.red = LerpChannel(a.red, b.red, t);
    mixed.alpha = LerpChannel(a.alpha, b.alpha, t);
    return mixed;
}

float IntegerPower(float base, std::int32_t exponent) {
    switch (exponent) {
        case 0:
            return 1.0f;
        case 1:
            return base;
        case 2:
            return base * base;
        case 3:
            return base * base * base;
        case 4:
            return base * base * base * base;
        default:
            return std::pow(base, static_cast<float>(exponent));
    }
}

}  // namespace skyvault
