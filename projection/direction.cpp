#include "projection/direction.h"

#include "projection/fast_math.h"

namespace skyvault {

void Normalize(Direction& d) {
    const float s = d.x * d.x + d.y * d.y + d.z * d.z;
    if (s == 0.0f || s == 1.0f) return;
    const float scale = 1.0f / SquareRoot(s);
    d.x *= scale;
    d.y *= scale;
    d.z *= scale;
}

Spherical ToSpherical(const Direction& d) {
    if (d.x == 0.0f && d.z == 0.0f) return {0.0f, d.y > 0.0f ? kPi * 0.5f : -kPi * 0.5f};
    return {Atan2(d.x, d.z), Atan2(d.y, SquareRoot(d.x * d.x + d.z * d.z))};
}

}  // namespace skyvault
