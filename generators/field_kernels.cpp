// Compiled once for every set of kernels; see projection/row_kernels.cpp.
#include "generators/field_kernels.h"

#include <cstdint>
#include <cstring>

#include "projection/fast_math.h"

namespace skyvault::KERNEL_SET {

static void Pull(const DirectionBlock& directions, int n, const RandomXyz* points, int pointCount,
                 float power, float* SKYVAULT_RESTRICT sums) {
    const float* SKYVAULT_RESTRICT x = directions.x;
    const float* SKYVAULT_RESTRICT y = directions.y;
    const float* SKYVAULT_RESTRICT z = directions.z;
    for (int i = 0; i < n; ++i) sums[i] = 0.0f;
    for (int p = 0; p < pointCount; ++p) {
        const float px = points[p].x, py = points[p].y, pz = points[p].z;
        for (int i = 0; i < n; ++i) {
            const float dx = x[i] - px, dy = y[i] - py, dz = z[i] - pz;
            const float q = dx * dx + dy * dy + dz * dz;
            const float near = power / q - 1.0f;
            const float t = q > 0.0f ? near : 1000.0f;
            sums[i] += t > 0.0f ? t : 0.0f;
        }
    }
}

static void Ramp(float* v, int n, float contrast, float& lowest, float& highest) {
    const float k = 1.0f - contrast;
    const float low = 0.5f - k, high = 0.5f + k, width = 2.0f * k;
    for (int i = 0; i < n; ++i) {
        const float whole = v[i] / 255.0f;
        const float value = whole < 1.0f ? whole : 1.0f;
        const float between = (value - low) / width;
        const float risen = value >= high ? 1.0f : between;
        v[i] = value <= low ? 0.0f : risen;
    }
    // Floats from 0 up are in the order of their bits, and integers have vector minimum and maximum.
    std::int32_t least, most;
    std::memcpy(&least, &lowest, sizeof least);
    std::memcpy(&most, &highest, sizeof most);
    for (int i = 0; i < n; ++i) {
        std::int32_t bits;
        std::memcpy(&bits, &v[i], sizeof bits);
        least = bits < least ? bits : least;
        most = bits > most ? bits : most;
    }
    std::memcpy(&lowest, &least, sizeof least);
    std::memcpy(&highest, &most, sizeof most);
}

static void PaletteEntries(const float* SKYVAULT_RESTRICT v, int n, float lowest, float highest, int entries,
                           std::int32_t* SKYVAULT_RESTRICT numbers) {
    const bool spread = highest > lowest;
    const float from = spread ? lowest : 0.0f;
    const float range = spread ? highest - lowest : 1.0f;
    const float last = static_cast<float>(entries - 1);
    for (int i = 0; i < n; ++i) {
        const float position = (v[i] - from) / range * last;
        const float above = position > 0.0f ? position : 0.0f;
        numbers[i] = static_cast<std::int32_t>(above < last ? above : last);
    }
}

static void AddLight(const DirectionBlock& directions, int n, const Light& light, const LightSpread& spread,
                     float* SKYVAULT_RESTRICT red, float* SKYVAULT_RESTRICT green,
                     float* SKYVAULT_RESTRICT blue) {
    alignas(64) float cosines[kBlockSize];
    const float* SKYVAULT_RESTRICT x = directions.x;
    const float* SKYVAULT_RESTRICT y = directions.y;
    const float* SKYVAULT_RESTRICT z = directions.z;
    const float lx = light.direction.x, ly = light.direction.y, lz = light.direction.z;
    const float darkUpTo = spread.darkUpTo;
    std::int32_t lit = 0;
    for (int i = 0; i < n; ++i) {
        const float dot = x[i] * lx + y[i] * ly + z[i] * lz;
        cosines[i] = dot > 0.0f ? dot : 0.0f;
        lit |= cosines[i] > darkUpTo ? 1 : 0;
    }
    if (lit == 0) return;
    if (!spread.plain) {
        const double width = spread.spread;
        for (int i = 0; i < n; ++i) {
            const float s = static_cast<float>(1.0 - (1.0 - static_cast<double>(cosines[i])) / width);
            cosines[i] = s > 0.0f ? s : 0.0f;
        }
    }
    const float lightRed = light.red, lightGreen = light.green, lightBlue = light.blue;
    for (int i = 0; i < n; ++i) {
        red[i] += cosines[i] * lightRed;
        green[i] += cosines[i] * lightGreen;
        blue[i] += cosines[i] * lightBlue;
    }
}

static void PackColours(const float* SKYVAULT_RESTRICT red, const float* SKYVAULT_RESTRICT green,
                        const float* SKYVAULT_RESTRICT blue, int n,
                        std::uint32_t* SKYVAULT_RESTRICT colours) {
    for (int i = 0; i < n; ++i) {
        const std::int32_t r = static_cast<std::int32_t>(red[i] < 255.0f ? red[i] : 255.0f);
        const std::int32_t g = static_cast<std::int32_t>(green[i] < 255.0f ? green[i] : 255.0f);
        const std::int32_t b = static_cast<std::int32_t>(blue[i] < 255.0f ? blue[i] : 255.0f);
        colours[i] = static_cast<std::uint32_t>(b | g << 8 | r << 16) | 0xff000000u;
    }
}

static void RectanglesInRun(const RectanglePlanes& planes, const Direction& from, const Direction& to,
                            std::int32_t* SKYVAULT_RESTRICT seen) {
    // Pixels of a row lie on a straight line, so a line that begins and ends behind a plane stays there. The
    // margin is far above what rounding can do to unit vectors.
    constexpr float kBehind = -1e-5f;
    const float fx = from.x, fy = from.y, fz = from.z, tx = to.x, ty = to.y, tz = to.z;
    const int count = planes.count;
    for (int k = 0; k < count; ++k) seen[k] = 1;
    for (int edge = 0; edge < 4; ++edge) {
        const float* SKYVAULT_RESTRICT x = planes.x[edge];
        const float* SKYVAULT_RESTRICT y = planes.y[edge];
        const float* SKYVAULT_RESTRICT z = planes.z[edge];
        for (int k = 0; k < count; ++k) {
            const float begin = x[k] * fx + y[k] * fy + z[k] * fz;
            const float end = x[k] * tx + y[k] * ty + z[k] * tz;
            const float nearer = begin > end ? begin : end;
            seen[k] = nearer < kBehind ? 0 : seen[k];
        }
    }
}

static bool CoverRectangle(const DirectionBlock& directions, int n, const RectanglePlanes& planes, int k,
                           std::int32_t* SKYVAULT_RESTRICT owners) {
    const float* SKYVAULT_RESTRICT x = directions.x;
    const float* SKYVAULT_RESTRICT y = directions.y;
    const float* SKYVAULT_RESTRICT z = directions.z;
    const float x0 = planes.x[0][k], y0 = planes.y[0][k], z0 = planes.z[0][k];
    const float x1 = planes.x[1][k], y1 = planes.y[1][k], z1 = planes.z[1][k];
    const float x2 = planes.x[2][k], y2 = planes.y[2][k], z2 = planes.z[2][k];
    const float x3 = planes.x[3][k], y3 = planes.y[3][k], z3 = planes.z[3][k];
    std::int32_t open = 0;
    for (int i = 0; i < n; ++i) {
        const float a = x[i] * x0 + y[i] * y0 + z[i] * z0;
        const float b = x[i] * x1 + y[i] * y1 + z[i] * z1;
        const float c = x[i] * x2 + y[i] * y2 + z[i] * z2;
        const float d = x[i] * x3 + y[i] * y3 + z[i] * z3;
        const float ab = a < b ? a : b;
        const float cd = c < d ? c : d;
        const float least = ab < cd ? ab : cd;
        const std::int32_t owner = owners[i];
        const std::int32_t taken = least >= 0.0f ? k : owner;
        const std::int32_t now = owner < 0 ? taken : owner;
        owners[i] = now;
        open |= now;
    }
    return open < 0;
}

const FieldKernels kFieldKernels = {
    .pull = Pull,
    .ramp = Ramp,
    .paletteEntries = PaletteEntries,
    .addLight = AddLight,
    .packColours = PackColours,
    .rectanglesInRun = RectanglesInRun,
    .coverRectangle = CoverRectangle,
};

}  // namespace skyvault::KERNEL_SET
