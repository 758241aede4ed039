// A drawing surface over Direct2D and DirectWrite: all the program draws into windows of its own.
//
// Coordinates are floats. With the pixel flag set they are pixels of the window or device context the
// target belongs to; without it they are the target's own units, counted from its corner. A pixel is one
// unit at every resolution of the screen. Every operation on a canvas that is not valid does nothing.
#pragma once

#include <windows.h>
// After windows.h:
#include <d2d1.h>
#include <dwrite.h>

#include <string>
#include <string_view>

#include "image/image.h"
#include "platform/com_ptr_win.h"
#include "projection/layout_requests.h"

namespace skyvault {

struct CanvasPoint {
    float x = 0, y = 0;
};

struct CanvasRect {
    float left = 0, top = 0, right = 0, bottom = 0;
};

/// How a text is set. An empty family is "MS Shell Dlg", a size that is not positive 12 and a weight that
/// is not positive 400.
struct TextFormat {
    std::wstring family;
    float size = 12.0f;
    int weight = 400;
    DWRITE_FONT_STYLE style = DWRITE_FONT_STYLE_NORMAL;
    DWRITE_TEXT_ALIGNMENT textAlignment = DWRITE_TEXT_ALIGNMENT_LEADING;
    DWRITE_PARAGRAPH_ALIGNMENT paragraphAlignment = DWRITE_PARAGRAPH_ALIGNMENT_NEAR;
    bool wrap = false;
    friend bool operator==(const TextFormat&, const TextFormat&) = default;
};

enum class DrawResult {
    Drawn,
    Failed,
    DeviceLost,  ///< the target is useless now: make a new canvas and draw again
};

class DrawCanvas {
  public:
    /// For a window: the target is its client area, at the size it has now.
    explicit DrawCanvas(HWND window);
    /// For a rectangle of a device context.
    DrawCanvas(HDC context, const RECT& rect);
    ~DrawCanvas() = default;
    DrawCanvas(const DrawCanvas&) = delete;
    DrawCanvas& operator=(const DrawCanvas&) = delete;

    bool IsValid() const { return valid_; }
    const RECT& Target() const { return target_; }

    /// Lets go of everything; the canvas is not valid any more.
    void Release();

    /// Drawing happens between BeginDraw and EndDraw.
    void BeginDraw();
    DrawResult EndDraw();

    void Clear(const Color8& colour);
    void DrawLine(CanvasPoint from, CanvasPoint to, float width, const Color8& colour, bool pixels);

    /// The picture fills the rectangle, over what is there where it is transparent. A larger picture is
    /// first made smaller by averaging, its proportions kept; a smaller one is stretched.
    void DrawPicture(const Image& picture, const CanvasRect& rect, bool pixels);

    /// colourFont: coloured glyphs in their own colours. clip: nothing outside of the rectangle.
    void DrawString(const CanvasRect& rect, std::wstring_view text, const TextFormat& format,
                    const Color8& colour, bool colourFont, bool clip, bool pixels);

    /// How many canvases this process has made.
    static int CreatedCount();

  private:
    bool CreateFactories();
    ID2D1SolidColorBrush* BrushOf(const Color8& colour);
    IDWriteTextFormat* FormatOf(const TextFormat& format);
    float PlaceX(float x, bool pixels) const;
    float PlaceY(float y, bool pixels) const;
    D2D1_RECT_F Place(const CanvasRect& rect, bool pixels) const;
    /// A bitmap of the target with the pixels of screenPicture_; null when there is none to be had.
    ID2D1Bitmap* BitmapOfScreenPicture();

    bool valid_ = false;
    RECT target_{};
    float scale_ = 1.0f;
    ComPtr<ID2D1Factory> drawing_;
    ComPtr<IDWriteFactory> writing_;
    ComPtr<ID2D1RenderTarget> renderTarget_;
    ComPtr<ID2D1SolidColorBrush> brush_;
    Color8 brushColour_;
    ComPtr<IDWriteTextFormat> textFormat_;
    TextFormat textFormatMadeFrom_;
    ComPtr<ID2D1StrokeStyle> stroke_;
    /// The picture drawn last, as it went to the target's bitmap: the next one mostly has its size.
    Image screenPicture_;
    ComPtr<ID2D1Bitmap> bitmap_;
    std::uint32_t bitmapWidth_ = 0, bitmapHeight_ = 0;
};

/// Draws the picture as it sits in a window: fitted, centred, cleared around, with the crosshair in the
/// background's colour. Failed for an empty picture or client area too.
DrawResult PresentPicture(DrawCanvas& canvas, const ClientSize& client, const Image& picture,
                          const Color8& backgroundColour, bool crosshair);

/// For tests of a lost device, which cannot be had on request: the next `count` EndDraw calls report one.
void ReportDeviceLost(int count);

}  // namespace skyvault
