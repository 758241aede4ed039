#include "image/numeric.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>

#include "image/half.h"
#include "image/mvector.h"
#include "image/random.h"
#include "platform/debug_line.h"

namespace skyvault {
namespace {

// The value of a half from its definition, in double precision.
double DefinedValue(std::uint16_t bits) {
    const int exponent = (bits >> 10) & 31, mantissa = bits & 1023;
    const double sign = bits & 0x8000 ? -1.0 : 1.0;
    if (exponent == 31) return mantissa ? std::nan("") : sign * INFINITY;
    return sign * (exponent == 0 ? std::ldexp(mantissa, -24) : std::ldexp(1024 + mantissa, exponent - 25));
}

TEST(Half, EveryHalfBecomesItsFloatAndComesBack) {
    for (std::uint32_t i = 0; i < 0x10000; ++i) {
        const Half half{static_cast<std::uint16_t>(i)};
        const float value = HalfToFloat(half);
        const double defined = DefinedValue(half.bits);
        if (std::isnan(defined)) {
            ASSERT_TRUE(std::isnan(value) && std::isnan(HalfToFloat(FloatToHalf(value)))) << i;
            continue;
        }
        ASSERT_EQ(static_cast<double>(value), defined) << i;
        ASSERT_EQ(std::signbit(value), std::signbit(defined)) << i;
        ASSERT_EQ(FloatToHalf(value), half) << i;
    }
}

TEST(Half, RoundsToTheNearestAndTiesToEven) {
    for (std::uint16_t bits = 0; bits < 0x7c00; ++bits) {
        // What would follow 65504 stands for infinity.
        const double low = DefinedValue(bits);
        const double high = bits == 0x7bff ? 65536.0 : DefinedValue(static_cast<std::uint16_t>(bits + 1));
        const float middle = static_cast<float>((low + high) / 2);
        ASSERT_EQ(static_cast<double>(middle), (low + high) / 2);
        const int even = bits + (bits & 1);
        for (const int sign : {0x0000, 0x8000}) {
            const float s = sign ? -1.0f : 1.0f;
            ASSERT_EQ(FloatToHalf(s * middle).bits, even | sign) << bits;
            ASSERT_EQ(FloatToHalf(s * std::nextafter(middle, 0.0f)).bits, bits | sign) << bits;
            ASSERT_EQ(FloatToHalf(s * std::nextafter(middle, 1e9f)).bits, (bits + 1) | sign) << bits;
        }
    }
    EXPECT_EQ(FloatToHalf(1e30f).bits, 0x7c00);
    EXPECT_EQ(FloatToHalf(-std::numeric_limits<float>::infinity()).bits, 0xfc00);
    EXPECT_EQ(FloatToHalf(1e-45f).bits, 0x0000);
}

TEST(Numeric, NextPowerOfTwo) {
    const std::int32_t top = 1 << 30;
    const std::int32_t rows[][2] = {{-5, 2},      {0, 2},     {2, 2},          {3, 4},
                                    {4, 4},       {5, 8},     {1023, 1024},    {1024, 1024},
                                    {1025, 2048}, {top, top}, {INT32_MAX, top}};
    for (const auto& row : rows) EXPECT_EQ(NextPowerOfTwo(row[0]), row[1]) << row[0];
}

TEST(Numeric, ClampsAndRounds) {
    EXPECT_EQ(ClampInt(-7, -3, 9), -3);
    EXPECT_EQ(ClampInt(10, -3, 9), 9);
    EXPECT_EQ(ClampInt(4, -3, 9), 4);
    EXPECT_EQ(ClampUnsigned(4000000000u, 1, 3000000000u), 3000000000u);
    EXPECT_EQ(Clamp01(-0.5f), 0.0f);
    EXPECT_EQ(Clamp01(1.5f), 1.0f);
    EXPECT_EQ(Clamp01(0.25f), 0.25f);

    const struct {
        float value;
        std::int32_t rounded;
    } rows[] = {{0.5f, 1},
                {-0.5f, -1},
                {0.49999997f, 0},
                {-0.49999997f, 0},
                {1.5f, 2},
                {2.5f, 3},
                {-2.5f, -3},
                {8388607.5f, 8388608},
                {16777216.0f, 16777216},
                {-0.2f, 0},
                {2147483520.0f, 2147483520}};
    for (const auto& row : rows) EXPECT_EQ(RoundHalfAway(row.value), row.rounded) << row.value;
}

TEST(Numeric, LerpColourTruncatesAndKeepsEqualChannels) {
    const Color8 a(10, 200, 77, 255), b(20, 100, 77, 0);
    EXPECT_EQ(LerpColor8(a, b, 0.0f), a);
    EXPECT_EQ(LerpColor8(a, b, 1.0f), b);
    EXPECT_EQ(LerpColor8(a, b, 0.25f), Color8(12, 175, 77, 191));
    for (float t = 0.0f; t < 1.0f; t += 0.013f) EXPECT_EQ(LerpColor8(a, b, t).blue, 77) << t;
}

TEST(Numeric, IntegerPowers) {
    EXPECT_EQ(IntegerPower(0.0f, 0), 1.0f);
    EXPECT_EQ(IntegerPower(-3.0f, 1), -3.0f);
    EXPECT_EQ(IntegerPower(-3.0f, 3), -27.0f);
    EXPECT_EQ(IntegerPower(3.0f, 4), 81.0f);
    EXPECT_EQ(IntegerPower(2.0f, 10), 1024.0f);
    EXPECT_EQ(IntegerPower(2.0f, -2), 0.25f);
}

TEST(Random, TheSequenceIsTheWellKnownOne) {
    SetRandomState(1);
    // The draws of the C runtime's rand() this generator agrees with, after srand(1).
    for (const int expected : {41, 18467, 6334, 26500, 19169}) EXPECT_EQ(RandomInt(32766), expected % 32766);
    SetRandomState(1);
    EXPECT_EQ(RandomInt(10), 1);
    EXPECT_EQ(RandomInt(1000), 467);
    EXPECT_FLOAT_EQ(RandomFloat(2.0f), 6334 * 2.0f * 0.0001f);
}

TEST(Random, EveryDrawStepsOnceAndStaysInItsBounds) {
    const auto stepsOf = [](auto draw, int most) {
        SetRandomState(7);
        draw();
        const std::uint32_t after = RandomState();
        SetRandomState(7);
        for (int steps = 0; steps <= most; ++steps) {
            if (RandomState() == after) return steps;
            RandomInt(0);
        }
        return -1;
    };
    EXPECT_EQ(stepsOf([] { EXPECT_EQ(RandomInt(-4), 0); }, 3), 1);
    EXPECT_EQ(stepsOf([] { EXPECT_EQ(RandomInt(1), 0); }, 3), 1);
    EXPECT_EQ(stepsOf([] { RandomInt(1000000); }, 3), 1);
    EXPECT_EQ(stepsOf([] { EXPECT_EQ(RandomFloat(0.0f), 0.0f); }, 3), 1);
    EXPECT_EQ(stepsOf([] { EXPECT_EQ(RandomFloat(5.0f, 5.0f), 5.0f); }, 3), 1);
    EXPECT_EQ(stepsOf([] { RandomVector(2.0f); }, 5), 3);
    EXPECT_EQ(stepsOf([] { EXPECT_EQ(RandomVector(0.0f).y, 0.0f); }, 5), 3);

    for (int i = 0; i < 2000; ++i) {
        EXPECT_LT(RandomInt(1000000), 1000000);
        const float f = RandomFloat(3.0f, -1.0f);
        EXPECT_TRUE(f >= -1.0f && f < 3.0f) << f;
        const RandomXyz v = RandomVector(-4.0f);
        for (const float c : {v.x, v.y, v.z}) EXPECT_TRUE(c >= -2.0f && c < 2.0f) << c;
    }
}

TEST(Random, AVectorIsDrawnFromItsLastComponentOn) {
    SetRandomState(99);
    const RandomXyz vector = RandomVector(2.0f);
    SetRandomState(99);
    for (const float component : {vector.z, vector.y, vector.x})
        EXPECT_EQ(component, RandomFloat(2.0f) - 1.0f);
}

TEST(Random, AFixedSeedReplacesTheClock) {
    SetFixedSeed(1234);
    SeedRandom();
    EXPECT_EQ(RandomState(), 1234u);
    ClearFixedSeed();
    SeedRandom();
    const std::uint32_t first = RandomState();
    SeedRandom();
    EXPECT_NE(RandomState(), first);
}

TEST(Memory, FailureIsAResultAndALine) {
    const DebugLineCapture capture;
    EXPECT_EQ(MGetMemory(0), nullptr);
    EXPECT_EQ(capture.Text(), L"");
    FailAllocationsAfter(1);
    EXPECT_NE(AllocateBytes(10), nullptr);
    EXPECT_EQ(AllocateBytes(10), nullptr);
    EXPECT_EQ(AllocateBytes(10), nullptr);
    FailAllocationsAfter(-1);
    EXPECT_NE(AllocateBytes(10), nullptr);
    EXPECT_EQ(capture.Text(), L"MGetMemory: out of memory exception\nMGetMemory: out of memory exception\n");
}

TEST(MVector, KeepsOrDropsItsContentsAndSurvivesFailure) {
    MVector<int> values;
    EXPECT_TRUE(values.Resize(0, false));
    ASSERT_TRUE(values.Resize(3, false));
    for (int i = 0; i < 3; ++i) values[i] = i + 10;
    ASSERT_TRUE(values.Resize(5, true));
    EXPECT_EQ(values[2], 12);
    ASSERT_TRUE(values.Resize(2, true));
    EXPECT_EQ(values[1], 11);

    const DebugLineCapture capture;
    FailAllocationsAfter(0);
    EXPECT_TRUE(values.Resize(2, true));
    EXPECT_FALSE(values.Resize(100, true));
    EXPECT_EQ(values.Count(), 2);
    EXPECT_EQ(values[1], 11);
    EXPECT_FALSE(values.Resize(100, false));
    EXPECT_EQ(values.Count(), 0);
    FailAllocationsAfter(-1);
    EXPECT_FALSE(values.Resize(-1, false));
    EXPECT_EQ(capture.Text(), L"MVector: out of memory exception\nMVector: out of memory exception\n");
}

}  // namespace
}  // namespace skyvault
