// Every layout that is a picture, pixel by pixel against its definition (tests/layout_rules.h), and every
// layout there and back. Both sets of kernels draw and read everything, on one thread and on many.
#include <gtest/gtest.h>

#include <cstring>

#include "platform/parallel_rows.h"
#include "projection/build_faces.h"
#include "projection/disc_kernels.h"
#include "projection/resize_image.h"
#include "tests/data_table.h"
#include "tests/layout_faults.h"
#include "tests/layout_rules.h"
#include "tests/picture_io.h"

namespace skyvault::test {
namespace {

class Pixels : public testing::TestWithParam<LayoutRule> {
  protected:
    Pixels() { t.settings.resolution0 = t.settings.resolution1 = t.settings.resolution2 = 0; }
    ~Pixels() override {
        UseKernels(KernelSet::Fastest);
        SetThreadCount(0);
    }
    static void UseOneThread(bool one) {
        UseKernels(one ? KernelSet::Baseline : KernelSet::Fastest);
        SetThreadCount(one ? 1 : 8);
    }

    Outcome Render(const ExportRequest& request, Image& result) {
        Image baseline;
        UseOneThread(true);
        const Outcome outcome = rule.Row().render(t.panorama, request, quiet, baseline);
        UseOneThread(false);
        EXPECT_EQ(rule.Row().render(t.panorama, request, t.feedback, result).reason, outcome.reason);
        EXPECT_TRUE(!outcome.IsDone() || SameBytes(result, baseline));
        return outcome;
    }

    /// Saves the picture and makes it t's panorama.
    void Import(const Image& picture) {
        Image copy = picture.CopyRect();
        ASSERT_TRUE(Saved(copy, path));
        Panorama baseline;
        UseOneThread(true);
        ASSERT_TRUE(ImportPanorama(rule.Row(), {path}, t.settings, quiet, baseline).IsDone());
        UseOneThread(false);
        t.panorama = {};
        ASSERT_TRUE(ImportPanorama(rule.Row(), {path}, t.settings, t.feedback, t.panorama).IsDone());
        for (std::size_t f = 0; rule.place != nullptr && f < kFaceCount; ++f) {
            EXPECT_TRUE(SameBytes(t.panorama.faces[f], baseline.faces[f])) << f;
        }
    }

    /// The picture has the size and format, and each pixel is the one along its direction.
    void ExpectPicture(const ExportRequest& request, const PictureSize& size, PixelFormat format);

    const LayoutRule& rule = GetParam();
    const TemporaryFolder folder;
    const std::wstring path = folder / L"picture.png";
    TestPanorama t;
    SilentFeedback quiet;
};

INSTANTIATE_TEST_SUITE_P(All, Pixels, testing::ValuesIn(LayoutRules()), [](const auto& rule) {
    std::string name = rule.param.Row().consoleName;
    std::erase(name, '-');
    return name;
});

/// True for a pixel's own place or one beside it that roundings may take for it.
template <typename Matches>
bool AtOrBeside(Matches matches) {
    constexpr double kMoves[] = {0, -1e-3, 1e-3};
    for (const double x : kMoves) {
        for (const double y : kMoves) {
            if (matches(x, y)) return true;
        }
    }
    return false;
}

void Pixels::ExpectPicture(const ExportRequest& request, const PictureSize& size, PixelFormat format) {
    Image picture;
    ASSERT_TRUE(Render(request, picture).IsDone());
    ASSERT_EQ(PictureSize(picture.width, picture.height), size);
    ASSERT_EQ(picture.format, format);
    const int width = static_cast<int>(size.width), height = static_cast<int>(size.height);
    const Shown shown{width,
                      height,
                      static_cast<int>(t.panorama.faceSize),
                      request.camera,
                      t.settings.previewFov,
                      t.settings.magnifyingGlass && request.IsView()};
    Image one(1, 1, format);
    int wrong = 0;
    for (int j = 0; j < height; ++j) {
        const std::byte* const row = picture.Row(static_cast<std::uint32_t>(j));
        for (int i = 0; i < width; ++i) {
            const bool seen = AtOrBeside([&](double moveX, double moveY) {
                const std::optional<Direction> d = rule.look(rule, shown, i + moveX, j + moveY);
                one.SetPixel(0, 0, d ? t.Sample(*d) : PixelValue(EmptyColour(t.settings)));
                return std::memcmp(row + i * BytesPerPixel(format), one.pixels.get(), one.ByteCount()) == 0;
            });
            if (!seen && wrong++ == 0) ADD_FAILURE() << "first at " << i << ", " << j;
        }
    }
    EXPECT_EQ(wrong, 0) << "of " << width << " x " << height;
}

TEST_P(Pixels, OfViewsAreThoseOfTheirDirections) {
    t.settings.resolution1 = t.settings.resolution2 = 2;
    t.settings.backgroundColour = Color8(10, 20, 30, 77);
    for (const auto& [where, source, edge, faces, transparency, turned] :
         TableOf<std::uint32_t, int, bool, bool, bool>("pixel_views")) {
        if (edge * rule.columns > 1700) continue;
        SCOPED_TRACE(where);
        t.panorama = {};
        if (faces) {
            t.SetFaces(source / 4, PixelFormat::Rgba8);
        } else {
            t.SetEquirectangular(RandomImage(source, (source + 1) / 2, PixelFormat::Rgb16));
        }
        t.settings.transparency = transparency;
        // One more pixel in height makes no difference.
        const ClientSize room{rule.columns * edge, rule.rows * edge + 1};
        ExportRequest request = t.ForView(rule.format, room);
        if (turned) {
            RotatePanorama(t.panorama.modifications, 0.4f, -0.8f, 0.3f);
            t.panorama.modifications.flipHorizontal = true;
            t.panorama.modifications.logoSize = 0.3f;
            request.camera = {0.5f, -0.3f, 1.0f};
        }
        t.settings.magnifyingGlass = turned;
        ExpectPicture(request, ViewSizeBy(rule, room, t.settings, static_cast<int>(t.panorama.faceSize)),
                      transparency ? PixelFormat::Rgba8 : PixelFormat::Rgb8);
    }
    for (const ClientSize room : {ClientSize{1000, 200}, {1001, 700}, {301, 700}, {2000, 3000}}) {
        Image picture;
        ASSERT_TRUE(Render(t.ForView(rule.format, room), picture).IsDone());
        EXPECT_EQ(PictureSize(picture.width, picture.height), ViewSizeBy(rule, room, t.settings, 1));
    }
    EXPECT_TRUE(t.feedback.information.empty()) << "views never show a message";
}

TEST_P(Pixels, OfFilesAreInTheSourcesFormatAndNoMoreThanItHas) {
    t.settings.antialiasing = false;
    t.settings.transparency = true;
    std::uint32_t N = rule.size ? 1 : 61;
    for (const PixelFormat format : AllFormats()) {
        SCOPED_TRACE(ToUtf8(FormatName(format)) + " " + std::to_string(N));
        t.SetFaces(N, format);
        t.feedback.information.clear();
        const PictureSize size = FileSizeBy(rule, t.settings, static_cast<int>(N));
        ExpectPicture(t.ForFile(rule.format), size, format);
        const bool tooLow = size != FileSizeBy(rule, t.settings, 256);
        EXPECT_EQ(t.feedback.information.size(), tooLow ? 1u : 0u);
        if (!rule.size) break;
        N += N / 2 + 1;  // 1, 2, 4, 7, 11, 17, 26, 40, 61
    }
    t.SetEquirectangular(RandomImage(1200, 600, PixelFormat::Rgba8));
    ExpectPicture(t.ForFile(rule.format), FileSizeBy(rule, t.settings, 300), PixelFormat::Rgba8);
}

TEST_P(Pixels, OfAntialiasedFilesAreAveragesOfFour) {
    t.SetEquirectangular(RandomImage(1200, 600, PixelFormat::Rgb8));
    Image averaged, plain;
    ASSERT_TRUE(Render(t.ForFile(rule.format), averaged).IsDone());
    t.settings.antialiasing = false;
    const bool averages = rule.size && !rule.IsCells();
    if (averages) t.settings.resolution1 = t.settings.resolution2 = 1;
    ASSERT_TRUE(Render(t.ForFile(rule.format), plain).IsDone());
    if (averages) plain = ResizeImage(plain, plain.width / 2, plain.height / 2, plain.format, true, false);
    EXPECT_TRUE(SameBytes(averaged, plain));
}

TEST_P(Pixels, AreNoneWhereThereIsNothingToShow) {
    Image picture;
    EXPECT_EQ(Render(t.ForView(rule.format), picture).reason, Reason::NothingToShow);
    EXPECT_EQ(Render(t.ForFile(rule.format), picture).reason, Reason::NothingToShow);
    t.SetFaces(8, PixelFormat::Rgb8);
    for (const ClientSize room :
         {ClientSize{0, 0}, {500, 0}, {-6, -6}, {rule.size ? rule.columns - 1 : 1, 500}}) {
        EXPECT_EQ(Render(t.ForView(rule.format, room), picture).reason, Reason::NothingToShow) << room.width;
    }
    t.panorama.faces[0].Clear();
    EXPECT_TRUE(Render(t.ForView(rule.format), picture).IsDone()) << "a view needs no front face";
    EXPECT_EQ(Render(t.ForFile(rule.format), picture).reason, Reason::NoFrontFace);
}

/// Red is the column, green the row, blue says that the pixel is there at all.
Color16 ColourOfPlace(int column, int row) {
    return {static_cast<std::uint16_t>(column), static_cast<std::uint16_t>(row), 999, 65535};
}

TEST_P(Pixels, OfImportedFacesComeFromTheirPlaces) {
    if (rule.place == nullptr) GTEST_SKIP() << "no faces are made";
    const int columns = rule.columns, rows = rule.rows;
    const std::pair<int, int> sizes[] = {
        {columns * 7, rows * 7},
        {columns * 5 + columns - 1, rows * 5 + 2},  // columns and rows nobody needs
        {columns * 5, rows * 5 - 3},                // the last cells are cut
        {columns * 5, 2},                           // hardly anything there
        {columns * 7, 1},
        {columns * 2, rows * 40},
        {columns, rows},
        {130 / columns, 129 / columns},
    };
    const bool isRoom = rule.format == PanoramaFormat::InteriorSquare;
    for (const auto& [wide, high] : sizes) {
        const int width = wide, height = high;
        SCOPED_TRACE(std::to_string(width) + " x " + std::to_string(height));
        Import(Drawn(width, height, PixelFormat::Rgb16, ColourOfPlace));
        const int N = rule.format == PanoramaFormat::InteriorStrip ? height
                      : rule.IsCells()                             ? width / columns
                      : isRoom                                     ? width
                                                                   : 2 * width;
        ASSERT_EQ(static_cast<int>(t.panorama.faceSize), N);
        const Color16 nowhere = isRoom ? Color16{65535, 65535, 65535, 65535} : Color16{0, 0, 0, 65535};
        const auto wrapped = [](int position, int size) { return (position % size + size) % size; };
        int wrong = 0;
        for (int f = 0; f < kFaceCount; ++f) {
            const Image& face = t.panorama.faces[static_cast<std::size_t>(f)];
            ASSERT_EQ(face.format, PixelFormat::Rgb16);
            ASSERT_TRUE(static_cast<int>(face.width) == N && static_cast<int>(face.height) == N);
            for (int at = 0; at < N * N; ++at) {
                const bool right = AtOrBeside([&](double moveX, double moveY) {
                    const std::optional<Place> p = rule.place(rule, {width, height, N, moveX, moveY},
                                                              static_cast<CubeFace>(f), at % N, at / N);
                    return face.GetPixel16(at % N, at / N) ==
                           (p ? ColourOfPlace(wrapped(p->column, width), wrapped(p->row, height)) : nowhere);
                });
                if (!right && wrong++ == 0) ADD_FAILURE() << "face " << f << ": " << at % N << ", " << at / N;
            }
        }
        EXPECT_EQ(wrong, 0);
    }
    if (!rule.IsCells() || rule.format == PanoramaFormat::InteriorStrip) return;
    Image narrow(static_cast<std::uint32_t>(columns - 1), 9, PixelFormat::Rgb8);
    ASSERT_TRUE(Saved(narrow, path));
    EXPECT_EQ(ImportPanorama(rule.Row(), {path}, t.settings, quiet, t.panorama).reason, Reason::CannotOpen);
}

TEST_P(Pixels, AreReadWithTheirAlphaOrOverTheBackground) {
    if (rule.Row().import == nullptr) GTEST_SKIP() << "cannot be read";
    t.settings.backgroundColour = Color8(200, 100, 50, 0);
    const bool isRoom = rule.format == PanoramaFormat::InteriorSquare;
    for (const PixelFormat format : {PixelFormat::Rgb16, PixelFormat::Rgba16}) {
        const Image picture = RandomImage(static_cast<std::uint32_t>(rule.columns) * 8,
                                          static_cast<std::uint32_t>(rule.rows) * 8, format);
        t.settings.transparency = false;
        Import(picture);
        EXPECT_EQ(t.panorama.faceSize, rule.place == nullptr ? 4u : t.panorama.faces[0].width);
        const Panorama opaque = std::move(t.panorama);
        t.settings.transparency = true;
        Import(picture);
        Image* const seen = rule.place != nullptr ? t.panorama.faces.data() : &t.panorama.equirectSource;
        const Image* const over = rule.place != nullptr ? opaque.faces.data() : &opaque.equirectSource;
        for (int f = 0; f < (rule.place != nullptr ? kFaceCount : 1); ++f) {
            EXPECT_EQ(over[f].format, format);
            // The back wall, which is not in the picture, is transparent.
            EXPECT_EQ(seen[f].format, isRoom ? PixelFormat::Rgba16 : format);
            EXPECT_TRUE(!isRoom || HasAlpha(format) || seen[f].GetPixel8(4, 4).alpha == (f == 2 ? 0 : 255));
            if (isRoom && (f == 2 || !HasAlpha(format))) continue;
            // Crosses and strips are cut out as they are; the others' pixels do not mix.
            const bool cutOut = rule.IsCells() && rule.format != PanoramaFormat::InteriorStrip;
            if (!cutOut) seen[f].FlattenAlpha(Color8(200, 100, 50, 255));
            EXPECT_TRUE(SameBytes(seen[f], over[f])) << f;
        }
    }
}

TEST(Layouts, WhatWasExportedComesBack) {
    const TemporaryFolder folder;
    TestPanorama t;
    t.settings.resolution0 = t.settings.resolution1 = t.settings.resolution2 = 1;
    t.settings.compressDds = false;
    t.SetEquirectangular(DirectionPicture(1024));
    for (const LayoutRow& layout : Layouts()) {
        using enum PanoramaFormat;
        if (layout.kind != LayoutKind::Panorama) continue;
        SCOPED_TRACE(layout.consoleName);
        const std::wstring path = folder / (L"a" + LayoutFaults::Extension(layout));
        ASSERT_TRUE(ExportPanorama(layout, path, {}, t.settings, t.feedback, t.panorama).IsDone());
        TestPanorama again;
        const std::vector<std::wstring> files = FilesFor(layout, path);
        ASSERT_TRUE(ImportPanorama(layout, files, t.settings, t.feedback, again.panorama).IsDone());
        for (int n = 0; n < 200; ++n) {
            const double z = 1 - (n + 0.5) / 100, around = n * 2.399963, radius = std::sqrt(1 - z * z);
            const Direction d = ToDirection(radius * std::cos(around), radius * std::sin(around), z);
            // But for what the layout has no room for.
            if (layout.format == MirrorBall && z < 0.2) break;
            if (layout.format == SphereMap && z < -0.9) break;
            if (layout.format == InteriorSquare && -z > std::max(std::fabs(d.x), std::fabs(d.y)) - 0.02f)
                continue;
            EXPECT_LT(DegreesFrom(d, again.Sample(d)), 3) << d.x << " " << d.y << " " << d.z;
        }
        // Nothing is lost where faces are stored as they are.
        const bool stored = layout.format != Equirectangular && layout.format != QuickTimeVr &&
                            (layout.format < SphereMap || layout.format == InteriorStrip);
        for (int f = 0; stored && f < kFaceCount; ++f) {
            const Image& read = again.panorama.faces[static_cast<std::size_t>(f)];
            Image face;
            ASSERT_TRUE(BuildFace(t.panorama, face, static_cast<CubeFace>(f), 256, read.format, {}).IsDone());
            EXPECT_TRUE(SameBytes(read, face)) << f;
        }
    }
}

TEST(Layouts, DirectionsWithoutAPlaceGetOne) {
    DirectionBlock block;
    std::int32_t column = 0, row = 0;
    const auto at = [&](DiscKernels::Pixels pixels, const Direction& d) {
        block.x[0] = d.x, block.y[0] = d.y, block.z[0] = d.z;
        pixels(block, 1, 1001, 601, &column, &row);
    };
    at(DiscPasses().sphereMapPixels, {-0.0f, 0, -1});
    EXPECT_TRUE(column == 1000 && row == 300) << "the whole rim looks back";
    // Around the latitude whose circle has no radius: anywhere on the axis.
    float latitude = 1.5689f;
    for (int n = 0; n < 2000; ++n, latitude = std::nextafter(latitude, 2.0f)) {
        at(DiscPasses().heartPixels, ToDirection(std::cos(double{latitude}), std::sin(double{latitude}), 0));
        ASSERT_TRUE(std::abs(column - 500) <= 1 && std::abs(row - 136) <= 1) << latitude;
    }
}

}  // namespace
}  // namespace skyvault::test
