#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

#include "image/picture_files.h"
#include "image/wic_decode_win.h"
#include "image/wic_encode_win.h"
#include "platform/debug_line.h"
#include "platform/files.h"
#include "platform/utf8.h"
#include "tests/temporary_folder.h"

namespace skyvault {
namespace {

using test::TemporaryFolder;
using enum PixelFormat;

constexpr PixelFormat kAllFormats[] = {Grey8,   Grey16, GreyHalf, Rgb8,    Rgb16,
                                       RgbHalf, Rgba8,  Rgba16,   RgbaHalf};

Image MakePicture(PixelFormat format) {
    Image image(19, 11, format);
    for (int y = 0; y < 11; ++y) {
        for (int x = 0; x < 19; ++x) {
            image.SetPixel(x, y,
                           Color8(static_cast<std::uint8_t>(x * 13), static_cast<std::uint8_t>(y * 20),
                                  static_cast<std::uint8_t>(x + y), static_cast<std::uint8_t>(255 - y)));
        }
    }
    return image;
}

int LargestDifference(const Image& a, const Image& b) {
    int largest = 0;
    for (int y = 0; y < static_cast<int>(a.height); ++y) {
        for (int x = 0; x < static_cast<int>(a.width); ++x) {
            const Color8 p = a.GetPixel8(x, y), q = b.GetPixel8(x, y);
            largest = std::max(
                {largest, std::abs(p.red - q.red), std::abs(p.green - q.green), std::abs(p.blue - q.blue)});
        }
    }
    return largest;
}

// Where the system's own way works it is never left, so rows written by ourselves are tried here for every
// cell of the table.
TEST(WicEncoder, OwnRowsHoldThePictureInEveryCell) {
    using enum PictureContainer;
    const struct {
        PictureContainer container;
        const wchar_t* extension;
        int tolerance;
    } rows[] = {{Bmp, L".bmp", 0}, {Png, L".png", 0}, {Tiff, L".tif", 0}, {Jpeg, L".jpg", 24}};
    const TemporaryFolder folder;
    for (const auto& row : rows) {
        for (const PixelFormat format : kAllFormats) {
            const std::wstring label = std::wstring(FormatName(format)) + row.extension;
            SCOPED_TRACE(ToUtf8(label));
            const Image source = MakePicture(format);
            ASSERT_EQ(WriteOnRoute(WicRoute::OwnRows, source, folder / label, row.container, format),
                      WicOutcome::Written);
            const Image read = LoadPicture(folder / label);
            ASSERT_EQ(read.width, source.width);
            ASSERT_EQ(read.height, source.height);
            const int step = ChannelType(format) == ChannelKind::Half ? 1 : 0;
            EXPECT_LE(LargestDifference(source, read), row.tolerance + step);
        }
    }
}

TEST(WicEncoder, TheSystemsWayEitherHoldsThePictureOrSaysThatItCannot) {
    using enum PictureContainer;
    const TemporaryFolder folder;
    int written = 0;
    for (const PictureContainer container : {Bmp, Png, Tiff}) {
        for (const PixelFormat format : {Grey8, Rgb8, Rgba8}) {
            SCOPED_TRACE(testing::Message()
                         << static_cast<int>(container) << " " << ToUtf8(FormatName(format)));
            const Image source = MakePicture(format);
            const WicOutcome outcome =
                WriteOnRoute(WicRoute::WholeBitmap, source, folder / L"picture", container, format);
            ASSERT_NE(outcome, WicOutcome::Failed);
            if (outcome == WicOutcome::CannotDo) continue;
            ++written;
            EXPECT_EQ(LargestDifference(source, LoadPicture(folder / L"picture")), 0);
        }
    }
    EXPECT_GE(written, 7);
}

TEST(WicEncoder, BothWaysToAGifHoldThePicture) {
    const TemporaryFolder folder;
    const Image source = MakePicture(Rgb8);  // 209 colours
    for (const WicRoute route : {WicRoute::Palette, WicRoute::OwnFile}) {
        const std::wstring path = folder / L"a.gif";
        ASSERT_EQ(WriteOnRoute(route, source, path, PictureContainer::Gif, Rgb8), WicOutcome::Written);
        EXPECT_EQ(LargestDifference(source, LoadPicture(path)), 0);
    }
}

TEST(WicEncoder, FailuresThatAreTheFilesAreNotTakenForMissingConversions) {
    const TemporaryFolder folder;
    const Image source = MakePicture(Rgb8);
    const std::wstring path = JoinPath(folder / L"missing", L"a.png");
    for (const WicRoute route : {WicRoute::WholeBitmap, WicRoute::OwnRows}) {
        EXPECT_EQ(WriteOnRoute(route, source, path, PictureContainer::Png, Rgb8), WicOutcome::Failed);
    }
    EXPECT_EQ(WriteOnRoute(WicRoute::Palette, source, path, PictureContainer::Gif, Rgb8), WicOutcome::Failed);
}

/// A source of pixels that fails for more than one row at a time, and in one row altogether.
class BadSource final : public IWICBitmapSource {
  public:
    BadSource(UINT width, UINT height, int badRow = -1) : width_(width), height_(height), badRow_(badRow) {}

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void**) override { return E_NOINTERFACE; }
    ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
    ULONG STDMETHODCALLTYPE Release() override { return 1; }
    HRESULT STDMETHODCALLTYPE GetSize(UINT* width, UINT* height) override {
        *width = width_;
        *height = height_;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetPixelFormat(WICPixelFormatGUID* format) override {
        *format = GUID_WICPixelFormat8bppGray;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetResolution(double*, double*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE CopyPalette(IWICPalette*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE CopyPixels(const WICRect* rect, UINT stride, UINT size, BYTE* pixels) override {
        if (!rect || rect->Height != 1 || rect->X != 0 || rect->Width != static_cast<INT>(width_) ||
            size < stride) {
            return E_FAIL;
        }
        if (rect->Y == badRow_) return E_FAIL;
        ++rowsRead;
        std::memset(pixels, rect->Y + 1, width_);
        return S_OK;
    }

    int rowsRead = 0;

  private:
    UINT width_, height_;
    int badRow_;
};

TEST(WicDecoder, ReadsRowByRowWhenTheWholePictureFails) {
    const std::wstring line = L"Failed to copy pixels. Now trying line by line...\n";
    const DebugLineCapture capture;
    BadSource source(3, 4), broken(3, 4, 2);
    Image image(3, 4, Grey8);
    EXPECT_TRUE(CopyWicPixels(source, source, image));
    for (int y = 0; y < 4; ++y) EXPECT_EQ(image.GetPixel8(2, y).red, y + 1);
    EXPECT_EQ(capture.Text(), line);
    EXPECT_FALSE(CopyWicPixels(broken, broken, image));
    EXPECT_EQ(broken.rowsRead, 2) << "goes on after the first bad row";
    EXPECT_EQ(capture.Text(), line + line);
}

TEST(WicFormats, EveryFormatOfOursHasOneOfTheSameMemory) {
    for (const PixelFormat format : kAllFormats) {
        const WicFormat* entry = FindWicFormat(WicFormatOf(format));
        ASSERT_NE(entry, nullptr);
        EXPECT_EQ(entry->format, format);
        EXPECT_FALSE(entry->swapRedAndBlue);
    }
    EXPECT_EQ(WicFormatOf(static_cast<PixelFormat>(42)), GUID_WICPixelFormat8bppGray);
    EXPECT_EQ(FindWicFormat(GUID_WICPixelFormat32bppBGR), nullptr);
    const struct {
        const GUID& guid;
        PixelFormat format;
    } swapped[] = {{GUID_WICPixelFormat24bppRGB, Rgb8},
                   {GUID_WICPixelFormat48bppBGR, Rgb16},
                   {GUID_WICPixelFormat32bppRGBA, Rgba8},
                   {GUID_WICPixelFormat64bppBGRA, Rgba16}};
    for (const auto& row : swapped) {
        const WicFormat* entry = FindWicFormat(row.guid);
        ASSERT_NE(entry, nullptr);
        EXPECT_EQ(entry->format, row.format);
        EXPECT_TRUE(entry->swapRedAndBlue);
    }
}

}  // namespace
}  // namespace skyvault
