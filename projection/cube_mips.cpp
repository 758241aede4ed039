#include "projection/cube_mips.h"

#include <bit>
#include <cassert>
#include <cmath>
#include <utility>

#include "image/pixel_rows.h"
#include "platform/mvector.h"

namespace skyvault {
namespace {

// --- the mean over the sphere ------------------------------------------------------------------------------

/// A clear pixel counts this little beside an opaque one: enough to colour a texel that is all clear.
constexpr float kLeastShare = 1.0f / 4096;

/// Sums of a row of texels, over all the pixels of the face that lie in each.
struct SumRow {
    float* red;  ///< each pixel times its solid angle and its alpha
    float* green;
    float* blue;
    float* shown;   ///< solid angles times alpha
    float* weight;  ///< solid angles
};

/// The rows at work: of each level the two that become one of the next.
class SumRows {
  public:
    bool Allocate(std::uint32_t faceSize) {
        faceSize_ = faceSize;
        // 2 · 5 · (N + N / 2 + … + 1)
        return sums_.Resize(static_cast<std::int32_t>(20 * faceSize), false);
    }
    SumRow Row(std::uint32_t level, std::uint32_t row) {
        const std::uint32_t width = faceSize_ >> level;
        float* const first = sums_.Data() + 20 * (faceSize_ - width) + 5 * width * (row & 1);
        return {first, first + width, first + 2 * width, first + 3 * width, first + 4 * width};
    }

  private:
    std::uint32_t faceSize_ = 0;
    MVector<float> sums_;
};

template <typename Channel>
float ToFloat(Channel value) {
    if constexpr (std::is_same_v<Channel, Half>) {
        return HalfToFloat(value);
    } else {
        return static_cast<float>(static_cast<int>(value));
    }
}

/// Rounded to the nearest and kept within an integer's range.
template <typename Channel>
Channel FromFloat(float value) {
    if constexpr (std::is_same_v<Channel, Half>) {
        return FloatToHalf(value);
    } else {
        constexpr float kMost = sizeof(Channel) == 1 ? 255.0f : 65535.0f;
        const float rounded = value + 0.5f;
        const float atLeast0 = rounded > 0.0f ? rounded : 0.0f;
        return static_cast<Channel>(static_cast<int>(atLeast0 < kMost ? atLeast0 : kMost));
    }
}

/// A row of the face itself.
template <typename Format>
void SumPixels(const Image& face, std::uint32_t y, bool withAlpha, const SumRow& sums) {
    const int width = static_cast<int>(face.width);
    const float pixel = 2.0f / static_cast<float>(width);
    const float v = (static_cast<float>(y) + 0.5f) * pixel - 1.0f;
    const float opaque = ToFloat(Format::Kind::kOpaque);
    const std::byte* const row = face.Row(y);
    for (int x = 0; x < width; ++x) {
        const std::byte* const p = row + static_cast<std::size_t>(x) * Format::kBytes;
        // The solid angle of a pixel falls with the third power of its distance.
        const float u = (static_cast<float>(x) + 0.5f) * pixel - 1.0f;
        const float squared = 1.0f + u * u + v * v;
        const float weight = 1.0f / (squared * std::sqrt(squared));
        float shown = weight;
        if constexpr (Format::kChannels == 4) {
            float alpha = ToFloat(Format::Get(p, 3)) / opaque;
            alpha = alpha > 0.0f ? alpha : 0.0f;
            alpha = alpha < 1.0f ? alpha : 1.0f;
            if (withAlpha) shown = weight * (alpha + kLeastShare);
        }
        sums.red[x] = ToFloat(Format::Get(p, Format::kRed)) * shown;
        sums.green[x] = ToFloat(Format::Get(p, Format::kGreen)) * shown;
        sums.blue[x] = ToFloat(Format::Get(p, Format::kBlue)) * shown;
        sums.shown[x] = shown;
        sums.weight[x] = weight;
    }
}

/// Two rows to one of half the width.
void Halve(const SumRow& upper, const SumRow& lower, std::uint32_t width, const SumRow& sums) {
    const auto halve = [width](const float* a, const float* b, float* to) {
        for (std::uint32_t x = 0; x < width / 2; ++x)
            to[x] = (a[2 * x] + a[2 * x + 1]) + (b[2 * x] + b[2 * x + 1]);
    };
    halve(upper.red, lower.red, sums.red);
    halve(upper.green, lower.green, sums.green);
    halve(upper.blue, lower.blue, sums.blue);
    halve(upper.shown, lower.shown, sums.shown);
    halve(upper.weight, lower.weight, sums.weight);
}

template <typename Format>
void StoreMeans(const SumRow& sums, bool withAlpha, Image& level, std::uint32_t y) {
    using Channel = typename Format::Channel;
    std::byte* p = level.Row(y);
    for (std::uint32_t x = 0; x < level.width; ++x, p += Format::kBytes) {
        Format::Set(p, Format::kRed, FromFloat<Channel>(sums.red[x] / sums.shown[x]));
        if constexpr (Format::kChannels >= 3) {
            Format::Set(p, Format::kGreen, FromFloat<Channel>(sums.green[x] / sums.shown[x]));
            Format::Set(p, Format::kBlue, FromFloat<Channel>(sums.blue[x] / sums.shown[x]));
        }
        if constexpr (Format::kChannels == 4) {
            const float share = withAlpha ? sums.shown[x] / sums.weight[x] - kLeastShare : 1.0f;
            Format::Set(p, 3, FromFloat<Channel>(share * ToFloat(Format::Kind::kOpaque)));
        }
    }
}

template <typename Format>
void MakeLevels(const Image& face, bool withAlpha, SumRows& rows, std::vector<Image>& levels) {
    for (std::uint32_t y = 0; y < face.height; ++y) {
        SumPixels<Format>(face, y, withAlpha, rows.Row(0, y));
        // Every second row of a level completes one of the next.
        std::uint32_t row = y;
        for (std::uint32_t level = 1; level <= levels.size() && (row & 1); ++level) {
            const SumRow sums = rows.Row(level, row / 2);
            Halve(rows.Row(level - 1, 0), rows.Row(level - 1, 1), face.width >> (level - 1), sums);
            row /= 2;
            StoreMeans<Format>(sums, withAlpha, levels[level - 1], row);
        }
    }
}

// --- edges -------------------------------------------------------------------------------------------------

struct Texel {
    int face, column, row;
};

/// Where a texel lies on a cube of 2 N: in units of half a texel from the cube's middle.
using CubePoint = std::array<int, 3>;

CubePoint PointOf(const Texel& texel, int size) {
    const int a = 2 * texel.column + 1 - size, b = 2 * texel.row + 1 - size;
    switch (static_cast<CubeFace>(texel.face)) {
        case CubeFace::Front:
            return {a, -b, size};
        case CubeFace::Right:
            return {size, -b, -a};
        case CubeFace::Back:
            return {-a, -b, -size};
        case CubeFace::Left:
            return {-size, -b, a};
        case CubeFace::Top:
            return {a, size, b};
        case CubeFace::Bottom:
            break;
    }
    return {a, -size, -b};
}

Texel TexelAt(const CubePoint& point, int size) {
    const auto [x, y, z] = point;
    const auto texel = [size](CubeFace face, int a, int b) {
        return Texel{static_cast<int>(face), (a + size - 1) / 2, (b + size - 1) / 2};
    };
    if (z == size) return texel(CubeFace::Front, x, -y);
    if (x == size) return texel(CubeFace::Right, -z, -y);
    if (z == -size) return texel(CubeFace::Back, -x, -y);
    if (x == -size) return texel(CubeFace::Left, z, -y);
    if (y == size) return texel(CubeFace::Top, x, z);
    return texel(CubeFace::Bottom, x, -z);
}

/// The texels that touch across the cube's edges: two, or the three around a corner; of the smallest level
/// all.
struct TouchingTexels {
    std::array<Texel, kFaceCount> texels;
    std::size_t count = 0;
};

TouchingTexels TexelsAround(const Texel& texel, int size) {
    TouchingTexels touching;
    if (size == 1) {
        for (int face = 0; face < kFaceCount; ++face) touching.texels[touching.count++] = {face, 0, 0};
        return touching;
    }
    const CubePoint point = PointOf(texel, size);
    touching.texels[touching.count++] = texel;
    std::size_t depth = 0;
    while (std::abs(point[depth]) != size) ++depth;
    for (std::size_t axis = 0; axis < point.size(); ++axis) {
        if (std::abs(point[axis]) != size - 1) continue;
        // Around the edge: what was half a texel inside it becomes the face.
        CubePoint beyond = point;
        beyond[axis] = point[axis] > 0 ? size : -size;
        beyond[depth] = point[depth] > 0 ? size - 1 : 1 - size;
        touching.texels[touching.count++] = TexelAt(beyond, size);
    }
    return touching;
}

template <typename Format>
void Unify(const TouchingTexels& touching, std::array<Image*, kFaceCount>& faces) {
    const auto address = [&](const Texel& texel) {
        return faces[static_cast<std::size_t>(texel.face)]->PixelAddress(texel.column, texel.row);
    };
    for (int channel = 0; channel < Format::kChannels; ++channel) {
        float sum = 0;
        for (std::size_t i = 0; i < touching.count; ++i)
            sum += ToFloat(Format::Get(address(touching.texels[i]), channel));
        const auto mean = FromFloat<typename Format::Channel>(sum / static_cast<float>(touching.count));
        for (std::size_t i = 0; i < touching.count; ++i)
            Format::Set(address(touching.texels[i]), channel, mean);
    }
}

void MatchEdges(std::array<Image*, kFaceCount>& faces) {
    const int size = static_cast<int>(faces[0]->width), last = size - 1;
    WithFormat(faces[0]->format, [&](auto tag) {
        for (int face = 0; face < kFaceCount; ++face) {
            for (int i = 0; i < size; ++i) {
                for (const auto& [column, row] :
                     {std::pair{i, 0}, std::pair{i, last}, std::pair{0, i}, std::pair{last, i}})
                    Unify<FormatTraits<tag.value>>(TexelsAround({face, column, row}, size), faces);
            }
        }
    });
}

}  // namespace

bool CubeMips::Add(CubeFace which, const Image& face, bool withAlpha) {
    assert(std::has_single_bit(face.width) && face.width == face.height);
    std::vector<Image>& levels = levels_[static_cast<std::size_t>(which)];
    for (std::uint32_t size = face.width / 2; size > 0; size /= 2) {
        levels.emplace_back(size, size, face.format);
        if (!levels.back().IsValid()) return false;
    }
    SumRows rows;
    if (!rows.Allocate(face.width)) return false;
    WithFormat(face.format,
               [&](auto tag) { MakeLevels<FormatTraits<tag.value>>(face, withAlpha, rows, levels); });
    if (++count_ < kFaceCount) return true;
    for (std::size_t level = 0; level < levels.size(); ++level) {
        std::array<Image*, kFaceCount> faces;
        for (std::size_t f = 0; f < faces.size(); ++f) faces[f] = &levels_[f][level];
        MatchEdges(faces);
    }
    return true;
}

Image CubeMips::Take(CubeFace which, std::uint32_t level) {
    return std::move(levels_[static_cast<std::size_t>(which)].at(level - 1));
}

}  // namespace skyvault
