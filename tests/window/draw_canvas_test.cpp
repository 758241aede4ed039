// Drawing onto a bitmap in memory, pixel by pixel.

#include "app/draw_canvas.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <functional>

#include "app/screen_picture.h"

namespace skyvault {
namespace {

constexpr Color8 kRed{255, 0, 0, 255}, kGreen{0, 255, 0, 255}, kBlack{0, 0, 0, 255};
constexpr Color8 kMagenta{255, 0, 255, 255};

/// A bitmap of 150 × 100 to read from, at first all magenta, and a canvas over its rectangle.
class Paper {
  public:
    explicit Paper(const RECT& target = {0, 0, 150, 100}) {
        const BITMAPINFO info{{sizeof info.bmiHeader, 150, -100, 1, 32, BI_RGB, 0, 0, 0, 0, 0}, {}};
        bitmap_ =
            CreateDIBSection(context_, &info, DIB_RGB_COLORS, reinterpret_cast<void**>(&bits_), nullptr, 0);
        SelectObject(context_, bitmap_);
        std::fill_n(bits_, 150 * 100, 0x00ff00ffu);
        canvas.emplace(context_, target);
    }
    ~Paper() {
        canvas.reset();
        DeleteDC(context_);
        DeleteObject(bitmap_);
    }
    Paper(const Paper&) = delete;
    Paper& operator=(const Paper&) = delete;

    void Draw(const std::function<void(DrawCanvas&)>& what) {
        canvas->BeginDraw();
        canvas->Clear(kOpaqueWhite);
        what(*canvas);
        ASSERT_EQ(canvas->EndDraw(), DrawResult::Drawn);
        GdiFlush();
    }
    Color8 At(LONG x, LONG y) const {
        const std::uint32_t pixel = bits_[y * 150 + x];
        return {static_cast<std::uint8_t>(pixel >> 16), static_cast<std::uint8_t>(pixel >> 8),
                static_cast<std::uint8_t>(pixel), 255};
    }
    testing::AssertionResult Shows(LONG x, LONG y, const Color8& colour, int tolerance = 0) const {
        const Color8 c = At(x, y);
        const int off = std::max(
            {std::abs(c.red - colour.red), std::abs(c.green - colour.green), std::abs(c.blue - colour.blue)});
        return testing::AssertionResult(off <= tolerance) << x << ',' << y << ": off by " << off;
    }
    /// How many pixels of the rectangle are darker than half.
    int Ink(const RECT& rect) const {
        int count = 0;
        for (LONG y = rect.top; y < rect.bottom; ++y)
            for (LONG x = rect.left; x < rect.right; ++x) count += At(x, y).green < 128;
        return count;
    }

    std::optional<DrawCanvas> canvas;

  private:
    HDC context_ = CreateCompatibleDC(nullptr);
    HBITMAP bitmap_ = nullptr;
    std::uint32_t* bits_ = nullptr;
};

Image OneColour(std::uint32_t width, std::uint32_t height, const Color8& colour) {
    Image picture(width, height, PixelFormat::Rgb8);
    picture.Fill(PixelValue(colour));
    return picture;
}

TEST(DrawCanvas, PicturesAreMixedAveragedStretchedAndPlacedFromTheContextsCorner) {
    Image glass(3, 1, PixelFormat::Rgba8);
    for (const int x : {0, 1, 2}) glass.SetPixel(x, 0, Color8(255, 0, 0, x == 0 ? 255 : x == 1 ? 128 : 0));
    Image checks(64, 32, PixelFormat::Rgb16), halves = OneColour(2, 1, kRed);
    for (int i = 0; i < 64 * 32; ++i) {
        checks.SetPixel(i % 64, i / 64, Color8((i + i / 64) % 2 != 0 ? kBlack : kOpaqueWhite));
    }
    halves.SetPixel(1, 0, kGreen);
    Paper paper({5, 6, 100, 90});
    paper.Draw([&](DrawCanvas& canvas) {
        canvas.Clear(kGreen);
        canvas.DrawPicture(glass, {6, 7, 9, 8}, true);
        canvas.DrawPicture(checks, {10, 10, 42, 26}, true);
        canvas.DrawPicture(halves, {10, 30, 50, 40}, true);
        canvas.DrawPicture(halves, {55, 30, 95, 40}, false);
        for (const CanvasRect& nothing : {CanvasRect{80, 2, 80, 20}, {90, 20, 80, 2}})
            canvas.DrawPicture(halves, nothing, true);
    });
    EXPECT_TRUE(paper.Shows(6, 7, kRed));
    EXPECT_TRUE(paper.Shows(7, 7, {128, 127, 0, 255}, 2));
    EXPECT_TRUE(paper.Shows(8, 7, kGreen));
    for (const POINT& at : {POINT{10, 10}, {41, 25}, {17, 22}})
        EXPECT_TRUE(paper.Shows(at.x, at.y, {127, 127, 127, 255}, 1));
    EXPECT_TRUE(paper.Shows(12, 35, kRed));
    EXPECT_TRUE(paper.Shows(62, 38, kRed)) << "the target's own units";
    for (const POINT& at : {POINT{47, 39}, {9, 30}, {85, 10}, {99, 89}})
        EXPECT_TRUE(paper.Shows(at.x, at.y, kGreen));
    EXPECT_TRUE(paper.Shows(4, 6, kMagenta)) << "outside of the target";
}

TEST(DrawCanvas, PicturesBeyondTheLargestBitmapComeSmaller) {
    const Image wide = OneColour(1000, 10, {77, 77, 77, 255});
    Image shown;
    ASSERT_TRUE(ToScreenPicture(wide, 400, shown));
    EXPECT_EQ(shown.width, 400u);
    EXPECT_EQ(shown.height, 4u);
    EXPECT_EQ(shown.GetPixel8(399, 3), Color8(77, 77, 77, 255));
    EXPECT_EQ(ReducedToFit(wide, 100.0f, 100.0f).height, 1u);
    EXPECT_FALSE(ReducedToFit(wide, 1000.0f, 10.0f).IsValid());
}

TEST(DrawCanvas, TextKeepsToItsRectangleFromFormatToFormat) {
    const RECT line{0, 0, 60, 22}, below{0, 22, 60, 100}, beside{62, 0, 150, 100};
    Paper paper;
    TextFormat format;
    for (const auto& [family, size] :
         {std::pair{L"", 16.0f}, {L"", 60.0f}, {L"No Family Of This Name", 16.0f}}) {
        format.family = family;
        format.size = size;
        paper.Draw([&](DrawCanvas& canvas) {
            canvas.DrawString({0, 0, 60, 100}, L"HHHH HHHH", format, kBlack, true, true, true);
        });
        EXPECT_GT(paper.Ink(line), 20) << format.size;
        EXPECT_EQ(paper.Ink(below) > 20, format.size > 20) << format.size;
        EXPECT_EQ(paper.Ink(beside), 0) << format.size;
    }
}

TEST(Presenting, PicturesAreFittedAndCentredInTheOpaqueBackgroundUnderTheCrosshair) {
    EXPECT_EQ(FitPicture({1000, 700}, 4096, 2048), (PicturePlace{0, 100, 1000, 500}));
    EXPECT_EQ(FitPicture({1000, 700}, 100, 100), (PicturePlace{150, 0, 700, 700}));
    for (int width = 320; width < 2560; ++width)
        EXPECT_EQ(FitPicture({width, 9999}, 2048, 1024).width, width);
    EXPECT_EQ(FitPicture({10, 10}, 1000, 3), (PicturePlace{0, 5, 10, 0}));
    EXPECT_EQ(FitPicture({0, 700}, 10, 10), PicturePlace{});
    EXPECT_EQ(FitPicture({1000, 700}, 0, 10), PicturePlace{});
    const Image picture = OneColour(40, 10, kRed);
    const Color8 background(10, 20, 30, 0), shown(10, 20, 30, 255);
    Paper paper;
    for (const bool crosshair : {false, true}) {
        ASSERT_EQ(PresentPicture(*paper.canvas, {40, 30}, picture, background, crosshair), DrawResult::Drawn);
        for (const POINT& at : {POINT{3, 9}, {3, 20}}) EXPECT_TRUE(paper.Shows(at.x, at.y, shown));
        for (const POINT& at : {POINT{3, 10}, {39, 19}, {19, 14}, {21, 16}})
            EXPECT_TRUE(paper.Shows(at.x, at.y, kRed));
        for (const POINT& at : {POINT{39, 15}, {20, 11}})
            EXPECT_TRUE(paper.Shows(at.x, at.y, crosshair ? shown : kRed));
    }
    DrawCanvas invalid(static_cast<HWND>(nullptr));
    EXPECT_EQ(PresentPicture(invalid, {40, 30}, picture, background, true), DrawResult::Failed);
    EXPECT_EQ(PresentPicture(*paper.canvas, {4, 4}, Image(), background, true), DrawResult::Failed);
    EXPECT_EQ(PresentPicture(*paper.canvas, {4, 0}, picture, background, true), DrawResult::Failed);
}

}  // namespace
}  // namespace skyvault
