#include "projection/fast_math.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

namespace skyvault {
namespace {

/// Distance of a float from the exact value, in units of the float's last place.
double UnitsOff(float value, double exact) {
    const float nearest = static_cast<float>(exact);
    const double unit =
        std::nextafter(std::fabs(nearest), INFINITY) - static_cast<double>(std::fabs(nearest));
    return std::fabs(static_cast<double>(value) - exact) / unit;
}

TEST(FastMath, AtMostTwoUnitsOffEverywhere) {
    std::mt19937 random(1);
    std::uniform_real_distribution<float> component(-1.0f, 1.0f), angle(-30.0f, 30.0f), base(0.0f, 1.5f),
        exponent(0.01f, 8.0f);
    double atan2Off = 0, sinCosOff = 0, sinOff = 0, cosOff = 0, powOff = 0;
    for (int i = 0; i < 1'000'000; ++i) {
        const float y = component(random), x = component(random) * (i % 3 ? 1.0f : 1e-3f);
        atan2Off = std::max(atan2Off, UnitsOff(Atan2(y, x), std::atan2(static_cast<double>(y), x)));
        const float a = angle(random);
        sinOff = std::max(sinOff, UnitsOff(Sin(a), std::sin(static_cast<double>(a))));
        cosOff = std::max(cosOff, UnitsOff(Cos(a), std::cos(static_cast<double>(a))));
        // Every other one close to a multiple of π/2, where little is left of the angle.
        const float w = i % 2 ? static_cast<float>((i / 2 % 64) * 1.5707963267948966) + 1e-4f * y : 3.3f * a;
        const SineCosineSingle both = SinCos(w);
        sinCosOff = std::max({sinCosOff, UnitsOff(both.sine, std::sin(static_cast<double>(w))),
                              UnitsOff(both.cosine, std::cos(static_cast<double>(w)))});
        const float b = base(random), e = exponent(random);
        powOff = std::max(powOff, UnitsOff(Pow(b, e), std::pow(static_cast<double>(b), e)));
    }
    EXPECT_LE(atan2Off, 2.0);
    EXPECT_LE(sinCosOff, 2.0);
    EXPECT_LE(sinOff, 0.51);
    EXPECT_LE(cosOff, 0.51);
    EXPECT_LE(powOff, 0.51);
}

TEST(FastMath, ExactWhereDirectionsMeetAnAxis) {
    EXPECT_EQ(Atan2(0.0f, 0.0f), 0.0f);
    EXPECT_EQ(Atan2(0.0f, 1.0f), 0.0f);
    EXPECT_EQ(Atan2(1.0f, 0.0f), 1.5707964f);
    EXPECT_EQ(Atan2(-1.0f, 0.0f), -1.5707964f);
    EXPECT_EQ(Atan2(0.0f, -1.0f), 3.1415927f);
    EXPECT_EQ(Atan2(-0.0f, -1.0f), -3.1415927f);
    EXPECT_EQ(Atan2(1.0f, 1.0f), 0.78539819f);
    EXPECT_EQ(Atan2(1e-45f, 1e-45f), 0.78539819f);
    EXPECT_EQ(Sin(0.0f), 0.0f);
    EXPECT_EQ(Cos(0.0f), 1.0f);
    EXPECT_EQ(SinCos(0.0f).sine, 0.0f);
    EXPECT_EQ(SinCos(0.0f).cosine, 1.0f);
    EXPECT_EQ(SinCos(1.5707964f).cosine, -4.3711388e-8f);
    EXPECT_EQ(Pow(1.0f, 1.37f), 1.0f);
    EXPECT_EQ(Pow(0.0f, 0.5f), 0.0f);
    EXPECT_EQ(Pow(0.25f, 0.5f), 0.5f);
}

TEST(FastMath, NotANumberStaysNotANumber) {
    EXPECT_TRUE(std::isnan(Atan2(NAN, 1.0f)));
    EXPECT_TRUE(std::isnan(Atan2(1.0f, NAN)));
    EXPECT_TRUE(std::isnan(Sin(NAN)));
    EXPECT_TRUE(std::isnan(SinCos(NAN).sine));
    EXPECT_TRUE(std::isnan(Pow(-1e-7f, 1.01f)));
    EXPECT_TRUE(std::isnan(Pow(NAN, 1.01f)));
}

TEST(FastMath, HalvesRoundAwayFromZero) {
    for (const auto& [value, expected] :
         {std::pair{0.5f, 1}, {1.5f, 2}, {2.5f, 3}, {0.49999997f, 0}, {8388607.5f, 8388608}}) {
        EXPECT_EQ(RoundPositive(value), expected) << value;
    }
}

}  // namespace
}  // namespace skyvault
