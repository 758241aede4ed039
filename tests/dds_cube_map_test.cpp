#include "codecs/dds_cube_map.h"

#include <gtest/gtest.h>

#include "image/pixel_rows.h"
#include "platform/files.h"
#include "platform/utf8.h"
#include "projection/build_faces.h"
#include "projection/dds.h"
#include "session/conversion.h"
#include "session/messages.h"
#include "tests/made_dds.h"
#include "tests/temporary_folder.h"
#include "tests/test_panorama.h"

namespace skyvault::test {
namespace {

using enum PixelFormat;

constexpr const char* kPicture = "dx10=28";
constexpr const char* kCube = "dx10=28 misc=4";
constexpr const char* kVolume = "dx10=28 dimension=4 depth=2 flags=0x801007";

Faces RandomFaces(std::uint32_t size, PixelFormat format) {
    Faces faces;
    for (std::uint32_t f = 0; f < 6; ++f) faces[f] = RandomImage(size, size, format, f + 3);
    return faces;
}

Faces FilledFaces(std::uint32_t size, PixelFormat format, const PixelValue& colour) {
    Faces faces;
    for (Image& face : faces) face = Filled(size, size, format, colour);
    return faces;
}

TEST(DdsCubeMap, TheHeaderTellsTheKind) {
    const TemporaryFolder folder;
    const char* const names[] = {"unusable", "picture", "volume", "cube map"};
    for (const DataRow& row : DataGroup("dds", "kind")) {
        ASSERT_TRUE(WriteDds(folder / L"a.dds", row[2]));
        EXPECT_EQ(names[static_cast<int>(GetDdsKind(folder / L"a.dds"))], row[3]) << row.where;
    }
    EXPECT_EQ(GetDdsKind(folder / L"missing.dds"), DdsKind::Unusable);
    EXPECT_EQ(GetDdsKind(L""), DdsKind::Unusable);
}

TEST(DdsCubeMap, FacesLieInTheFileAsPlusAndMinusXYZAndGoOnAroundTheirEdges) {
    const TemporaryFolder folder;
    Faces faces = RandomFaces(4, Rgba8);
    faces[4] = RandomImage(2, 3, Rgba8);
    ASSERT_TRUE(SavedCube(folder / L"a.dds", faces, true, false));
    Bytes expected;
    for (const CubeFace f : {CubeFace::Right, CubeFace::Left, CubeFace::Top, CubeFace::Bottom,
                             CubeFace::Front, CubeFace::Back}) {
        for (std::int32_t i = 0; i < 16; ++i) {
            const Color8 c = faces[static_cast<std::size_t>(f)].GetPixel8(i % 4, i / 4);
            expected.insert(expected.end(), {c.red, c.green, c.blue, c.alpha});
        }
    }
    EXPECT_EQ(GetDdsKind(folder / L"a.dds"), DdsKind::CubeMap);
    const Bytes file = ReadFile(folder / L"a.dds");
    ASSERT_GT(file.size(), expected.size());
    EXPECT_EQ(Bytes(file.end() - static_cast<std::ptrdiff_t>(expected.size()), file.end()), expected);
}

TEST(DdsCubeMap, EveryFormatComesBackInItsChannelTypeWithAlpha) {
    const TemporaryFolder folder;
    for (const PixelFormat format : AllFormats()) {
        for (const bool keepAlpha : {false, true}) {
            SCOPED_TRACE(ToUtf8(FormatName(format)) + (keepAlpha ? " with alpha" : ""));
            const Faces faces = RandomFaces(5, format);
            ASSERT_TRUE(SavedCube(folder / L"\x00fc.dds", faces, keepAlpha, false));
            Faces read;
            ASSERT_TRUE(LoadedCube(folder / L"\x00fc.dds", read, true));
            for (std::size_t f = 0; f < 6; ++f) {
                Image expected(5, 5, WithAlpha(format));
                for (std::uint32_t y = 0; y < 5; ++y) {
                    ConvertRow(format, faces[f].Row(y), expected.format, expected.Row(y), 5);
                    if (!keepAlpha) MakeRowOpaque(expected.format, expected.Row(y), 5);
                }
                EXPECT_TRUE(SameBytes(read[f], expected)) << f;
            }
        }
    }
}

TEST(DdsCubeMap, WithoutAlphaPixelsAreCompositedOverBlack) {
    const TemporaryFolder folder;
    const std::pair<PixelValue, PixelValue> rows[] = {
        {PixelValue(Color8(200, 100, 50, 0)), PixelValue(Color8())},
        {PixelValue(Color8(200, 100, 50, 128)), PixelValue(Color8(100, 50, 25, 255))},
        {PixelValue(Color8(9, 8, 7, 255)), PixelValue(Color8(9, 8, 7, 255))},
        // So nearly opaque that 8 bits do not show it.
        {Value({65535, 1000, 0, 65534}), Value({65534, 999, 0, 65535})},
        {Value(0.25f, 0.5f, 0, 2), Value(0.5f, 1, 0, 1)},
    };
    for (const auto& [pixel, flat] : rows) {
        ASSERT_TRUE(SavedCube(folder / L"a.dds", FilledFaces(2, pixel.format, pixel), true, false));
        Faces read;
        ASSERT_TRUE(LoadedCube(folder / L"a.dds", read, false));
        for (const Image& face : read)
            EXPECT_TRUE(SameBytes(face, Filled(2, 2, flat.format, flat))) << int{pixel.color8.alpha};
    }
}

TEST(DdsCubeMap, StoredFormatsAreReadOrRefused) {
    const TemporaryFolder folder;
    const std::wstring onePath = folder / L"one.dds", cubePath = folder / L"cube.dds";
    for (const DataRow& row : DataGroup("dds", "format")) {
        SCOPED_TRACE(row.where);
        const std::vector<std::uint32_t> told = Numbers(row[4]);
        const auto format = static_cast<PixelFormat>(told[1]);
        Bytes one;
        for (std::uint32_t i = 0; i < 16 / told[0]; ++i) one = Join({one, FromHex(row[3])});
        ASSERT_TRUE(WriteDds(onePath, row[2], one));
        ASSERT_TRUE(WriteDds(cubePath, row[2] + " misc=4", Join({one, one, one, one, one, one})));
        Faces faces;
        EXPECT_EQ(LoadedCube(cubePath, faces, true), format != None);
        const Image picture = Loaded(onePath);
        EXPECT_EQ(faces[3].format, format);
        EXPECT_EQ(picture.format, format);
        if (format == None) continue;
        const Color8 a = faces[3].GetPixel8(2, 3), b = picture.GetPixel8(2, 3);
        EXPECT_EQ(
            (std::vector<std::uint32_t>{a.red, a.green, a.blue, a.alpha, b.red, b.green, b.blue, b.alpha}),
            std::vector(told.begin() + 2, told.end()));
        EXPECT_FALSE(LoadedCube(onePath, faces, true)) << "one is not the other";
        EXPECT_FALSE(Loaded(cubePath).IsValid());
    }
    Faces faces;
    for (const char* const fields : {kVolume, "width=4 height=2 dx10=28 items=6", "dx10=28 items=7"}) {
        ASSERT_TRUE(WriteDds(onePath, fields, Bytes(448)));
        EXPECT_FALSE(Loaded(onePath).IsValid() || LoadedCube(onePath, faces, true)) << fields;
    }
}

TEST(DdsCubeMap, OnlyEightBitsAreCompressedAndTheLogDescribesIt) {
    const TemporaryFolder folder;
    for (const PixelFormat format : {Rgb8, Grey8, Rgba8, Rgb16, Rgba16, GreyHalf, RgbaHalf}) {
        SCOPED_TRACE(ToUtf8(FormatName(format)));
        const PixelValue colour(Color8(255, 0, 255, 255));  // BC1 has it exactly, and so has every format
        const bool eightBits = ChannelType(format) == ChannelKind::Int8;
        const auto pixelBytes = [&](bool compress) {
            return compress && eightBits ? 32 : eightBits ? 256 : 512;
        };
        Image picture = Filled(8, 8, format, colour);
        std::wstring log;
        for (const bool compress : {false, true}) {
            const std::wstring path = folder / L"a.dds";
            ASSERT_TRUE(SavedCube(path, FilledFaces(8, format, colour), true, compress, &log));
            const int rest = static_cast<int>(FileSizeOf(path)) - 6 * pixelBytes(compress);
            EXPECT_TRUE(rest == 128 || rest == 148) << rest;
            EXPECT_TRUE(log.starts_with(L"Path\t\t" + path + L"\nSize\t\t"));
            EXPECT_TRUE(log.ends_with(L"\nResolution\t6 x 8 x 8\nProjection\tCubemap\nFormat\t\t" +
                                      std::wstring(FormatName(format)) + L"\n"));
        }
        // A picture is compressed whenever it has 8 bits.
        ASSERT_TRUE(Saved(picture, folder / L"b.dds", None, &log));
        const int rest = static_cast<int>(FileSizeOf(folder / L"b.dds")) - pixelBytes(true);
        EXPECT_TRUE(rest == 128 || rest == 148) << rest;
        EXPECT_TRUE(log.ends_with(PictureInfo(folder / L"b.dds", 8, 8, format)));
    }
}

TEST(DdsCubeMap, CompressedFacesStayInTheirPlacesAndKeepOneBitOfAlpha) {
    const TemporaryFolder folder;
    // A ramp downwards; left columns, blocks apart, are opaque, the right ones clear.
    Faces faces = RandomFaces(8, Rgba8), read;
    const auto grey = [](std::size_t face, int y) { return static_cast<std::uint8_t>(40 * face + y); };
    for (std::size_t f = 0; f < 6; ++f) {
        ForPixels(faces[f], [&](int x, int y) {
            faces[f].SetPixel(x, y, Color8(grey(f, y), grey(f, y), grey(f, y), x < 4 ? 128 : 127));
        });
    }
    for (const bool keepAlpha : {false, true}) {
        ASSERT_TRUE(SavedCube(folder / L"a.dds", faces, keepAlpha, true));
        ASSERT_TRUE(LoadedCube(folder / L"a.dds", read, true));
        for (std::size_t f = 0; f < 6; ++f) {
            ForPixels(read[f], [&](int x, int y) {
                const Color8 pixel = read[f].GetPixel8(x, y);
                const bool opaque = !keepAlpha || x < 4;
                ASSERT_EQ(pixel.alpha, opaque ? 255 : 0) << f << ": " << x << ", " << y;
                ASSERT_NEAR(pixel.green, opaque ? grey(f, y) : 0, 5) << f << ": " << x << ", " << y;
            });
        }
    }
}

TEST(DdsCubeMap, PicturesOfAnySizeComeBackWhole) {
    const TemporaryFolder folder;
    const Color8 colours[] = {{255, 0, 0, 255}, {0, 255, 0, 255}, {0, 0, 255, 255}};
    // Large pictures are compressed in parts.
    for (const auto& [width, height] : {std::pair{1, 7}, {3, 7}, {4, 7}, {5, 7}, {5, 1501}}) {
        for (const PixelFormat format : {Rgb8, Rgba16, RgbHalf}) {
            SCOPED_TRACE(ToUtf8(FormatName(format)) + " " + std::to_string(width));
            Image picture(static_cast<std::uint32_t>(width), static_cast<std::uint32_t>(height), format);
            ForPixels(picture, [&](int x, int y) { picture.SetPixel(x, y, colours[y / 4 % 3]); });
            ASSERT_TRUE(Saved(picture, folder / L"a.dds"));
            const Image read = Loaded(folder / L"a.dds");
            EXPECT_EQ(Difference(picture, read), 0);
        }
    }
    // Alpha is kept when the format asked for has it, not when the picture does.
    Image clear = Filled(4, 4, Rgba16, Color8(255, 255, 255, 3));
    for (const PixelFormat format : {Rgb16, Rgba16}) {
        ASSERT_TRUE(Saved(clear, folder / L"a.dds", format));
        EXPECT_EQ(Loaded(folder / L"a.dds").GetPixel16(0, 0).alpha, format == Rgb16 ? 65535 : 1023);
    }
}

TEST(DdsCubeMap, AFailedWriteLeavesTheOlderFileAndEmptiesTheLog) {
    const TemporaryFolder folder;
    folder.Write(L"a.dds", "older");
    const auto fails = [&](const Faces& faces, const std::wstring& to, bool compress) {
        std::wstring infoLog = L"before";
        const bool failed = !SavedCube(to, faces, true, compress, &infoLog);
        return failed && infoLog.empty() && folder.Read(L"a.dds") == "older" && folder.FileCount() == 1;
    };
    for (const bool compress : {false, true}) {
        EXPECT_TRUE(fails(RandomFaces(4, Rgba8), L"", compress));
        EXPECT_TRUE(fails(RandomFaces(4, Rgba8), folder / L"missing/a.dds", compress));
        for (std::size_t f = 0; f < 6; ++f) {
            Faces faces = RandomFaces(4, Rgba8);
            faces[f].Clear();
            EXPECT_TRUE(fails(faces, folder / L"a.dds", compress)) << f;
        }
    }
}

TEST(DdsImport, AFileSaysItselfWhetherItIsACubeMap) {
    const TemporaryFolder folder;
    const std::wstring isCube = L" is a cubemap.\n\nNow switching to cubemap.";
    const std::wstring isNone = L" is not a cubemap.\n\nNow switching to equirectangular.";
    const struct {
        const wchar_t* name;
        const char* fields;
        PanoramaFormat format;
        std::wstring said;       ///< after the file's name
        std::uint32_t faceSize;  ///< 4 of the cube, 1 of the picture, 0 of nothing
    } rows[] = {
        {L"cube.dds", kCube, PanoramaFormat::DirectXDds, L"", 4},
        {L"array.Dds", "dx10=28 items=6", PanoramaFormat::Equirectangular, isCube, 4},
        {L"palette.DDS", kCube, PanoramaFormat::Voronoi, isCube, 4},
        {L"one.dds", kPicture, PanoramaFormat::DirectXDds, isNone, 1},
        {L"one.dds", kPicture, PanoramaFormat::Equirectangular, L"", 1},
        {L"volume.dds", kVolume, PanoramaFormat::DirectXDds, L"", 0},
        {L"two.dds", "dx10=28 items=2", PanoramaFormat::Equirectangular, L"", 0},
        {L"cube.dds.bin", kCube, PanoramaFormat::DirectXDds, L"", 4},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(ToUtf8(row.name) + " as " + std::to_string(static_cast<int>(row.format)));
        const std::wstring path = folder / row.name;
        ASSERT_TRUE(WriteDds(path, row.fields, Bytes(16 * 4 * 6, 99)));
        TestPanorama imported;
        const Outcome outcome = ImportPanorama(*FindLayout(row.format), {path}, imported.settings,
                                               imported.feedback, imported.panorama);
        std::wstring said, failed = row.faceSize == 0 ? L"Could not open \"" + path + L"\"" : L"";
        if (!row.said.empty()) said = L"\"" + std::wstring(row.name) + L"\"" + row.said;
        const RecordingFeedback& feedback = imported.feedback;
        EXPECT_EQ(feedback.information.empty() ? L"" : feedback.information[0], said);
        EXPECT_EQ(MessageOf(outcome), failed);
        EXPECT_EQ(imported.panorama.equirectSource.IsValid(), row.faceSize == 1);
        for (const Image& face : imported.panorama.faces) EXPECT_EQ(face.IsValid(), row.faceSize == 4);
        EXPECT_EQ(imported.panorama.faceSize, row.faceSize);
    }
}

TEST(DdsExport, WritesTheBuiltFacesAtAPowerOfTwoAsTheSettingsSay) {
    const TemporaryFolder folder;
    const std::wstring path = folder / L"a.dds";
    for (int settings = 0; settings < 8; ++settings) {
        SCOPED_TRACE(settings);
        TestPanorama made;
        made.settings.compressDds = settings & 1;
        made.settings.transparency = settings & 2;
        made.settings.resolution0 = 0;
        settings & 4 ? made.SetEquirectangular(RandomImage(400, 200, Rgba8)) : made.SetFaces(100, Rgba8);
        made.panorama.modifications.flipHorizontal = true;
        const ExportRequest request = made.ForFile(PanoramaFormat::DirectXDds, path);
        Image none;
        ASSERT_TRUE(ExportCubeMapDDS(made.panorama, request, made.feedback, none).IsDone());
        ASSERT_EQ(made.feedback.information.size(), 2u) << "the source is small, and no power of two";
        EXPECT_EQ(made.feedback.information[1],
                  L"The resolution has been changed from 100 to 128 to make it a power of 2");
        EXPECT_EQ(FileSizeOf(path) / 1024, settings & 1 ? 48u : 384u);
        Faces read;
        ASSERT_TRUE(LoadedCube(path, read, true));
        for (std::uint32_t f = 0; f < 6 && !(settings & 1); ++f) {
            Image built;
            ASSERT_TRUE(BuildFace(made.panorama, built, static_cast<CubeFace>(f), 128, Rgba8, {}).IsDone());
            for (std::uint32_t y = 0; !(settings & 2) && y < 128; ++y)
                MakeRowOpaque(Rgba8, built.Row(y), 128);
            EXPECT_TRUE(SameBytes(read[f], built)) << f;
        }
    }
}

TEST(DdsExport, NothingIsWrittenOfAnIncompletePanorama) {
    const TemporaryFolder folder;
    for (std::size_t f = 0; f < 8; ++f) {
        TestPanorama made;
        made.SetFaces(8, Rgb8);
        if (f < 6) made.panorama.faces[f].Clear();
        if (f == 6) made.panorama.faces[0] = RandomImage(8, 9, Rgb8);
        made.settings.resolution0 = 0;
        const ExportRequest request = made.ForFile(PanoramaFormat::DirectXDds, folder / L"a.dds");
        Image none;
        EXPECT_EQ(ExportCubeMapDDS(made.panorama, request, made.feedback, none).IsDone(), f == 7) << f;
        EXPECT_EQ(folder.FileCount(), f == 7 ? 1u : 0u) << f;
    }
}

}  // namespace
}  // namespace skyvault::test
