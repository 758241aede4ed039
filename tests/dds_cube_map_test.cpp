#include "codecs/dds_cube_map.h"

#include <gtest/gtest.h>

#include "image/pixel_rows.h"
#include "platform/files.h"
#include "projection/build_faces.h"
#include "projection/dds.h"
#include "session/conversion.h"
#include "session/messages.h"
#include "tests/made_dds.h"

namespace skyvault::test {
namespace {

using enum PixelFormat;

Faces RandomFaces(std::uint32_t size, PixelFormat format) {
    Faces faces;
    for (std::uint32_t f = 0; f < 6; ++f) faces[f] = RandomImage(size, size, format, f + 3);
    return faces;
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
    // Compressed ones too; red, green and blue may be off by a little.
    Faces read;
    for (std::uint8_t f = 0; f < 6; ++f) faces[f] = Filled(8, 8, Rgba8, Color8(40 * f, 255, 0, 255));
    ASSERT_TRUE(SavedCube(folder / L"a.dds", faces, true, true) && LoadedCube(folder / L"a.dds", read, true));
    for (std::size_t f = 0; f < 6; ++f) EXPECT_LT(Difference(faces[f], read[f], true), 4) << f;
}

TEST(DdsCubeMap, EveryFormatComesBackInItsChannelTypeWithAlpha) {
    const TemporaryFolder folder;
    for (const PixelFormat format : AllFormats()) {
        for (const bool keepAlpha : {false, true}) {
            SCOPED_TRACE(ToUtf8(FormatName(format)) + (keepAlpha ? " with alpha" : ""));
            const Faces faces = RandomFaces(5, format);
            Faces read;
            ASSERT_TRUE(SavedCube(folder / L"\x00fc.dds", faces, keepAlpha, false));
            ASSERT_TRUE(LoadedCube(folder / L"\x00fc.dds", read, true));
            for (std::size_t f = 0; f < 6; ++f) {
                Image expected(5, 5, WithAlpha(format));
                ConvertRow(format, faces[f].Row(0), expected.format, expected.Row(0), 25);
                if (!keepAlpha) MakeRowOpaque(expected.format, expected.Row(0), 25);
                EXPECT_TRUE(SameBytes(read[f], expected)) << f;
            }
        }
    }
}

TEST(DdsCubeMap, WithoutAlphaPixelsAreCompositedOverBlack) {
    const TemporaryFolder folder;
    const std::pair<PixelValue, PixelValue> rows[] = {
        {PixelValue(Color8(200, 100, 50, 128)), PixelValue(Color8(100, 50, 25, 255))},
        // So nearly opaque that 8 bits do not show it.
        {Value({65535, 1000, 0, 65534}), Value({65534, 999, 0, 65535})},
        {Value(0.25f, 0.5f, 0, 2), Value(0.5f, 1, 0, 1)},
    };
    for (const auto& [pixel, flat] : rows) {
        Faces faces, read;
        for (Image& face : faces) face = Filled(2, 2, pixel.format, pixel);
        ASSERT_TRUE(SavedCube(folder / L"a.dds", faces, true, false));
        ASSERT_TRUE(LoadedCube(folder / L"a.dds", read, false));
        for (const Image& face : read) EXPECT_TRUE(SameBytes(face, Filled(2, 2, flat.format, flat)));
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
    for (const char* const fields : {"dx10=28 dimension=4 depth=2 flags=0x801007",
                                     "width=4 height=2 dx10=28 items=6", "dx10=28 items=7"}) {
        ASSERT_TRUE(WriteDds(onePath, fields, Bytes(448)));
        EXPECT_FALSE(Loaded(onePath).IsValid() || LoadedCube(onePath, faces, true)) << fields;
    }
}

TEST(DdsCubeMap, OnlyEightBitsAreCompressedAndTheLogDescribesIt) {
    const TemporaryFolder folder;
    for (const PixelFormat format : {Rgb8, Grey8, Rgba8, Rgb16, Rgba16, GreyHalf, RgbaHalf}) {
        SCOPED_TRACE(ToUtf8(FormatName(format)));
        const bool eightBits = ChannelType(format) == ChannelKind::Int8;
        std::wstring log;
        const auto expect = [&](const std::wstring& path, int pictures, bool compressed,
                                const std::wstring& info) {
            const int pixels = compressed && eightBits ? 32 : eightBits ? 256 : 512;
            const int rest = static_cast<int>(FileSizeOf(path)) - pictures * pixels;
            EXPECT_TRUE(rest == 128 || rest == 148) << rest;
            EXPECT_EQ(log, info);
        };
        const std::wstring path = folder / L"a.dds";
        for (const bool compress : {false, true}) {
            ASSERT_TRUE(SavedCube(path, RandomFaces(8, format), true, compress, &log));
            expect(path, 6, compress, CubeMapInfo(path, 8, format));
        }
        // A picture is compressed whenever it has 8 bits.
        Image picture = RandomImage(8, 8, format);
        ASSERT_TRUE(Saved(picture, path, None, &log));
        expect(path, 1, true, PictureInfo(path, 8, 8, format));
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

TEST(DdsImport, AFileSaysItselfWhetherItIsACubeMap) {
    const TemporaryFolder folder;
    for (const DataRow& row : DataGroup("dds", "import")) {
        SCOPED_TRACE(row.where);
        const std::wstring name = FromUtf8(row[1]), path = folder / name;
        const std::uint32_t faceSize = Numbers(row[5])[0];
        ASSERT_TRUE(WriteDds(path, row[2], Bytes(16 * 4 * 6, 99)));
        TestPanorama t;
        const Outcome outcome =
            ImportPanorama(*LayoutOfConsoleName(row[3]), {path}, t.settings, t.feedback, t.panorama);
        std::vector<std::wstring> said;
        if (row[4] != "-")
            said.push_back(L"\"" + name + L"\" is " + FromUtf8(row[4]) + L".\n\nNow switching to " +
                           (faceSize == 4 ? L"cubemap." : L"equirectangular."));
        EXPECT_EQ(t.feedback.information, said);
        EXPECT_EQ(MessageOf(outcome).starts_with(L"Could not open " + Quoted(path) + L": "), faceSize == 0);
        EXPECT_EQ(t.panorama.equirectSource.IsValid(), faceSize == 1);
        for (const Image& face : t.panorama.faces) EXPECT_EQ(face.IsValid(), faceSize == 4);
        EXPECT_EQ(t.panorama.faceSize, faceSize);
    }
}

TEST(DdsExport, WritesAPowerOfTwoAsTheSettingsSay) {
    const TemporaryFolder folder;
    const std::wstring path = folder / L"a.dds";
    for (int settings = 0; settings < 8; ++settings) {
        SCOPED_TRACE(settings);
        TestPanorama made;
        made.settings.compressDds = settings & 1;
        made.settings.transparency = settings & 2;
        made.settings.resolution0 = 0;
        settings & 4 ? made.SetEquirectangular(RandomImage(400, 200, Rgba8)) : made.SetFaces(100, Rgba8);
        Image none;
        const ExportRequest request = made.ForFile(PanoramaFormat::DirectXDds, path);
        ASSERT_TRUE(ExportCubeMapDDS(made.panorama, request, made.feedback, none).IsDone());
        ASSERT_EQ(made.feedback.information.size(), 2u) << "the source is small, and no power of two";
        EXPECT_EQ(made.feedback.information[1],
                  L"The resolution has been changed from 100 to 128 to make it a power of 2");
        EXPECT_EQ(FileSizeOf(path) / 1024, settings & 1 ? 48u : 384u);
        Faces read;
        ASSERT_TRUE(LoadedCube(path, read, true));
        for (const Image& face : read) EXPECT_EQ(face.HasTransparency(), made.settings.transparency);
    }
}

TEST(DdsExport, EveryEncodingHasItsHeaderAndAllLevels) {
    const TemporaryFolder folder;
    const std::wstring path = folder / L"a.dds";
    for (const DataRow& row : DataGroup("dds", "encoding")) {
        SCOPED_TRACE(row.where);
        const std::vector<std::uint32_t> told = Numbers(row[3]);
        for (const bool mips : {false, true}) {
            for (const PixelFormat format : {Rgb8, RgbaHalf}) {
                TestPanorama made;
                made.settings.ddsEncoding = static_cast<DdsEncoding>(told[0]);
                made.settings.ddsMips = mips;
                made.settings.resolution0 = 0;
                made.SetFaces(8, format);
                Image none;
                const ExportRequest request = made.ForFile(PanoramaFormat::DirectXDds, path);
                ASSERT_TRUE(ExportCubeMapDDS(made.panorama, request, made.feedback, none).IsDone());
                // Faces of 8, 4, 2 and 1 pixels: two by two blocks, then one each.
                const std::uint32_t unit = told[2], pixels = told[1] == 0 ? 85 : 7,
                                    first = told[1] == 0 ? 64 : 4;
                const std::string fields = "width=8 height=8 depth=1 caps2=0xfe00 " + row[2] +
                                           (mips ? " levels=4 caps=0x401008" : " levels=1 caps=0x1008");
                const Bytes file = ReadFile(path), header = MakeDds(fields);
                ASSERT_EQ(file.size(), header.size() + std::size_t{6} * unit * (mips ? pixels : first));
                EXPECT_EQ(Bytes(file.begin(), file.begin() + static_cast<std::ptrdiff_t>(header.size())),
                          header);
                Faces read;
                EXPECT_EQ(LoadedCube(path, read, true), told[3] != 0);
                EXPECT_EQ(static_cast<std::uint32_t>(read[5].format), told[3]);
            }
        }
    }
}

TEST(DdsExport, NothingIsWrittenOfAnIncompletePanorama) {
    const TemporaryFolder folder;
    folder.Write(L"a.dds", "older");
    for (std::size_t f = 0; f < 8; ++f) {
        TestPanorama made;
        made.SetFaces(8, Rgb8);
        if (f < 6) made.panorama.faces[f].Clear();
        if (f == 6) made.panorama.faces[0] = RandomImage(8, 9, Rgb8);
        made.settings.resolution0 = 0;
        Image none;
        const Outcome outcome = ExportCubeMapDDS(
            made.panorama, made.ForFile(PanoramaFormat::DirectXDds, folder / L"a.dds"), made.feedback, none);
        EXPECT_TRUE(outcome.IsDone() == (f == 7) && outcome.infoLog.empty() == (f != 7)) << f;
        EXPECT_EQ(folder.Read(L"a.dds") == "older", f != 7) << f;
        // A face that cannot be built stops the file.
        Faces faces = RandomFaces(4, Rgba8);
        if (f < 6) faces[f].Clear();
        for (const bool compress : {false, true})
            EXPECT_EQ(SavedCube(folder / L"b.dds", faces, true, compress), f >= 6) << f;
        EXPECT_EQ(folder.FileCount(), f < 6 ? 1u : 2u);
    }
}

}  // namespace
}  // namespace skyvault::test
