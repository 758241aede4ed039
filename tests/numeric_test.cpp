#include "platform/numeric.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>

#include "generators/random.h"
#include "image/pixel.h"
#include "platform/debug_line.h"
#include "platform/mvector.h"

namespace skyvault {
namespace {

// The value of a half from its definition, in double precision.
double DefinedValue(int bits) {
    const int exponent = (bits >> 10) & 31, mantissa = bits & 1023;
    const double sign = bits & 0x8000 ? -1.0 : 1.0;
    if (exponent == 31) return mantissa ? std::nan("") : sign * INFINITY;
    return sign * (exponent == 0 ? std::ldexp(mantissa, -24) : std::ldexp(1024 + mantissa, exponent - 25));
}

TEST(Half, EveryHalfBecomesItsFloatAndFloatsTheNearestHalf) {
    for (int i = 0; i < 0x10000; ++i) {
        const Half half{static_cast<std::uint16_t>(i)};
        const float value = HalfToFloat(half);
        const double defined = DefinedValue(i);
        if (std::isnan(defined)) {
            ASSERT_TRUE(std::isnan(value) && std::isnan(HalfToFloat(FloatToHalf(value)))) << i;
            continue;
        }
        ASSERT_EQ(static_cast<double>(value), defined) << i;
        ASSERT_EQ(std::signbit(value), std::signbit(defined)) << i;
        ASSERT_EQ(FloatToHalf(value), half) << i;
        if (std::isinf(defined)) continue;
        // Half-way to the next, the even one is taken. What would follow 65504 stands for infinity.
        const double next = (i & 0x7fff) == 0x7bff ? std::copysign(65536.0, defined) : DefinedValue(i + 1);
        const float middle = static_cast<float>((defined + next) / 2);
        ASSERT_EQ(FloatToHalf(middle).bits, i + (i & 1)) << i;
        ASSERT_EQ(FloatToHalf(std::nextafter(middle, 0.0f)).bits, i) << i;
        ASSERT_EQ(FloatToHalf(std::nextafter(middle, 2 * middle)).bits, i + 1) << i;
    }
    EXPECT_EQ(FloatToHalf(1e30f).bits, 0x7c00);
    EXPECT_EQ(FloatToHalf(-INFINITY).bits, 0xfc00);
    EXPECT_EQ(FloatToHalf(1e-45f).bits, 0x0000);
}

TEST(Numeric, PowersOfTwoAndHalvesThatRoundAwayFromZero) {
    constexpr std::int32_t kTop = 1 << 30;
    const std::pair<std::int32_t, std::int32_t> powers[] = {
        {-5, 2}, {2, 2}, {3, 4}, {4, 4}, {5, 8}, {1023, 1024}, {1025, 2048}, {kTop, kTop}, {INT32_MAX, kTop}};
    for (const auto& [n, power] : powers) EXPECT_EQ(NextPowerOfTwo(n), power) << n;
    constexpr float kValues[] = {0.5f, -0.5f, 0.49999997f, -0.49999997f,
                                 2.5f, -2.5f, 8388607.5f,  2147483520.0f};
    constexpr std::int32_t kRounded[] = {1, -1, 0, 0, 3, -3, 8388608, 2147483520};
    for (std::size_t i = 0; i < std::size(kValues); ++i)
        EXPECT_EQ(RoundHalfAway(kValues[i]), kRounded[i]) << kValues[i];
}

TEST(Random, TheSequenceIsTheWellKnownOne) {
    // The draws of the C runtime's rand() this generator agrees with, after srand(1).
    SetRandomState(1);
    for (const int expected : {41, 18467, 6334, 26500, 19169}) EXPECT_EQ(RandomInt(32766), expected % 32766);
    SetRandomState(1);
    EXPECT_EQ(RandomInt(10), 1);
    EXPECT_EQ(RandomInt(1000), 467);
    EXPECT_FLOAT_EQ(RandomFloat(2.0f), 6334 * 2.0f * 0.0001f);

    SetFixedSeed(1234);
    SeedRandom();
    EXPECT_EQ(RandomState(), 1234u);
    ClearFixedSeed();
    SeedRandom();
    const std::uint32_t first = RandomState();
    SeedRandom();
    EXPECT_NE(RandomState(), first);
}

TEST(Random, EveryDrawStepsOnceAndStaysInItsBounds) {
    SetRandomState(7);
    for (int i = 0; i < 1000; ++i) RandomInt(0);
    const std::uint32_t after = RandomState();
    SetRandomState(7);
    for (const int bound : {-4, 0, 1}) EXPECT_EQ(RandomInt(bound), 0);
    EXPECT_EQ(RandomFloat(5.0f, 5.0f), 5.0f);
    EXPECT_EQ(RandomVector(0.0f).y, 0.0f);
    for (int i = 7; i < 1000; ++i) {
        const float f = RandomFloat(3.0f, -1.0f);
        EXPECT_TRUE(f >= -1.0f && f < 3.0f) << f;
    }
    EXPECT_EQ(RandomState(), after);
}

TEST(Memory, FailureIsAResultAndALine) {
    const std::wstring line = L"MGetMemory: out of memory exception\n",
                       own = L"MVector: out of memory exception\n";
    const DebugLineCapture capture;
    EXPECT_EQ(MGetMemory(0), nullptr);
    FailAllocationsAfter(1);
    EXPECT_NE(AllocateBytes(10), nullptr);
    EXPECT_EQ(AllocateBytes(10), nullptr);
    EXPECT_EQ(AllocateBytes(10), nullptr);
    FailAllocationsAfter(-1);
    EXPECT_NE(AllocateBytes(10), nullptr);
    EXPECT_EQ(capture.Text(), line + line);

    MVector<int> values;
    ASSERT_TRUE(values.Resize(0, false) && values.Resize(3, false));
    for (int i = 0; i < 3; ++i) values[i] = i + 10;
    ASSERT_TRUE(values.Resize(5, true) && values[2] == 12);
    ASSERT_TRUE(values.Resize(2, true) && values[1] == 11);
    FailAllocationsAfter(0);
    EXPECT_TRUE(values.Resize(2, true));
    EXPECT_FALSE(values.Resize(100, true));
    EXPECT_TRUE(values.Count() == 2 && values[1] == 11);
    EXPECT_FALSE(values.Resize(100, false));
    EXPECT_EQ(values.Count(), 0);
    FailAllocationsAfter(-1);
    EXPECT_FALSE(values.Resize(-1, false));
    EXPECT_EQ(capture.Text(), line + line + own + own);
}

}  // namespace
}  // namespace skyvault
