#include "projection/square_export.h"

#include <algorithm>

#include "projection/export_size.h"

namespace skyvault {

Outcome RenderSquare(const Panorama& panorama, const ExportRequest& request, Feedback& feedback,
                     const SquareShape& shape, Image& result) {
    RenderOptions options;
    Outcome asked = FormatOfExport(panorama, request, options.format);
    if (!asked.IsDone()) return asked;
    constexpr std::int32_t kLargestFace = 0x3fffffff;
    std::int32_t size = ChooseExportSize(request, SizeKind::Square,
                                         2 * std::min(SourceFaceSize(panorama), kLargestFace), feedback);
    if (request.IsView()) size = std::min({size, request.client->width, request.client->height});
    options.halve = request.settings.antialiasing && !request.IsView();
    options.emptyColour = EmptyColour(request.settings);
    const LayoutGrid grid = shape(static_cast<std::uint32_t>(options.halve ? 2 * size : size));
    return RenderLayout(panorama, grid, options, result);
}

}  // namespace skyvault
