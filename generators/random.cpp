#include "generators/random.h"

#include <cmath>
#include <cstdlib>
#include <optional>

#include "platform/clock.h"

namespace skyvault {

namespace {

std::uint32_t state = 0;
std::optional<std::uint32_t> fixedSeed;

void Step() {
    state = state * 214013u + 2531011u;
}

}  // namespace

void SeedRandom() {
    state = fixedSeed ? *fixedSeed : MillisecondClock() + static_cast<std::uint32_t>(std::rand());
}

void SetFixedSeed(std::uint32_t seed) {
    fixedSeed = seed;
}
void ClearFixedSeed() {
    fixedSeed.reset();
}

std::uint32_t RandomState() {
    return state;
}
void SetRandomState(std::uint32_t newState) {
    state = newState;
}

std::int32_t RandomInt(std::int32_t n) {
    if (n >= 32767) return static_cast<std::int32_t>(RandomFloat(static_cast<float>(n)));
    Step();
    return n < 2 ? 0 : static_cast<std::int32_t>((state >> 16) & 0x7fff) % n;
}

float RandomFloat(float x) {
    if (x > 0.0f) return static_cast<float>(RandomInt(10000)) * x * 0.0001f;
    Step();
    return 0.0f;
}

float RandomFloat(float a, float b) {
    const float low = a < b ? a : b;
    const float high = a < b ? b : a;
    return low + RandomFloat(high - low);
}

RandomXyz RandomVector(float size) {
    RandomXyz vector;
    if (size == 0.0f) {
        // Three steps at once.
        state = state * 1170746341u + 3539360597u;
        return vector;
    }
    const float edge = std::fabs(size);
    vector.z = RandomFloat(edge) - edge / 2.0f;
    vector.y = RandomFloat(edge) - edge / 2.0f;
    vector.x = RandomFloat(edge) - edge / 2.0f;
    return vector;
}

}  // namespace skyvault
