#include "projection/square_export.h"

#include <algorithm>

#include "projection/export_size.h"

namespace skyvault {

bool ExportSquare(Panorama& panorama, const std::wstring& path, const SquareShape& shape,
                  std::wstring& infoLog) {
    const bool forScreen = path.empty();
    RenderOptions options;
    options.format = ExportPixelFormat(panorama, forScreen);
    if (options.format == PixelFormat::None || panorama.IsEmpty()) return false;
    constexpr std::uint32_t kLargestSource = 0x3fffffff;
    const std::int32_t sourceSize =
        static_cast<std::int32_t>(2 * std::min(panorama.faceSize, kLargestSource));
    std::int32_t size = ChooseExportSize(panorama, SizeKind::Square, sourceSize, false, !forScreen);
    if (forScreen) {
        if (!panorama.viewTarget) return false;
        const ClientSize client = panorama.viewTarget->Size();
        size = std::min({size, client.width, client.height});
    }
    if (size < 1) return false;
    options.halve = panorama.settings.antialiasing && !forScreen;
    options.background = EmptyColour(panorama.settings);
    const LayoutGrid grid = shape(static_cast<std::uint32_t>(options.halve ? 2 * size : size));
    if (!RenderLayout(panorama, grid, options, panorama.resultPicture)) return false;
    return DeliverResult(panorama, path, infoLog);
}

}  // namespace skyvault
