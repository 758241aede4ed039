// Radiance and OpenEXR pictures. The files of fuzz/corpus were written by other programs, or byte by byte,
// and their pixels follow the formulas below.

#include <array>
#include <cstring>

#include "codecs/dds_cube_map.h"
#include "session/conversion.h"
#include "session/messages.h"
#include "tests/made_files.h"

namespace skyvault::test {
namespace {

std::wstring CorpusFile(const std::string& name) {
    const std::string kind = name.substr(name.size() - 3);
    return FromUtf8(SKYVAULT_SOURCE_DIR "/fuzz/corpus/" + kind + "/" + name);
}

using Colour = std::array<float, 3>;

Colour ColourAt(const Image& image, int x, int y) {
    const ColorHalf colour = image.GetPixelHalf(x, y);
    return {HalfToFloat(colour.red), HalfToFloat(colour.green), HalfToFloat(colour.blue)};
}

/// Of the OpenEXR files, 13 x 37 pixels, some of them cut.
Colour SlopesAt(int x, int y) {
    const float across = static_cast<float>(x), down = static_cast<float>(y);
    return {across / 13 + down / 37, std::sin(across / 3) + 1, 2.5f};
}

/// Of the Radiance files, 9 x 5 pixels, before they are rounded to eight bits.
Colour StepsAt(int x, int y) {
    const float across = static_cast<float>(x), down = static_cast<float>(y);
    return {across / 3, down / 2 + 0.1f, std::exp2(across - 3)};
}

/// allowed: of the largest channel.
void ExpectColour(const Image& image, int x, int y, const Colour& expected, float allowed) {
    const Colour seen = ColourAt(image, x, y);
    const float largest = std::max({expected[0], expected[1], expected[2], 1e-3f});
    for (std::size_t c = 0; c < 3; ++c)
        ASSERT_NEAR(seen[c], expected[c], largest * allowed) << x << ", " << y << ": " << c;
}

TEST(HdrPictures, EveryWayOfPackingHoldsTheSamePixels) {
    const struct {
        const char* name;
        int width, height;
    } rows[] = {{"lines-none.exr", 13, 5}, {"lines-rle.exr", 13, 37},   {"lines-zips.exr", 13, 37},
                {"lines-zip.exr", 13, 37}, {"lines-piz.exr", 13, 37},   {"lines-pxr24.exr", 13, 37},
                {"tiles-zip.exr", 13, 37}, {"tiles-piz.exr", 13, 37},   {"float-piz.exr", 7, 9},
                {"upwards.exr", 13, 37},   {"resolutions.exr", 13, 37}, {"others.exr", 4, 4}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const Image image = Loaded(CorpusFile(row.name));
        ASSERT_TRUE(image.format == PixelFormat::RgbHalf && static_cast<int>(image.width) == row.width &&
                    static_cast<int>(image.height) == row.height);
        ForPixels(image, [&](int x, int y) { ExpectColour(image, x, y, SlopesAt(x, y), 0.0005f); });
    }
}

TEST(HdrPictures, WindowsPlaceThePixelsAndGreyIsGrey) {
    const struct {
        const char* name;
        int width, height, left, top, right, bottom;  // where the pixels lie, the last ones not included
    } rows[] = {{"window-smaller.exr", 9, 8, 2, 3, 6, 8}, {"window-larger.exr", 4, 4, -2, -3, 6, 6}};
    for (const auto& row : rows) {
        const Image image = Loaded(CorpusFile(row.name));
        ASSERT_TRUE(static_cast<int>(image.width) == row.width &&
                    static_cast<int>(image.height) == row.height);
        ForPixels(image, [&](int x, int y) {
            const bool inside = x >= row.left && x < row.right && y >= row.top && y < row.bottom;
            ExpectColour(image, x, y, inside ? SlopesAt(x - row.left, y - row.top) : Colour{}, 0.0005f);
        });
    }
    const Image grey = Loaded(CorpusFile("grey.exr")), veiled = Loaded(CorpusFile("grey-alpha.exr"));
    EXPECT_EQ(grey.format, PixelFormat::GreyHalf);
    EXPECT_NEAR(ColourAt(grey, 3, 4)[0], SlopesAt(3, 4)[0], 0.0005f);
    // Its colours are stored multiplied by an alpha of 0.4 of them.
    ASSERT_EQ(veiled.format, PixelFormat::RgbaHalf);
    ExpectColour(veiled, 3, 4, {2.5f, 2.5f, 2.5f}, 0.001f);
}

TEST(HdrPictures, RadianceComesInEveryOrderOfPixelsAndWithExposures) {
    constexpr int kLastX = 8, kLastY = 4;
    const struct {
        const char* name;
        std::function<Colour(int x, int y)> expected;
    } rows[] = {
        {"flat.hdr", StepsAt},
        {"runs.hdr", StepsAt},
        {"no-format.hdr", StepsAt},
        {"windows-lines.hdr", StepsAt},
        {"bottom-up.hdr", [](int x, int y) { return StepsAt(x, kLastY - y); }},
        {"mirrored.hdr", [](int x, int y) { return StepsAt(kLastX - x, y); }},
        {"columns.hdr", [](int x, int y) { return StepsAt(y, x); }},
        {"exposure.hdr",
         [](int x, int y) {
             Colour colour = StepsAt(x, y);
             for (float& channel : colour) channel /= 2;
             return colour;
         }},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const Image image = Loaded(CorpusFile(row.name));
        ASSERT_TRUE(image.IsValid() && image.width * image.height == 45);
        ForPixels(image, [&](int x, int y) { ExpectColour(image, x, y, row.expected(x, y), 0.004f); });
    }
    const Image repeated = Loaded(CorpusFile("old-runs.hdr"));
    ASSERT_TRUE(repeated.width == 300 && repeated.height == 2);
    ForPixels(repeated, [&](int x, int y) { ExpectColour(repeated, x, y, StepsAt(3, 1), 0.004f); });
}

TEST(HdrPictures, WhatIsWrittenIsReadAgain) {
    const TemporaryFolder folder;
    for (const PixelFormat format : AllFormats()) {
        const bool alpha = HasAlpha(format), grey = BytesPerPixel(format) < 3;
        for (const auto& [width, height] : {std::pair{1u, 1u}, {7u, 17u}, {300u, 300u}, {33000u, 2u}}) {
            SCOPED_TRACE(std::to_string(static_cast<int>(format)) + " " + std::to_string(width));
            Image source = RandomImage(width, height, format);
            Image halves(width, height,
                         alpha  ? PixelFormat::RgbaHalf
                         : grey ? PixelFormat::GreyHalf
                                : PixelFormat::RgbHalf);
            for (std::uint32_t y = 0; y < height; ++y) {
                if (alpha) MakeRowOpaque(format, source.Row(y), width);
                ConvertRow(format, source.Row(y), halves.format, halves.Row(y), width);
            }
            ASSERT_TRUE(Saved(source, folder / L"a.exr") && Saved(source, folder / L"a.hdr"));
            const Image exr = Loaded(folder / L"a.exr"), hdr = Loaded(folder / L"a.hdr");
            // 255 / 256 is the opaque of 8 bits: divided by it, colours come back but for a rounding.
            const bool exact = !alpha || ChannelType(format) == ChannelKind::Half;
            EXPECT_TRUE(exact ? SameBytes(exr, halves) : exr.format == halves.format);
            ASSERT_TRUE(exr.width == width && hdr.width == width && hdr.height == height &&
                        hdr.format == PixelFormat::RgbHalf);
            ForPixels(halves, [&](int x, int y) {
                ExpectColour(exr, x, y, ColourAt(halves, x, y), 0.002f);
                ExpectColour(hdr, x, y, ColourAt(halves, x, y), 0.004f);
            });
        }
    }
}

TEST(HdrPictures, TransparencyAndWhatIsNotFiniteAreWrittenAsFilesHaveThem) {
    const TemporaryFolder folder;
    Image image = Filled(3, 1, PixelFormat::RgbaHalf, Value(2, 4, 0.5f, 0.25f));
    image.SetPixel(1, 0, Value(INFINITY, NAN, -INFINITY, 1));
    image.SetPixel(2, 0, Value(3, 3, 3, 0));
    for (const wchar_t* name : {L"a.exr", L"a.hdr"}) {
        ASSERT_TRUE(Saved(image, folder / name));
        const Outcome told = LoadPicture(folder / name, image);
        EXPECT_TRUE(told.IsDone() && told.infoLog.empty()) << ToUtf8(told.infoLog);
        ExpectColour(image, 0, 0, {2, 4, 0.5f}, 0.002f);
        const bool signedValues = image.format == PixelFormat::RgbaHalf;
        ExpectColour(image, 1, 0, {65504, 0, signedValues ? -65504.0f : 0.0f}, 0.004f);
    }
}

TEST(HdrPictures, WhatHalvesCannotHoldIsClampedAndToldOnce) {
    const std::wstring exr = CorpusFile("float-beyond.exr"), hdr = CorpusFile("beyond.hdr");
    const struct {
        std::vector<std::wstring> files;
        PanoramaFormat layout;
        std::vector<std::wstring> lines;
    } rows[] = {
        {{exr},
         PanoramaFormat::Equirectangular,
         {Quoted(exr) +
          L": values beyond 65504, the largest half float, clamped: 2; no numbers, now 0: 1\n"}},
        {{exr},
         PanoramaFormat::SphereMap,
         {Quoted(exr) +
          L": values beyond 65504, the largest half float, clamped: 2; no numbers, now 0: 1\n"}},
        {{hdr, L"", L"", L"", L"", L""},
         PanoramaFormat::SingleFiles,
         {Quoted(hdr) + L": values beyond 65504, the largest half float, clamped: 4\n"}},
        {{CorpusFile("alpha.exr")}, PanoramaFormat::Equirectangular, {}},
    };
    for (const auto& row : rows) {
        TestPanorama test;
        const LayoutRow& layout = *FindLayout(row.layout);
        EXPECT_TRUE(ImportPanorama(layout, row.files, test.settings, test.feedback, test.panorama).IsDone());
        EXPECT_EQ(test.feedback.information, row.lines);
    }
    const Image image = Loaded(exr);
    EXPECT_EQ(ColourAt(image, 0, 0)[0], 65504.0f);
    EXPECT_EQ(ColourAt(image, 1, 1)[1], 0.0f);
    EXPECT_EQ(ColourAt(image, 2, 2)[2], -65504.0f);
}

TEST(HdrPictures, LightBeyondWhiteReachesFacesCrossesAndCubeMaps) {
    const TemporaryFolder folder;
    Image sky = Filled(256, 128, PixelFormat::RgbHalf, Value(0.25f, 0.5f, 300, 1));
    ASSERT_TRUE(Saved(sky, folder / L"sky.exr"));
    AppState settings;
    SilentFeedback silence;
    const struct {
        PanoramaFormat to;
        const wchar_t *output, *written;
    } rows[] = {{PanoramaFormat::SingleFiles, L"sky.exr", L"sky_bottom.exr"},
                {PanoramaFormat::HorizontalCross, L"cross.hdr", L"cross.hdr"},
                {PanoramaFormat::DirectXDds, L"sky.dds", nullptr}};
    for (const auto& row : rows) {
        Conversion conversion{FindLayout(PanoramaFormat::Equirectangular),
                              {folder / L"sky.exr"},
                              FindLayout(row.to),
                              folder / row.output,
                              {},
                              {}};
        const ConversionResult result = ConvertPanorama(conversion, settings, silence);
        ASSERT_TRUE(result.outcome.IsDone()) << ToUtf8(LineOf(result.outcome));
        Image image;
        std::array<Image, 6> faces;
        if (row.written != nullptr) {
            image = Loaded(folder / row.written);
        } else if (LoadDdsCubeMap(folder / row.output, faces, true).IsDone()) {
            image = std::move(faces[3]);
        }
        ASSERT_EQ(ChannelType(image.format), ChannelKind::Half) << ToUtf8(row.output);
        ExpectColour(image, static_cast<int>(image.width) / 2, static_cast<int>(image.height) / 2,
                     {0.25f, 0.5f, 300}, 0.004f);
    }
}

TEST(HdrPictures, CutFilesAreRefused) {
    const TemporaryFolder folder;
    for (const char* name : {"lines-none.exr", "lines-zip.exr", "lines-piz.exr", "lines-rle.exr",
                             "float-pxr24.exr", "tiles-zip.exr", "flat.hdr", "runs.hdr", "old-runs.hdr"}) {
        const Bytes whole = ReadFile(CorpusFile(name));
        const std::wstring path = folder / FileNamePart(CorpusFile(name));
        ASSERT_TRUE(WriteFile(path, whole) && Loaded(path).IsValid()) << name;
        for (std::size_t size = 1; size <= whole.size(); size += 1 + size / 16) {
            ASSERT_TRUE(
                WriteFile(path, Bytes(whole.begin(), whole.end() - static_cast<std::ptrdiff_t>(size))));
            ASSERT_FALSE(Loaded(path).IsValid()) << name << " without its last " << size;
        }
    }
}

/// Where the bytes of the text begin.
std::size_t Find(const Bytes& bytes, std::string_view text) {
    return static_cast<std::size_t>(std::search(bytes.begin(), bytes.end(), text.begin(), text.end()) -
                                    bytes.begin());
}

TEST(HdrPictures, KindsThatAreNotReadAndFalseClaimsAreRefused) {
    constexpr const wchar_t* kDamaged = L": it is damaged, or stored in a way that is not read";
    constexpr std::size_t kWindow = sizeof "dataWindow" + sizeof "box2i" + 4;
    const struct {
        const char *name, *at;
        std::size_t offset;
        Bytes written;
        const wchar_t* why;
    } rows[] = {
        {"lines-zip.exr", "", 5, {0x08}, L": deep pictures are not read"},
        {"lines-zip.exr", "", 5, {0x10}, L": files of several parts are not read"},
        {"lines-b44.exr", "", 0, {0x76}, L": its compression is not read"},
        // Half as many values of the first channel, which luminance and chroma have, and no colours at all.
        {"lines-zip.exr", "chlist", 7 + 4 + 2 + 8, {2}, L": its colours are not red, green and blue"},
        {"grey.exr", "chlist", 7 + 4, {'Z'}, L": its colours are not red, green and blue"},
        {"xyze.hdr", "", 0, {'#'}, L": its colours are not red, green and blue"},
        {"lines-zip.exr", "", 4, {3}, kDamaged},
        // 2^28 columns, 2^28 lines, a right edge left of the left one.
        {"lines-piz.exr", "dataWindow", kWindow + 8, Little(4, {1u << 28}), kDamaged},
        {"lines-zip.exr", "dataWindow", kWindow + 12, Little(4, {1u << 28}), kDamaged},
        {"lines-zip.exr", "dataWindow", kWindow + 8, Little(4, {0xffffffffu}), kDamaged},
        {"lines-zip.exr", "displayWindow", 3 + kWindow + 8, Little(4, {1u << 28, 1u << 28}), kDamaged},
        // The second chunk said to be the first, and one said to be longer than the file.
        {"lines-zip.exr", "screenWindowWidth", 18 + 6 + 4 + 4 + 1 + 8, Little(4, {100}), kDamaged},
        {"huge-claim.hdr", "", 0, {'#'}, kDamaged},
        {"flat.hdr", "-Y 5", 3, {'6'}, kDamaged},
        {"runs.hdr", "+X 9", 3, {'8'}, kDamaged},
        {"exposure.hdr", "0.5", 0, {'-'}, kDamaged},
        {"exposure.hdr", "0.5", 0, {'x'}, kDamaged},
    };
    const TemporaryFolder folder;
    for (const auto& row : rows) {
        SCOPED_TRACE(std::string(row.name) + " " + std::to_string(&row - rows));
        Bytes bytes = ReadFile(CorpusFile(row.name));
        const std::size_t place = Find(bytes, row.at) + row.offset;
        ASSERT_LE(place + row.written.size(), bytes.size());
        std::copy(row.written.begin(), row.written.end(), bytes.begin() + static_cast<std::ptrdiff_t>(place));
        const std::wstring path = folder / FileNamePart(CorpusFile(row.name));
        ASSERT_TRUE(WriteFile(path, bytes));
        Image image;
        EXPECT_EQ(MessageOf(LoadPicture(path, image)), L"Could not open " + Quoted(path) + row.why);
        EXPECT_FALSE(image.IsValid());
    }
}

}  // namespace
}  // namespace skyvault::test
