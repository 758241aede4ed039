#include "projection/layout_requests.h"

namespace skyvault {

Outcome FormatOfExport(const Panorama& panorama, const ExportRequest& request, PixelFormat& format) {
    const bool roomless = request.IsView() && (request.client->width < 1 || request.client->height < 1);
    if (panorama.IsEmpty() || roomless) return Failure(Reason::NothingToShow);
    if (request.IsView()) {
        format = request.settings.transparency ? PixelFormat::Rgba8 : PixelFormat::Rgb8;
    } else {
        format = SourceFormat(panorama);
    }
    return format != PixelFormat::None ? Outcome{} : Failure(Reason::NoFrontFace);
}

}  // namespace skyvault
