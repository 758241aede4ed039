#include "app/logo_preview.h"

#include "app/draw_canvas.h"
#include "app/presenting.h"
#include "image/picture_files.h"
#include "platform/files.h"

namespace skyvault {
namespace {

/// Larger pictures are read at this size: several times that of the preview, which averages them down.
constexpr std::uint32_t kLargestRead = 512;

}  // namespace

bool LogoPreview::SetPath(const std::wstring& path) {
    if (path == path_) return false;
    path_ = path;
    const bool wasEmpty = !picture_.IsValid();
    picture_.Clear();
    // While a path is being typed it mostly names nothing yet.
    if (FileExists(path)) picture_ = LoadPicture(path, 0, kLargestRead, kLargestRead);
    return picture_.IsValid() || !wasEmpty;
}

void LogoPreview::Draw(HDC context, const RECT& rect) const {
    FillRect(context, &rect, GetSysColorBrush(COLOR_BTNFACE));
    if (!picture_.IsValid()) return;
    const COLORREF face = GetSysColor(COLOR_BTNFACE);
    const Color8 around(GetRValue(face), GetGValue(face), GetBValue(face), 255);
    DrawCanvas canvas(context, rect);
    PresentPicture(canvas, {rect.right - rect.left, rect.bottom - rect.top}, picture_, around, false);
}

}  // namespace skyvault
