#include "projection/build_faces.h"

#include "image/bleed_alpha.h"
#include "image/mvector.h"
#include "projection/resize_image.h"

namespace skyvault {

namespace {

/// Positions along a face's edge: pixel p of the panorama's own grid sits at p · s − c. False without memory.
bool EdgePositions(std::uint32_t faceSize, std::uint32_t size, MVector<float>& positions) {
    const std::int32_t count = static_cast<std::int32_t>(size);
    if (!positions.Resize(count, false)) return false;
    const std::int32_t n = static_cast<std::int32_t>(faceSize);
    const float c = static_cast<float>(n - 2) / static_cast<float>(n - 1);
    const float s = 2.0f * c / static_cast<float>(n - 1);
    for (std::int32_t i = 0; i < count; ++i) {
        const std::int64_t p = std::int64_t{faceSize} * i / size;
        positions[i] = static_cast<float>(p) * s - c;
    }
    return true;
}

/// Writes the vectors to the pixels of one row of a face: a runs along the columns, b is the row's.
void FaceRow(CubeFace which, const float* a, float b, int count, DirectionBlock& block) {
    float* x = block.x;
    float* y = block.y;
    float* z = block.z;
    const auto fill = [count](float* v, float value) {
        for (int i = 0; i < count; ++i) v[i] = value;
    };
    const auto along = [a, count](float* v) {
        for (int i = 0; i < count; ++i) v[i] = a[i];
    };
    const auto against = [a, count](float* v) {
        for (int i = 0; i < count; ++i) v[i] = -a[i];
    };
    switch (which) {
        case CubeFace::Front:
            along(x), fill(y, -b), fill(z, 1.0f);
            return;
        case CubeFace::Right:
            fill(x, 1.0f), fill(y, -b), against(z);
            return;
        case CubeFace::Back:
            against(x), fill(y, -b), fill(z, -1.0f);
            return;
        case CubeFace::Left:
            fill(x, -1.0f), fill(y, -b), along(z);
            return;
        case CubeFace::Top:
            along(x), fill(y, 1.0f), fill(z, b);
            return;
        case CubeFace::Bottom:
            along(x), fill(y, -1.0f), fill(z, -b);
            return;
    }
}

}  // namespace

bool BuildFace(Panorama& panorama, Image& face, CubeFace which, std::uint32_t size, PixelFormat format) {
    MVector<float> positions;
    if (!EdgePositions(panorama.faceSize, size, positions)) {
        panorama.feedback.Error(L"Out of memory");
        return false;
    }
    const RowKernels& kernels = Kernels();
    LayoutGrid grid{
        size, size,
        [&](std::uint32_t row, std::uint32_t first, int count, DirectionBlock& block, std::uint8_t*) {
            if (panorama.faceSize == 0) {
                // A source less than four pixels wide has no grid: every pixel looks along the zero vector.
                block = {};
                return Coverage::All;
            }
            FaceRow(which, positions.Data() + first, positions.Data()[row], count, block);
            // Face directions are unit vectors by definition; the sampler normalises once more.
            kernels.normalize(block.x, block.y, block.z, count);
            return Coverage::All;
        }};
    RenderOptions options;
    options.format = format;
    if (!RenderLayout(panorama, grid, options, face)) return false;
    BleedAlpha(face);
    return true;
}

void AntialiasFaces(Panorama& panorama, float factor) {
    if (!(factor > 0.0f)) return;
    const float scaled = static_cast<float>(panorama.faceSize) * factor;
    panorama.faceSize = scaled < 4294967040.0f ? static_cast<std::uint32_t>(scaled) : 0;
    for (int f = 0; f < kFaceCount; ++f) {
        if (panorama.feedback.ProgressActive()) {
            panorama.feedback.SetProgress(static_cast<float>(f + 1) / 6.0f, L"Antialiasing cube faces...");
        }
        Image& face = panorama.faces[static_cast<std::size_t>(f)];
        Image resized = ResizeImage(face, panorama.faceSize, panorama.faceSize, face.format, true, false);
        if (resized.IsValid()) face = std::move(resized);
    }
}

}  // namespace skyvault
