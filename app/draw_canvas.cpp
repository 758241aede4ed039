#include "app/draw_canvas.h"

#include <algorithm>
#include <cmath>
#include <initializer_list>

#include "app/screen_picture.h"
#include "app/window_helpers.h"

namespace skyvault {
namespace {

int canvasesCreated = 0;
int deviceLossesToReport = 0;

/// Units are pixels whatever the screen's resolution: windows lay themselves out in pixels.
D2D1_RENDER_TARGET_PROPERTIES TargetProperties(D2D1_ALPHA_MODE alphaMode) {
    D2D1_RENDER_TARGET_PROPERTIES properties{};
    properties.type = D2D1_RENDER_TARGET_TYPE_DEFAULT;
    properties.pixelFormat = {DXGI_FORMAT_B8G8R8A8_UNORM, alphaMode};
    properties.dpiX = properties.dpiY = 96.0f;
    return properties;
}

D2D1_COLOR_F ToFloatColour(const Color8& colour) {
    constexpr float kScale = 0.003921569f;
    return {static_cast<float>(colour.red) * kScale, static_cast<float>(colour.green) * kScale,
            static_cast<float>(colour.blue) * kScale, static_cast<float>(colour.alpha) * kScale};
}

bool IsEmptyRect(const CanvasRect& rect) {
    return !(rect.right > rect.left && rect.bottom > rect.top);
}

bool HasFamily(IDWriteFontCollection& collection, const std::wstring& family) {
    UINT32 index = 0;
    BOOL exists = FALSE;
    return SUCCEEDED(collection.FindFamilyName(family.c_str(), &index, &exists)) && exists;
}

std::wstring FirstFamily(IDWriteFontCollection& collection) {
    ComPtr<IDWriteFontFamily> family;
    ComPtr<IDWriteLocalizedStrings> names;
    UINT32 length = 0;
    if (FAILED(collection.GetFontFamily(0, family.Put())) || FAILED(family->GetFamilyNames(names.Put())) ||
        FAILED(names->GetStringLength(0, &length))) {
        return {};
    }
    std::wstring name(length + 1, L'\0');
    if (FAILED(names->GetString(0, name.data(), length + 1))) return {};
    name.resize(length);
    return name;
}

/// What GDI takes for the name.
std::wstring SubstitutedFamily(const std::wstring& family) {
    const HDC context = CreateCompatibleDC(nullptr);
    const HFONT font =
        CreateFontW(-12, 0, 0, 0, FW_NORMAL, FALSE, FALSE, FALSE, DEFAULT_CHARSET, OUT_DEFAULT_PRECIS,
                    CLIP_DEFAULT_PRECIS, DEFAULT_QUALITY, DEFAULT_PITCH | FF_DONTCARE, family.c_str());
    wchar_t name[LF_FACESIZE] = L"";
    if (context != nullptr && font != nullptr) {
        const HGDIOBJ before = SelectObject(context, font);
        GetTextFaceW(context, LF_FACESIZE, name);
        SelectObject(context, before);
    }
    if (font != nullptr) DeleteObject(font);
    if (context != nullptr) DeleteDC(context);
    return name;
}

/// The family itself when the system's collection has it; else the one the system's own font substitution
/// gives ("MS Shell Dlg" is only such a name), else a common one that is there. DirectWrite draws nothing
/// for a family it cannot find.
std::wstring AvailableFamily(IDWriteFactory& factory, const std::wstring& family) {
    ComPtr<IDWriteFontCollection> collection;
    if (FAILED(factory.GetSystemFontCollection(collection.Put(), FALSE)) ||
        HasFamily(*collection.Get(), family)) {
        return family;
    }
    for (const std::wstring& other : {SubstitutedFamily(family), std::wstring(L"Segoe UI"),
                                      std::wstring(L"Tahoma"), std::wstring(L"Arial")}) {
        if (!other.empty() && HasFamily(*collection.Get(), other)) return other;
    }
    const std::wstring first = FirstFamily(*collection.Get());
    return first.empty() ? family : first;
}

}  // namespace

DrawCanvas::DrawCanvas(HWND window) {
    ++canvasesCreated;
    if (!GetClientRect(window, &target_) || !CreateFactories()) return;
    D2D1_HWND_RENDER_TARGET_PROPERTIES place{};
    place.hwnd = window;
    place.pixelSize = {static_cast<UINT32>(target_.right), static_cast<UINT32>(target_.bottom)};
    ID2D1HwndRenderTarget* target = nullptr;
    if (FAILED(drawing_->CreateHwndRenderTarget(TargetProperties(D2D1_ALPHA_MODE_IGNORE), place, &target)))
        return;
    renderTarget_ = ComPtr<ID2D1RenderTarget>::Attach(target);
    valid_ = true;
}

DrawCanvas::DrawCanvas(HDC context, const RECT& rect) : target_(rect) {
    ++canvasesCreated;
    if (!CreateFactories()) return;
    const D2D1_RENDER_TARGET_PROPERTIES properties = TargetProperties(D2D1_ALPHA_MODE_IGNORE);
    ID2D1DCRenderTarget* target = nullptr;
    if (FAILED(drawing_->CreateDCRenderTarget(&properties, &target))) return;
    renderTarget_ = ComPtr<ID2D1RenderTarget>::Attach(target);
    valid_ = SUCCEEDED(target->BindDC(context, &rect));
}

bool DrawCanvas::CreateFactories() {
    using CreateDrawing = HRESULT(WINAPI*)(D2D1_FACTORY_TYPE, REFIID, const D2D1_FACTORY_OPTIONS*, void**);
    using CreateWriting = HRESULT(WINAPI*)(DWRITE_FACTORY_TYPE, REFIID, IUnknown**);
    static CreateDrawing createDrawing = nullptr;
    static CreateWriting createWriting = nullptr;
    return FindSystemFunction(createDrawing, L"d2d1.dll", "D2D1CreateFactory") &&
           FindSystemFunction(createWriting, L"dwrite.dll", "DWriteCreateFactory") &&
           SUCCEEDED(createDrawing(D2D1_FACTORY_TYPE_SINGLE_THREADED, __uuidof(ID2D1Factory), nullptr,
                                   drawing_.PutVoid())) &&
           SUCCEEDED(createWriting(DWRITE_FACTORY_TYPE_SHARED, __uuidof(IDWriteFactory),
                                   reinterpret_cast<IUnknown**>(writing_.Put())));
}

void DrawCanvas::Release() {
    valid_ = false;
    stroke_.Reset();
    textFormat_.Reset();
    brush_.Reset();
    bitmap_.Reset();
    screenPicture_ = Image();
    renderTarget_.Reset();
    writing_.Reset();
    drawing_.Reset();
}

int DrawCanvas::CreatedCount() {
    return canvasesCreated;
}

void ReportDeviceLost(int count) {
    deviceLossesToReport = count;
}

void DrawCanvas::BeginDraw() {
    if (!valid_) return;
    renderTarget_->BeginDraw();
    const D2D1_MATRIX_3X2_F identity{{{1.0f, 0.0f, 0.0f, 1.0f, 0.0f, 0.0f}}};
    renderTarget_->SetTransform(&identity);
}

DrawResult DrawCanvas::EndDraw() {
    if (!valid_) return DrawResult::Failed;
    HRESULT result = renderTarget_->EndDraw();
    if (deviceLossesToReport > 0) {
        --deviceLossesToReport;
        result = D2DERR_RECREATE_TARGET;
    }
    if (result == static_cast<HRESULT>(D2DERR_RECREATE_TARGET)) return DrawResult::DeviceLost;
    return SUCCEEDED(result) ? DrawResult::Drawn : DrawResult::Failed;
}

float DrawCanvas::PlaceX(float x, bool pixels) const {
    return pixels ? (x - static_cast<float>(target_.left)) * scale_ : x;
}

float DrawCanvas::PlaceY(float y, bool pixels) const {
    return pixels ? (y - static_cast<float>(target_.top)) * scale_ : y;
}

D2D1_RECT_F DrawCanvas::Place(const CanvasRect& rect, bool pixels) const {
    return {PlaceX(rect.left, pixels), PlaceY(rect.top, pixels), PlaceX(rect.right, pixels),
            PlaceY(rect.bottom, pixels)};
}

ID2D1SolidColorBrush* DrawCanvas::BrushOf(const Color8& colour) {
    if (!brush_ || !(brushColour_ == colour)) {
        brush_.Reset();
        if (FAILED(renderTarget_->CreateSolidColorBrush(ToFloatColour(colour), brush_.Put()))) return nullptr;
        brushColour_ = colour;
    }
    return brush_.Get();
}

IDWriteTextFormat* DrawCanvas::FormatOf(const TextFormat& format) {
    TextFormat wanted = format;
    if (wanted.family.empty()) wanted.family = L"MS Shell Dlg";
    if (!(wanted.size > 0.0f)) wanted.size = 12.0f;
    if (wanted.weight <= 0) wanted.weight = 400;
    if (textFormat_ && textFormatMadeFrom_ == wanted) return textFormat_.Get();

    textFormat_.Reset();
    const std::wstring family = AvailableFamily(*writing_.Get(), wanted.family);
    if (FAILED(writing_->CreateTextFormat(family.c_str(), nullptr,
                                          static_cast<DWRITE_FONT_WEIGHT>(wanted.weight), wanted.style,
                                          DWRITE_FONT_STRETCH_NORMAL, wanted.size, L"", textFormat_.Put()))) {
        return nullptr;
    }
    textFormat_->SetTextAlignment(wanted.textAlignment);
    textFormat_->SetParagraphAlignment(wanted.paragraphAlignment);
    textFormat_->SetWordWrapping(wanted.wrap ? DWRITE_WORD_WRAPPING_WRAP : DWRITE_WORD_WRAPPING_NO_WRAP);
    textFormatMadeFrom_ = wanted;
    return textFormat_.Get();
}

void DrawCanvas::Clear(const Color8& colour) {
    if (!valid_) return;
    const D2D1_COLOR_F value = ToFloatColour(colour);
    renderTarget_->Clear(&value);
}

void DrawCanvas::DrawLine(CanvasPoint from, CanvasPoint to, float width, const Color8& colour, bool pixels) {
    if (!valid_) return;
    if (!stroke_) {
        D2D1_STROKE_STYLE_PROPERTIES properties{};
        properties.lineJoin = D2D1_LINE_JOIN_MITER;
        properties.miterLimit = 10.0f;
        properties.dashStyle = D2D1_DASH_STYLE_SOLID;
        if (FAILED(drawing_->CreateStrokeStyle(&properties, nullptr, 0, stroke_.Put()))) return;
    }
    ID2D1SolidColorBrush* const brush = BrushOf(colour);
    if (brush == nullptr) return;
    renderTarget_->DrawLine({PlaceX(from.x, pixels), PlaceY(from.y, pixels)},
                            {PlaceX(to.x, pixels), PlaceY(to.y, pixels)}, brush, width, stroke_.Get());
}

ID2D1Bitmap* DrawCanvas::BitmapOfScreenPicture() {
    const Image& shown = screenPicture_;
    if (bitmap_ && bitmapWidth_ == shown.width && bitmapHeight_ == shown.height &&
        SUCCEEDED(bitmap_->CopyFromMemory(nullptr, shown.pixels.get(), shown.stride))) {
        return bitmap_.Get();
    }
    bitmap_.Reset();
    D2D1_BITMAP_PROPERTIES properties{};
    properties.pixelFormat = {DXGI_FORMAT_B8G8R8A8_UNORM, D2D1_ALPHA_MODE_PREMULTIPLIED};
    properties.dpiX = properties.dpiY = 96.0f;
    if (FAILED(renderTarget_->CreateBitmap({shown.width, shown.height}, shown.pixels.get(), shown.stride,
                                           properties, bitmap_.Put()))) {
        return nullptr;
    }
    bitmapWidth_ = shown.width;
    bitmapHeight_ = shown.height;
    return bitmap_.Get();
}

void DrawCanvas::DrawPicture(const Image& picture, const CanvasRect& rect, bool pixels) {
    if (!valid_ || !picture.IsValid() || IsEmptyRect(rect)) return;
    const float width = rect.right - rect.left, height = rect.bottom - rect.top;
    const Image reduced = ReducedToFit(picture, width, height);
    if (!ToScreenPicture(reduced.IsValid() ? reduced : picture, renderTarget_->GetMaximumBitmapSize(),
                         screenPicture_)) {
        return;
    }
    ID2D1Bitmap* const bitmap = BitmapOfScreenPicture();
    if (bitmap == nullptr) return;
    const D2D1_RECT_F target = Place(rect, pixels);
    const D2D1_RECT_F source{0.0f, 0.0f, static_cast<float>(bitmapWidth_), static_cast<float>(bitmapHeight_)};
    renderTarget_->DrawBitmap(bitmap, &target, 1.0f, D2D1_BITMAP_INTERPOLATION_MODE_LINEAR, &source);
}

void DrawCanvas::DrawString(const CanvasRect& rect, std::wstring_view text, const TextFormat& format,
                            const Color8& colour, bool colourFont, bool clip, bool pixels) {
    if (!valid_ || text.empty()) return;
    IDWriteTextFormat* const textFormat = FormatOf(format);
    ID2D1SolidColorBrush* const brush = BrushOf(colour);
    if (textFormat == nullptr || brush == nullptr) return;
    const D2D1_RECT_F place = Place(rect, pixels);
    ComPtr<IDWriteTextLayout> layout;
    if (FAILED(writing_->CreateTextLayout(text.data(), static_cast<UINT32>(text.size()), textFormat,
                                          std::max(0.0f, place.right - place.left),
                                          std::max(0.0f, place.bottom - place.top), layout.Put()))) {
        return;
    }
    int options = D2D1_DRAW_TEXT_OPTIONS_NONE;
    if (colourFont) options |= D2D1_DRAW_TEXT_OPTIONS_ENABLE_COLOR_FONT;
    if (clip) options |= D2D1_DRAW_TEXT_OPTIONS_CLIP;
    // Not every system heeds the text option.
    if (clip) renderTarget_->PushAxisAlignedClip(place, D2D1_ANTIALIAS_MODE_ALIASED);
    renderTarget_->DrawTextLayout({place.left, place.top}, layout.Get(), brush,
                                  static_cast<D2D1_DRAW_TEXT_OPTIONS>(options));
    if (clip) renderTarget_->PopAxisAlignedClip();
}

DrawResult PresentPicture(DrawCanvas& canvas, const ClientSize& client, const Image& picture,
                          const Color8& backgroundColour, bool crosshair) {
    if (!picture.IsValid() || client.width <= 0 || client.height <= 0) return DrawResult::Failed;
    Color8 background = backgroundColour;
    background.alpha = 255;

    const PicturePlace place = FitPicture(client, picture.width, picture.height);
    const auto left = static_cast<float>(place.left), top = static_cast<float>(place.top);
    canvas.BeginDraw();
    canvas.Clear(background);
    canvas.DrawPicture(
        picture, {left, top, left + static_cast<float>(place.width), top + static_cast<float>(place.height)},
        true);
    if (crosshair) {
        // Through the middle of the middle row and column, so that the lines are one sharp pixel wide.
        const float x = static_cast<float>(client.width / 2) + 0.5f;
        const float y = static_cast<float>(client.height / 2) + 0.5f;
        canvas.DrawLine({0.0f, y}, {static_cast<float>(client.width), y}, 1.0f, background, true);
        canvas.DrawLine({x, 0.0f}, {x, static_cast<float>(client.height)}, 1.0f, background, true);
    }
    return canvas.EndDraw();
}

}  // namespace skyvault
