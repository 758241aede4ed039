#include "projection/preview.h"

#include "image/image.h"
#include "platform/numeric.h"
#include "projection/render_layout.h"

namespace skyvault {

namespace {

PictureSize PreviewSize(std::int32_t index) {
    switch (index) {
        case 1:
            return {1920, 1080};
        case 2:
            return {3840, 2160};
        case 3:
            return {7680, 4320};
        default:
            return {1280, 720};
    }
}

/// A settings file may hold anything, and the steps of the menu multiply without end. Beyond the limit every
/// pixel looks straight ahead anyway, and the squares of a direction would leave what a float holds.
float FocalDepth(std::uint32_t width, float previewFov) {
    constexpr float kLimit = 1e18f;
    return ClampFloat(static_cast<float>(width) * previewFov, -kLimit, kLimit);
}

}  // namespace

Outcome RenderPreview(const Panorama& panorama, const ExportRequest& request, Feedback&, Image& result) {
    RenderOptions options;
    Outcome asked = FormatOfExport(panorama, request, options.format);
    if (!asked.IsDone()) return asked;
    PictureSize size = PreviewSize(request.settings.resolution3);
    if (request.IsView()) {
        size = FitInto(size, {static_cast<std::uint32_t>(request.client->width),
                              static_cast<std::uint32_t>(request.client->height)});
        if (size.width < 1 || size.height < 1) return Failure(Reason::NothingToShow);
    }
    const Camera& camera = request.camera;
    const Matrix4 turn = YawPitchRollMatrix(camera.heading, camera.pitch, camera.roll);
    const float focalDepth = FocalDepth(size.width, request.settings.previewFov);
    const std::int32_t halfWidth = static_cast<std::int32_t>(size.width / 2);
    const std::int32_t halfHeight = static_cast<std::int32_t>(size.height / 2);
    const RowKernels& kernels = Kernels();
    const LayoutGrid grid{
        size.width, size.height,
        [&](std::uint32_t row, std::uint32_t first, int count, DirectionBlock& block, std::uint8_t*) {
            const float y = static_cast<float>(halfHeight - static_cast<std::int32_t>(row));
            const std::int32_t left = static_cast<std::int32_t>(first) - halfWidth;
            for (int i = 0; i < count; ++i) {
                block.x[i] = static_cast<float>(left + i);
                block.y[i] = y;
                block.z[i] = focalDepth;
            }
            if (!turn.isIdentity) kernels.transform(block.x, block.y, block.z, count, turn);
            return Coverage::All;
        }};
    options.emptyColour = EmptyColour(request.settings);
    return RenderLayout(panorama, grid, options, result);
}

}  // namespace skyvault
