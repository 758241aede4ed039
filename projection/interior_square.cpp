#include "projection/interior_square.h"

#include <algorithm>
#include <cmath>

#include "projection/face_import.h"
#include "projection/square_export.h"

namespace skyvault {

namespace {

constexpr float kThird = 0.33333334f;

/// Picture position of a face position.
struct PicturePosition {
    float u, v;
};

PicturePosition OnPicture(CubeFace face, float a, float b) {
    const float across = 2.0f * a - 1.0f, down = 2.0f * b - 1.0f;
    switch (face) {
        case CubeFace::Front:
            return {across * kThird, down * kThird};
        case CubeFace::Right: {
            const float t = 1.0f / (1.0f - 2.0f * a + 2.0f);
            return {t, down * t};
        }
        case CubeFace::Left: {
            const float t = 1.0f / (2.0f * a - 1.0f + 2.0f);
            return {-t, down * t};
        }
        case CubeFace::Top: {
            const float t = 1.0f / (2.0f * b - 1.0f + 2.0f);
            return {across * t, -t};
        }
        case CubeFace::Bottom: {
            const float t = 1.0f / (1.0f - 2.0f * b + 2.0f);
            return {across * t, t};
        }
        case CubeFace::Back:
            break;
    }
    return {0.0f, 0.0f};
}

/// The picture's pixel at a position, 0 .. size − 1 even where it is not as high as wide.
std::int32_t PixelAt(float position, float size) {
    const float pixel = size * position * 0.5f + size * 0.5f;
    return static_cast<std::int32_t>(std::clamp(pixel, 0.0f, size - 1.0f));
}

/// Where on a face of N pixels a position of 0..1 lies, from −1 to 1. The lookup reads pixel p of the face at
/// (2p + 2 − N)/(N − 1) and around it, so that is where pixel p's place in the picture has to look.
struct FaceScale {
    float size, reciprocal, limit;

    explicit FaceScale(std::uint32_t faceSize)
        : size(static_cast<float>(faceSize)),
          reciprocal(faceSize > 1 ? 1.0f / static_cast<float>(faceSize - 1) : 0.0f),
          limit(std::max(size - 2.0f, 0.0f) * reciprocal) {}

    float operator()(float position) const {
        const float vector = (2.0f * position * size + 2.0f - size) * reciprocal;
        return std::min(std::max(vector, -limit), limit);
    }
};

/// Positions of the pixels' centres along the picture's edge, −1..1.
struct PixelCentres {
    float reciprocal;  ///< 1 / size

    float operator()(int pixel) const {
        return (2.0f * static_cast<float>(pixel) + 1.0f) * reciprocal - 1.0f;
    }
};

/// The inverse of OnPicture, over rows of a square picture.
class SquareRows {
  public:
    SquareRows(std::uint32_t size, std::uint32_t faceSize)
        : centres_{1.0f / static_cast<float>(size)}, scale_(faceSize) {}

    void Directions(int row, int first, int count, DirectionBlock& block) const {
        const float v = centres_(row);
        // Copies, which the stores below cannot change.
        const FaceScale scale = scale_;
        const PixelCentres centres = centres_;
        // From the left: the left wall, then the front wall or the one above or below it, then the right.
        const float sideFrom = std::max(std::fabs(v), kThird);
        const int left = CountBelow(-sideFrom, first, count);
        const int middle = CountBelow(sideFrom, first, count);
        const bool front = std::fabs(v) < kThird;
        float* x = block.x;
        float* y = block.y;
        float* z = block.z;
        for (int i = 0; i < left; ++i) {
            const float reciprocal = -1.0f / centres(first + i);
            x[i] = -1.0f;
            y[i] = -scale((v * reciprocal + 1.0f) * 0.5f);
            z[i] = scale((reciprocal - 1.0f) * 0.5f);
        }
        if (front) {
            const float down = -scale((3.0f * v + 1.0f) * 0.5f);
            for (int i = left; i < middle; ++i) {
                x[i] = scale((3.0f * centres(first + i) + 1.0f) * 0.5f);
                y[i] = down;
                z[i] = 1.0f;
            }
        } else {
            const float reciprocal = 1.0f / std::fabs(v);
            const float up = v < 0.0f ? 1.0f : -1.0f;
            const float away =
                v < 0.0f ? scale((reciprocal - 1.0f) * 0.5f) : -scale((3.0f - reciprocal) * 0.5f);
            for (int i = left; i < middle; ++i) {
                x[i] = scale((centres(first + i) * reciprocal + 1.0f) * 0.5f);
                y[i] = up;
                z[i] = away;
            }
        }
        for (int i = middle; i < count; ++i) {
            const float reciprocal = 1.0f / centres(first + i);
            x[i] = 1.0f;
            y[i] = -scale((v * reciprocal + 1.0f) * 0.5f);
            z[i] = -scale((3.0f - reciprocal) * 0.5f);
        }
    }

  private:
    /// How many of the pixels first .. first + count − 1 lie left of a position (the lesser wall's pixels
    /// included on a tie).
    int CountBelow(float position, int first, int count) const {
        int low = 0, high = count;
        while (low < high) {
            const int middle = (low + high) / 2;
            if (centres_(first + middle) <= position) {
                low = middle + 1;
            } else {
                high = middle;
            }
        }
        return low;
    }

    PixelCentres centres_;
    FaceScale scale_;
};

}  // namespace

Outcome ImportInteriorSquare(const ImportRequest& request, Feedback& feedback, Panorama& panorama) {
    Image picture;
    Outcome loaded = LoadLayoutPicture(request, feedback, picture);
    if (!loaded.IsDone()) return loaded;
    const PixelFormat format = request.settings.transparency ? WithAlpha(picture.format) : picture.format;
    const float size = static_cast<float>(picture.width);
    return CreateFaces(panorama, picture.width, format, feedback, [&](CubeFace which, Image& face) {
        if (which == CubeFace::Back) {
            face.Fill(PixelValue(EmptyColour(request.settings)));
            return;
        }
        FillFace(face, picture,
                 [&](std::uint32_t row, std::uint32_t first, int count, std::int32_t* columns,
                     std::int32_t* rows) {
                     const float b = static_cast<float>(row) / size;
                     for (int i = 0; i < count; ++i) {
                         const float a = static_cast<float>(first + static_cast<std::uint32_t>(i)) / size;
                         const PicturePosition position = OnPicture(which, a, b);
                         columns[i] = PixelAt(position.u, size);
                         rows[i] = PixelAt(position.v, size);
                     }
                 });
    });
}

Outcome RenderInteriorSquare(const Panorama& panorama, const ExportRequest& request, Feedback& feedback,
                             Image& result) {
    const SquareShape shape = [&](std::uint32_t size) {
        const SquareRows rows(size, panorama.faceSize);
        return LayoutGrid{
            size, size,
            [rows](std::uint32_t row, std::uint32_t first, int count, DirectionBlock& block, std::uint8_t*) {
                rows.Directions(static_cast<int>(row), static_cast<int>(first), count, block);
                return Coverage::All;
            }};
    };
    return RenderSquare(panorama, request, feedback, shape, result);
}

}  // namespace skyvault
