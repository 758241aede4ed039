#include <gtest/gtest.h>

#include <cstring>

#include "codecs/wic_decode_win.h"
#include "codecs/wic_encode_win.h"
#include "platform/debug_line.h"
#include "platform/files.h"
#include "tests/made_files.h"

namespace skyvault::test {
namespace {

using enum PixelFormat;
using namespace std::string_literals;

// Where the system's own way works it is never left, so rows written by ourselves are tried here for every
// cell of the table; the system's way holds the picture or says that it cannot.
TEST(WicEncoder, EveryRouteThatWritesHoldsThePicture) {
    using enum PictureContainer;
    const TemporaryFolder folder;
    const std::wstring path = folder / L"picture";
    int bySystem = 0;
    for (const PictureContainer container : {Bmp, Png, Tiff, Jpeg}) {
        for (const PixelFormat format : AllFormats()) {
            SCOPED_TRACE(std::to_string(static_cast<int>(container)) + " " + ToUtf8(FormatName(format)));
            const Image source = SmoothPicture(format);
            const bool eightBits = ChannelType(format) == ChannelKind::Int8;
            if (eightBits && container != Jpeg) {
                const WicOutcome outcome =
                    WriteOnRoute(WicRoute::WholeBitmap, source, path, container, format);
                ASSERT_NE(outcome, WicOutcome::Failed);
                if (outcome == WicOutcome::Written) {
                    ++bySystem;
                    EXPECT_EQ(Difference(source, Loaded(path)), 0);
                }
            }
            ASSERT_EQ(WriteOnRoute(WicRoute::OwnRows, source, path, container, format), WicOutcome::Written);
            const int step = ChannelType(format) == ChannelKind::Half ? 1 : 0;
            EXPECT_LE(Difference(source, Loaded(path)), step + (container == Jpeg ? 4 : 0));
        }
    }
    EXPECT_GE(bySystem, 7);
    const Image source = SmoothPicture(Rgb8, 19, 11);  // 209 colours
    for (const WicRoute route : {WicRoute::Palette, WicRoute::OwnFile}) {
        ASSERT_EQ(WriteOnRoute(route, source, path, Gif, Rgb8), WicOutcome::Written);
        EXPECT_EQ(Difference(source, Loaded(path)), 0);
    }
}

TEST(WicEncoder, FailuresThatAreTheFilesAreNotTakenForMissingConversions) {
    using enum PictureContainer;
    const TemporaryFolder folder;
    // Larger than any buffer between, and not to be packed away.
    const Image source = RandomImage(600, 400, Rgb8);
    const std::wstring missing = folder / L"missing/a.png", full = L"Z:\\dev\\full";  // there under Wine only
    for (const WicRoute route : {WicRoute::WholeBitmap, WicRoute::OwnRows})
        EXPECT_EQ(WriteOnRoute(route, source, missing, Png, Rgb8), WicOutcome::Failed);
    EXPECT_EQ(WriteOnRoute(WicRoute::Palette, source, missing, Gif, Rgb8), WicOutcome::Failed);
    if (!FolderExists(L"Z:\\dev")) GTEST_SKIP() << "no full disk at hand";
    for (const PictureContainer container : {Bmp, Jpeg, Png, Tiff, Gif})
        EXPECT_FALSE(EncodePicture(source, full, container, Rgb8)) << static_cast<int>(container);
}

/// A source of pixels that fails for more than one row at a time, and in one row altogether.
class BadSource final : public IWICBitmapSource {
  public:
    explicit BadSource(int badRow) : badRow_(badRow) {}

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void**) override { return E_NOINTERFACE; }
    ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
    ULONG STDMETHODCALLTYPE Release() override { return 1; }
    HRESULT STDMETHODCALLTYPE GetSize(UINT*, UINT*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetPixelFormat(WICPixelFormatGUID*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetResolution(double*, double*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE CopyPalette(IWICPalette*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE CopyPixels(const WICRect* rect, UINT stride, UINT size, BYTE* pixels) override {
        const bool oneRow =
            rect && rect->Height == 1 && rect->X == 0 && rect->Width == kWidth && size >= stride;
        if (!oneRow || rect->Y == badRow_) return E_FAIL;
        ++rowsRead;
        std::memset(pixels, rect->Y + 1, kWidth);
        return S_OK;
    }

    static constexpr int kWidth = 3;
    int rowsRead = 0;

  private:
    int badRow_;
};

TEST(WicDecoder, ReadsRowByRowWhenTheWholePictureFails) {
    const std::wstring line = L"Failed to copy pixels. Now trying line by line...\n";
    const DebugLineCapture capture;
    BadSource source(-1), broken(2);
    Image image(BadSource::kWidth, 4, Grey8);
    EXPECT_TRUE(CopyWicPixels(source, source, image));
    for (int y = 0; y < 4; ++y) EXPECT_EQ(image.GetPixel8(2, y).red, y + 1);
    EXPECT_EQ(capture.Text(), line);
    EXPECT_FALSE(CopyWicPixels(broken, broken, image));
    EXPECT_EQ(broken.rowsRead, 2) << "goes on after the first bad row";
    EXPECT_EQ(capture.Text(), line + line);
}

TEST(WicFormats, EveryFormatOfOursHasOneOfTheSameMemory) {
    const auto expect = [](const GUID& guid, PixelFormat format, bool swapped) {
        const WicFormat* const entry = FindWicFormat(guid);
        ASSERT_NE(entry, nullptr);
        EXPECT_EQ(entry->format, format);
        EXPECT_EQ(entry->swapRedAndBlue, swapped);
    };
    for (const PixelFormat format : AllFormats()) expect(WicFormatOf(format), format, false);
    expect(GUID_WICPixelFormat24bppRGB, Rgb8, true);
    expect(GUID_WICPixelFormat48bppBGR, Rgb16, true);
    expect(GUID_WICPixelFormat32bppRGBA, Rgba8, true);
    expect(GUID_WICPixelFormat64bppBGRA, Rgba16, true);
    EXPECT_EQ(WicFormatOf(static_cast<PixelFormat>(42)), GUID_WICPixelFormat8bppGray);
    EXPECT_EQ(FindWicFormat(GUID_WICPixelFormat32bppBGR), nullptr);
}

TEST(WicCodec, WhatBringsDecodersDownIsRefused) {
    const TemporaryFolder folder;
    // A frame without colours, and a directory that is its own next one.
    const std::string gif = "GIF89a\1\0\1\0\0\0\0,\0\0\0\0\1\0\1\0\0\2\2\x4c\1\0;"s,
                      tiff = "II*\0\x8\0\0\0\0\0\x8\0\0\0"s;
    EXPECT_FALSE(Loaded(folder.Write(L"a.gif", gif)).IsValid());
    EXPECT_FALSE(Loaded(folder.Write(L"a.tif", tiff)).IsValid());

    // Thousands of directories, each of one tag that says nothing.
    std::string pages = "II*\0\x8\0\0\0"s;
    for (std::uint32_t at = 8 + 18; at < 8 + 18 * 5000; at += 18) {
        pages += "\1\0\xfe\0\4\0\1\0\0\0\0\0\0\0"s;
        for (int i = 0; i < 4; ++i) pages += static_cast<char>(at >> 8 * i);
    }
    EXPECT_FALSE(Loaded(folder.Write(L"b.tif", pages)).IsValid());

    // A JPEG whose header claims more than its few bytes can hold.
    Image small = RandomImage(16, 8, PixelFormat::Rgb8);
    ASSERT_TRUE(Saved(small, folder / L"a.jpg"));
    std::string jpeg = folder.Read(L"a.jpg");
    const std::size_t frame = jpeg.find("\xff\xc0");
    ASSERT_NE(frame, std::string::npos);
    jpeg[frame + 5] = jpeg[frame + 7] = 0x20;  // 8192 and some pixels each way
    EXPECT_FALSE(Loaded(folder.Write(L"a.jpg", jpeg)).IsValid());
}

}  // namespace
}  // namespace skyvault::test
