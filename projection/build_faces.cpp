#include "projection/build_faces.h"

#include "image/bleed_alpha.h"
#include "platform/mvector.h"
#include "projection/face_rows.h"
#include "projection/resize_image.h"

namespace skyvault {

namespace {

/// Positions of a face's pixels when its edge of faceSize pixels is scaled to `size`. False without memory.
bool EdgePositions(std::uint32_t faceSize, std::uint32_t size, MVector<float>& positions) {
    const std::int32_t count = static_cast<std::int32_t>(size);
    if (!positions.Resize(count, false)) return false;
    const EdgeScale scale(static_cast<std::int32_t>(faceSize));
    for (std::int32_t i = 0; i < count; ++i) positions[i] = scale(std::int64_t{faceSize} * i / size);
    return true;
}

}  // namespace

Outcome BuildFace(const Panorama& panorama, Image& face, CubeFace which, std::uint32_t size,
                  PixelFormat format, const Color8& emptyColour) {
    MVector<float> positions;
    if (!EdgePositions(panorama.faceSize, size, positions)) return Failure(Reason::NoMemory);
    const LayoutGrid grid{
        size, size,
        [&](std::uint32_t row, std::uint32_t first, int count, DirectionBlock& block, std::uint8_t*) {
            if (panorama.faceSize == 0) {
                // A source less than four pixels wide has no grid: every pixel looks along the zero vector.
                block = {};
                return Coverage::All;
            }
            FaceRowVectors(which, positions.Data() + first, positions.Data()[row], count, block.x, block.y,
                           block.z);
            return Coverage::All;
        },
        true};
    RenderOptions options;
    options.format = format;
    options.emptyColour = emptyColour;
    Outcome rendered = RenderLayout(panorama, grid, options, face);
    if (rendered.IsDone()) BleedAlpha(face);
    return rendered;
}

Outcome AntialiasFaces(Panorama& panorama, float factor, Feedback& feedback) {
    if (!(factor > 0.0f)) return {};
    const float scaled = static_cast<float>(panorama.faceSize) * factor;
    panorama.faceSize = scaled < 4294967040.0f ? static_cast<std::uint32_t>(scaled) : 0;
    Outcome outcome;
    for (int f = 0; f < kFaceCount; ++f) {
        if (feedback.ProgressActive()) {
            feedback.SetProgress(static_cast<float>(f + 1) / 6.0f, L"Antialiasing cube faces...");
        }
        Image& face = panorama.faces[static_cast<std::size_t>(f)];
        Image resized = ResizeImage(face, panorama.faceSize, panorama.faceSize, face.format, true, false);
        if (resized.IsValid()) {
            face = std::move(resized);
        } else {
            outcome = Failure(Reason::NoMemory);
        }
    }
    return outcome;
}

}  // namespace skyvault
