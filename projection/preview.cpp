#include "projection/preview.h"

#include "image/numeric.h"
#include "image/picture_size.h"
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

bool ExportPreview(Panorama& panorama, const std::wstring& path, const Camera& camera,
                   std::wstring& infoLog) {
    const bool forScreen = path.empty();
    const PixelFormat format = ExportPixelFormat(panorama, forScreen);
    if (format == PixelFormat::None || panorama.IsEmpty()) return false;
    PictureSize size = PreviewSize(panorama.settings.resolution3);
    if (forScreen) {
        if (!panorama.viewTarget) return false;
        const ClientSize client = panorama.viewTarget->Size();
        if (client.width < 1 || client.height < 1) return false;
        size = FitInto(size,
                       {static_cast<std::uint32_t>(client.width), static_cast<std::uint32_t>(client.height)});
        if (size.width < 1 || size.height < 1) return false;
    }
    const Matrix4 turn = YawPitchRollMatrix(camera.heading, camera.pitch, camera.roll);
    const float focalDepth = FocalDepth(size.width, panorama.settings.previewFov);
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
    RenderOptions options;
    options.format = format;
    if (!RenderLayout(panorama, grid, options, panorama.resultPicture)) return false;
    return DeliverResult(panorama, path, infoLog);
}

}  // namespace skyvault
