// Drawing onto a bitmap in memory, pixel by pixel.

#include "app/draw_canvas.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <string>
#include <vector>

#include "app/presenting.h"
#include "app/screen_picture.h"

namespace skyvault {
namespace {

constexpr Color8 kRed{255, 0, 0, 255}, kGreen{0, 255, 0, 255}, kBlack{0, 0, 0, 255};

/// A bitmap to draw on and to read from; at first all magenta.
class Paper {
  public:
    Paper(int width, int height) : width_(width), height_(height) {
        BITMAPINFO info{};
        info.bmiHeader.biSize = sizeof info.bmiHeader;
        info.bmiHeader.biWidth = width;
        info.bmiHeader.biHeight = -height;
        info.bmiHeader.biPlanes = 1;
        info.bmiHeader.biBitCount = 32;
        context_ = CreateCompatibleDC(nullptr);
        bitmap_ =
            CreateDIBSection(context_, &info, DIB_RGB_COLORS, reinterpret_cast<void**>(&bits_), nullptr, 0);
        before_ = SelectObject(context_, bitmap_);
        for (int i = 0; i < width * height; ++i) bits_[i] = 0x00ff00ff;
    }
    ~Paper() {
        SelectObject(context_, before_);
        DeleteObject(bitmap_);
        DeleteDC(context_);
    }
    Paper(const Paper&) = delete;
    Paper& operator=(const Paper&) = delete;

    HDC Context() const { return context_; }
    RECT All() const { return {0, 0, width_, height_}; }
    Color8 At(int x, int y) const {
        GdiFlush();
        const std::uint32_t pixel = bits_[y * width_ + x];
        return {static_cast<std::uint8_t>(pixel >> 16), static_cast<std::uint8_t>(pixel >> 8),
                static_cast<std::uint8_t>(pixel), 255};
    }
    /// How many pixels are darker than half.
    int DarkPixels() const {
        int count = 0;
        for (int y = 0; y < height_; ++y) {
            for (int x = 0; x < width_; ++x) count += At(x, y).green < 128 ? 1 : 0;
        }
        return count;
    }

  private:
    int width_, height_;
    HDC context_ = nullptr;
    HBITMAP bitmap_ = nullptr;
    HGDIOBJ before_ = nullptr;
    std::uint32_t* bits_ = nullptr;
};

std::string Text(const Color8& c) {
    return std::to_string(c.red) + "," + std::to_string(c.green) + "," + std::to_string(c.blue);
}

bool Near(const Color8& a, const Color8& b, int tolerance) {
    return std::abs(a.red - b.red) <= tolerance && std::abs(a.green - b.green) <= tolerance &&
           std::abs(a.blue - b.blue) <= tolerance;
}

/// Draws on the cleared white target. Making a canvas takes longest: tests share one between their rows.
void Draw(DrawCanvas& canvas, const std::function<void()>& what) {
    ASSERT_TRUE(canvas.IsValid());
    canvas.BeginDraw();
    canvas.Clear(kOpaqueWhite);
    what();
    ASSERT_EQ(canvas.EndDraw(), DrawResult::Drawn);
}

TEST(DrawCanvas, PicturesOfEveryFormatAreDrawnPixelByPixel) {
    const Paper paper(9, 9);
    DrawCanvas canvas(paper.Context(), paper.All());
    for (std::uint32_t format = 1; format <= 9; ++format) {
        Image picture(5, 3, static_cast<PixelFormat>(format));
        for (int y = 0; y < 3; ++y) {
            for (int x = 0; x < 5; ++x) {
                picture.SetPixel(x, y,
                                 Color8(static_cast<std::uint8_t>(x * 50), static_cast<std::uint8_t>(y * 90),
                                        static_cast<std::uint8_t>(200 - x * 20), 255));
            }
        }
        Draw(canvas, [&] { canvas.DrawPicture(picture, {2, 4, 7, 7}, true); });
        // Halves are not exactly the bytes they were made from.
        const int tolerance = ChannelType(picture.format) == ChannelKind::Half ? 1 : 0;
        for (int y = 0; y < 3; ++y) {
            for (int x = 0; x < 5; ++x) {
                EXPECT_TRUE(Near(paper.At(2 + x, 4 + y), picture.GetPixel8(x, y), tolerance))
                    << "format " << format << ' ' << Text(paper.At(2 + x, 4 + y)) << " for "
                    << Text(picture.GetPixel8(x, y));
            }
        }
        EXPECT_EQ(Text(paper.At(1, 4)), Text(kOpaqueWhite)) << format;
        EXPECT_EQ(Text(paper.At(7, 6)), Text(kOpaqueWhite)) << format;
    }
}

TEST(DrawCanvas, BackgroundShowsThroughTransparentPixels) {
    Image picture(3, 1, PixelFormat::Rgba8);
    picture.SetPixel(0, 0, Color8(255, 0, 0, 255));
    picture.SetPixel(1, 0, Color8(255, 0, 0, 128));
    picture.SetPixel(2, 0, Color8(255, 0, 0, 0));
    const Paper paper(3, 1);
    DrawCanvas canvas(paper.Context(), paper.All());
    Draw(canvas, [&] {
        canvas.Clear(kGreen);
        canvas.DrawPicture(picture, {0, 0, 3, 1}, true);
    });
    EXPECT_EQ(Text(paper.At(0, 0)), Text(kRed));
    EXPECT_TRUE(Near(paper.At(1, 0), {128, 127, 0, 255}, 2)) << Text(paper.At(1, 0));
    EXPECT_EQ(Text(paper.At(2, 0)), Text(kGreen));
}

TEST(DrawCanvas, LargerPicturesAreAveragedNotPicked) {
    Image checks(64, 32, PixelFormat::Rgb8);
    for (int y = 0; y < 32; ++y) {
        for (int x = 0; x < 64; ++x) {
            const std::uint8_t value = (x + y) % 2 == 0 ? 255 : 0;
            checks.SetPixel(x, y, Color8(value, value, value, 255));
        }
    }
    const Paper paper(32, 16);
    DrawCanvas canvas(paper.Context(), paper.All());
    Draw(canvas, [&] { canvas.DrawPicture(checks, {0, 0, 32, 16}, true); });
    for (const auto& [x, y] : {std::pair{0, 0}, {31, 15}, {7, 12}}) {
        EXPECT_TRUE(Near(paper.At(x, y), {127, 127, 127, 255}, 1))
            << x << ',' << y << ' ' << Text(paper.At(x, y));
    }
}

TEST(DrawCanvas, SmallerPicturesAreStretchedOverTheRectangle) {
    Image halves(2, 1, PixelFormat::Rgb8);
    halves.SetPixel(0, 0, kRed);
    halves.SetPixel(1, 0, kGreen);
    const Paper paper(40, 10);
    DrawCanvas canvas(paper.Context(), paper.All());
    Draw(canvas, [&] { canvas.DrawPicture(halves, {0, 0, 40, 10}, true); });
    EXPECT_EQ(Text(paper.At(2, 5)), Text(kRed));
    EXPECT_EQ(Text(paper.At(37, 9)), Text(kGreen));
}

TEST(DrawCanvas, PicturesBeyondTheLargestBitmapComeSmaller) {
    Image wide(1000, 10, PixelFormat::Grey8);
    wide.Fill(PixelValue(Color8(77, 77, 77, 255)));
    Image shown;
    ASSERT_TRUE(ToScreenPicture(wide, 400, shown));
    EXPECT_EQ(shown.width, 400u);
    EXPECT_EQ(shown.height, 4u);
    EXPECT_EQ(shown.GetPixel8(399, 3), Color8(77, 77, 77, 255));
    EXPECT_EQ(ReducedToFit(wide, 100.0f, 100.0f).height, 1u);
    EXPECT_FALSE(ReducedToFit(wide, 1000.0f, 10.0f).IsValid());
}

TEST(DrawCanvas, PixelCoordinatesCountFromTheContextNotFromTheTarget) {
    const Paper paper(20, 20);
    DrawCanvas canvas(paper.Context(), {5, 6, 15, 16});
    canvas.BeginDraw();
    canvas.Clear(kBlack);
    Image dot(1, 1, PixelFormat::Rgb8);
    dot.SetPixel(0, 0, kRed);
    canvas.DrawPicture(dot, {7, 8, 8, 9}, true);
    dot.SetPixel(0, 0, kGreen);
    canvas.DrawPicture(dot, {7, 8, 8, 9}, false);
    canvas.EndDraw();
    EXPECT_EQ(Text(paper.At(7, 8)), Text(kRed));
    EXPECT_EQ(Text(paper.At(12, 14)), Text(kGreen));
    EXPECT_EQ(Text(paper.At(5, 6)), Text(kBlack));
    EXPECT_EQ(Text(paper.At(4, 6)), Text(Color8(255, 0, 255, 255))) << "outside of the target";
}

TEST(DrawCanvas, LinesHaveTheirWidthAndColourAndTheBrushFollowsTheColour) {
    const Paper paper(21, 21);
    DrawCanvas canvas(paper.Context(), paper.All());
    Draw(canvas, [&] {
        canvas.DrawLine({0, 4}, {21, 4}, 2.0f, kRed, true);
        canvas.DrawLine({10.5f, 10}, {10.5f, 21}, 1.0f, kGreen, true);
        canvas.DrawLine({0, 8}, {21, 8}, 2.0f, kRed, true);
    });
    for (const int y : {3, 4, 7, 8}) EXPECT_EQ(Text(paper.At(18, y)), Text(kRed)) << y;
    for (const int y : {2, 5, 6, 9}) EXPECT_EQ(Text(paper.At(18, y)), Text(kOpaqueWhite)) << y;
    EXPECT_EQ(Text(paper.At(10, 15)), Text(kGreen));
    EXPECT_EQ(Text(paper.At(9, 15)), Text(kOpaqueWhite));
    EXPECT_EQ(Text(paper.At(11, 15)), Text(kOpaqueWhite));
}

TEST(DrawCanvas, TextIsVisibleInEveryFamilyEvenAMissingOne) {
    const Paper paper(200, 40);
    DrawCanvas canvas(paper.Context(), paper.All());
    for (const wchar_t* family :
         {L"Segoe UI", L"Segoe UI Light", L"MS Shell Dlg", L"", L"No Family Of This Name"}) {
        Draw(canvas, [&] {
            TextFormat format;
            format.family = family;
            format.size = 24;
            canvas.DrawString({0, 0, 200, 40}, L"Skyvault", format, kBlack, true, true, true);
        });
        EXPECT_GT(paper.DarkPixels(), 100) << family;
    }
}

TEST(DrawCanvas, TextFollowsItsFormatFromCallToCall) {
    struct Row {
        const char* what;
        TextFormat format;
        RECT ink;  ///< some of the text's pixels are dark in here
    };
    TextFormat plain;
    plain.size = 16;
    TextFormat right = plain, low = plain, large = plain, wrapped = plain;
    right.textAlignment = DWRITE_TEXT_ALIGNMENT_TRAILING;
    low.paragraphAlignment = DWRITE_PARAGRAPH_ALIGNMENT_FAR;
    large.size = 60;
    wrapped.wrap = true;
    const Row rows[] = {{"plain", plain, {0, 0, 40, 22}},
                        {"right", right, {260, 0, 300, 22}},
                        {"low", low, {0, 78, 40, 100}},
                        {"large", large, {0, 24, 40, 70}},
                        {"plain again", plain, {0, 0, 40, 22}}};
    const Paper paper(300, 100);
    DrawCanvas canvas(paper.Context(), paper.All());
    for (const Row& row : rows) {
        canvas.BeginDraw();
        canvas.Clear(kOpaqueWhite);
        canvas.DrawString({0, 0, 300, 100}, L"HHH", row.format, kBlack, false, false, true);
        canvas.EndDraw();
        bool dark = false;
        for (LONG y = row.ink.top; y < row.ink.bottom; ++y) {
            for (LONG x = row.ink.left; x < row.ink.right; ++x) dark = dark || paper.At(x, y).green < 100;
        }
        EXPECT_TRUE(dark) << row.what;
        EXPECT_EQ(paper.At(150, 10).green, 255) << row.what;
    }
    // Two words that do not fit one line: the second is beside the rectangle, or below the first.
    for (const bool wrap : {false, true}) {
        TextFormat format = wrap ? wrapped : plain;
        canvas.BeginDraw();
        canvas.Clear(kOpaqueWhite);
        canvas.DrawString({0, 0, 60, 100}, L"HHHH HHHH", format, kBlack, false, false, true);
        canvas.EndDraw();
        int beside = 0;
        for (int y = 0; y < 100; ++y) {
            for (int x = 62; x < 200; ++x) beside += paper.At(x, y).green < 128 ? 1 : 0;
        }
        EXPECT_EQ(beside == 0, wrap);
    }
}

TEST(DrawCanvas, ClippedTextStaysInItsRectangle) {
    const Paper paper(300, 40);
    DrawCanvas canvas(paper.Context(), paper.All());
    for (const bool clip : {true, false}) {
        Draw(canvas, [&] {
            TextFormat format;
            format.size = 24;
            canvas.DrawString({0, 0, 30, 40}, L"HHHHHHHHHH", format, kBlack, false, clip, true);
        });
        int outside = 0;
        for (int y = 0; y < 40; ++y) {
            for (int x = 31; x < 300; ++x) outside += paper.At(x, y).green < 128 ? 1 : 0;
        }
        EXPECT_EQ(outside == 0, clip);
    }
}

TEST(DrawCanvas, WithoutAValidTargetNothingHappens) {
    const int before = DrawCanvas::CreatedCount();
    DrawCanvas nowhere(static_cast<HWND>(nullptr));
    EXPECT_FALSE(nowhere.IsValid());
    EXPECT_EQ(DrawCanvas::CreatedCount(), before + 1);

    const Paper paper(4, 4);
    DrawCanvas released(paper.Context(), paper.All());
    released.Release();
    for (DrawCanvas* canvas : {&nowhere, &released}) {
        Image dot(1, 1, PixelFormat::Rgb8);
        canvas->BeginDraw();
        canvas->Clear(kRed);
        canvas->DrawLine({0, 0}, {4, 4}, 1, kRed, true);
        canvas->DrawPicture(dot, {0, 0, 4, 4}, true);
        canvas->DrawString({0, 0, 4, 4}, L"x", {}, kRed, false, false, true);
        EXPECT_EQ(canvas->EndDraw(), DrawResult::Failed);
    }
    EXPECT_EQ(Text(paper.At(1, 1)), Text(Color8(255, 0, 255, 255)));
}

TEST(DrawCanvas, EmptyPicturesAndRectanglesDrawNothing) {
    const Paper paper(4, 4);
    Image dot(1, 1, PixelFormat::Rgb8);
    dot.SetPixel(0, 0, kRed);
    DrawCanvas canvas(paper.Context(), paper.All());
    Draw(canvas, [&] {
        canvas.DrawPicture(Image(), {0, 0, 4, 4}, true);
        canvas.DrawPicture(dot, {2, 2, 2, 4}, true);
        canvas.DrawPicture(dot, {3, 3, 1, 1}, true);
    });
    for (int i = 0; i < 16; ++i) EXPECT_EQ(Text(paper.At(i % 4, i / 4)), Text(kOpaqueWhite)) << i;
}

TEST(Presenting, PicturesAreFittedAndCentred) {
    struct Row {
        ClientSize client;
        std::uint32_t width, height;
        PicturePlace place;
    };
    const Row rows[] = {
        {{1000, 700}, 4096, 2048, {0, 100, 1000, 500}},
        {{1000, 700}, 512, 256, {0, 100, 1000, 500}},
        {{1000, 700}, 100, 100, {150, 0, 700, 700}},
        {{1000, 700}, 1000, 700, {0, 0, 1000, 700}},
        {{1001, 701}, 1000, 500, {0, 100, 1001, 500}},
        {{0, 700}, 10, 10, {}},
        {{1000, 0}, 10, 10, {}},
        {{1000, 700}, 0, 10, {}},
        {{10, 10}, 1000, 3, {0, 5, 10, 0}},
    };
    for (const Row& row : rows) {
        const PicturePlace place = FitPicture(row.client, row.width, row.height);
        EXPECT_EQ(place, row.place) << row.width << 'x' << row.height << " in " << row.client.width << 'x'
                                    << row.client.height << ": " << place.left << ',' << place.top << ' '
                                    << place.width << 'x' << place.height;
    }
}

TEST(Presenting, SurroundingsAndCrosshairAreInTheOpaqueBackgroundColour) {
    Image picture(40, 10, PixelFormat::Rgb8);
    picture.Fill(PixelValue(kRed));
    const Color8 background(10, 20, 30, 0), shown(10, 20, 30, 255);
    const Paper paper(40, 30);
    DrawCanvas canvas(paper.Context(), paper.All());
    for (const bool crosshair : {false, true}) {
        ASSERT_EQ(PresentPicture(canvas, {40, 30}, picture, background, crosshair), DrawResult::Drawn);
        EXPECT_EQ(Text(paper.At(3, 9)), Text(shown));
        EXPECT_EQ(Text(paper.At(3, 20)), Text(shown));
        EXPECT_EQ(Text(paper.At(3, 10)), Text(kRed));
        EXPECT_EQ(Text(paper.At(39, 19)), Text(kRed));
        EXPECT_EQ(Text(paper.At(39, 15)), Text(crosshair ? shown : kRed));
        EXPECT_EQ(Text(paper.At(20, 11)), Text(crosshair ? shown : kRed));
        EXPECT_EQ(Text(paper.At(19, 14)), Text(kRed));
        EXPECT_EQ(Text(paper.At(21, 16)), Text(kRed));
    }
    EXPECT_EQ(PresentPicture(canvas, {4, 4}, Image(), background, true), DrawResult::Failed);
    EXPECT_EQ(PresentPicture(canvas, {4, 0}, picture, background, true), DrawResult::Failed);
}

}  // namespace
}  // namespace skyvault
