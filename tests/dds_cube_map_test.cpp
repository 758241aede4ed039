#include "image/dds_cube_map.h"

#include <gtest/gtest.h>

#include <cstring>

#include "image/picture_files.h"
#include "image/pixel_rows.h"
#include "platform/files.h"
#include "platform/utf8.h"
#include "projection/build_faces.h"
#include "projection/dds.h"
#include "session/import_panorama.h"
#include "tests/made_dds.h"
#include "tests/temporary_folder.h"
#include "tests/test_panorama.h"

namespace skyvault::test {
namespace {

using enum PixelFormat;
using Faces = std::array<Image, 6>;

// With the DX10 header, which can say anything.

DdsFields Picture(std::uint32_t format = 28, DdsFields fields = {}) {
    return Dx10({.format = format}, fields);
}
DdsFields Array(std::uint32_t count, DdsFields fields = {}) {
    return Dx10({.arraySize = count}, fields);
}
DdsFields Cubes(std::uint32_t count = 1, std::uint32_t format = 28) {
    return Dx10({.format = format, .misc = 4, .arraySize = count});
}
DdsFields Volume(std::uint32_t depth) {
    return Dx10({.dimension = 4}, {.depth = depth, .flags = 0x801007});
}

Bytes Repeated(const Bytes& bytes, std::size_t count) {
    Bytes all;
    for (std::size_t i = 0; i < count; ++i) Add(all, bytes);
    return all;
}

Faces RandomFaces(std::uint32_t size, PixelFormat format) {
    Faces faces;
    for (std::uint32_t f = 0; f < 6; ++f) faces[f] = RandomImage(size, size, format, f + 3);
    return faces;
}

/// Copies, as a source of faces may be emptied.
FaceSource From(const Faces& faces) {
    return [&faces](std::size_t face, Image& picture) {
        picture = faces[face].CopyRect();
        return true;
    };
}

Faces FilledFaces(std::uint32_t size, PixelFormat format, const Color8& colour) {
    Faces faces;
    for (Image& face : faces) {
        face = Image(size, size, format);
        face.Fill(PixelValue(colour));
    }
    return faces;
}

/// The pixels of a file without its header.
std::string PixelBytes(const TemporaryFolder& folder, const std::wstring& name, std::size_t count) {
    const std::string bytes = folder.Read(name);
    return bytes.size() >= count + 128 ? bytes.substr(bytes.size() - count) : std::string();
}

TEST(DdsCubeMap, TheHeaderTellsTheKind) {
    const TemporaryFolder folder;
    const struct {
        const char* what;
        DdsFields dds;
        DdsKind kind;
    } rows[] = {
        {"picture", Picture(), DdsKind::Picture},
        {"volume", Volume(2), DdsKind::Volume},
        {"volume of one slice", Volume(1), DdsKind::Picture},
        {"cube map", Cubes(), DdsKind::CubeMap},
        {"six pictures", Array(6, {.width = 512, .height = 512}), DdsKind::CubeMap},
        {"six oblong pictures", Array(6, {.width = 512, .height = 256}), DdsKind::Unusable},
        {"oblong picture", Picture(28, {.width = 8}), DdsKind::Picture},
        {"five pictures", Array(5), DdsKind::Unusable},
        {"two cubes", Cubes(2), DdsKind::Unusable},
        {"no width", Picture(28, {.width = 0}), DdsKind::Unusable},
        {"no height", Picture(28, {.height = 0}), DdsKind::Unusable},
        {"a format nobody reads", Cubes(1, 29), DdsKind::CubeMap},
    };
    for (const auto& row : rows) {
        ASSERT_TRUE(WriteFile(folder / L"a.dds", MakeDds(row.dds)));
        EXPECT_EQ(GetDdsKind(folder / L"a.dds"), row.kind) << row.what;
    }
    folder.Write(L"junk.dds", "no DDS");
    EXPECT_EQ(GetDdsKind(folder / L"junk.dds"), DdsKind::Unusable);
    EXPECT_EQ(GetDdsKind(folder / L"missing.dds"), DdsKind::Unusable);
    EXPECT_EQ(GetDdsKind(L""), DdsKind::Unusable);
}

TEST(DdsCubeMap, FacesLieInTheFileAsPlusAndMinusXYZ) {
    const TemporaryFolder folder;
    const Faces faces = RandomFaces(4, Rgba8);
    ASSERT_TRUE(SaveDdsCubeMap(folder / L"a.dds", From(faces), true, false, nullptr));
    std::string expected;
    for (const CubeFace f : {CubeFace::Right, CubeFace::Left, CubeFace::Top, CubeFace::Bottom,
                             CubeFace::Front, CubeFace::Back}) {
        for (std::int32_t i = 0; i < 16; ++i) {
            const Color8 c = faces[static_cast<std::size_t>(f)].GetPixel8(i % 4, i / 4);
            for (const std::uint8_t byte : {c.red, c.green, c.blue, c.alpha}) {
                expected += static_cast<char>(byte);
            }
        }
    }
    EXPECT_EQ(GetDdsKind(folder / L"a.dds"), DdsKind::CubeMap);
    EXPECT_TRUE(PixelBytes(folder, L"a.dds", expected.size()) == expected);
}

TEST(DdsCubeMap, EveryFormatComesBackInItsChannelTypeWithAlpha) {
    const TemporaryFolder folder;
    for (const PixelFormat format : AllFormats()) {
        for (const bool keepAlpha : {false, true}) {
            SCOPED_TRACE(ToUtf8(FormatName(format)) + (keepAlpha ? " with alpha" : ""));
            const Faces faces = RandomFaces(5, format);
            ASSERT_TRUE(SaveDdsCubeMap(folder / L"\x00fc.dds", From(faces), keepAlpha, false, nullptr));
            Faces read;
            ASSERT_TRUE(LoadDdsCubeMap(folder / L"\x00fc.dds", read, true));
            for (std::size_t f = 0; f < 6; ++f) {
                Image expected(5, 5, WithAlpha(format));
                for (std::int32_t i = 0; i < 25; ++i) {
                    expected.SetPixel(i % 5, i / 5, faces[f].GetPixel(i % 5, i / 5));
                }
                for (std::uint32_t y = 0; y < 5 && !keepAlpha; ++y) {
                    MakeRowOpaque(expected.format, expected.Row(y), 5);
                }
                EXPECT_TRUE(SameBytes(read[f], expected)) << f;
            }
        }
    }
}

TEST(DdsCubeMap, WithoutAlphaPixelsAreCompositedOverBlack) {
    const TemporaryFolder folder;
    const auto value = [](const auto& colour) {
        PixelValue pixel;
        if constexpr (std::is_same_v<decltype(colour), const Color8&>) {
            pixel = PixelValue(colour);
        } else if constexpr (std::is_same_v<decltype(colour), const Color16&>) {
            pixel.format = Rgba16;
            pixel.color16 = colour;
        } else {
            pixel.format = RgbaHalf;
            pixel.colorHalf = colour;
        }
        return pixel;
    };
    const Half quarter{0x3400}, half{0x3800}, two{0x4000}, zero{};
    const struct {
        PixelValue pixel, flat;
    } rows[] = {
        {value(Color8(200, 100, 50, 0)), value(Color8(0, 0, 0, 255))},
        {value(Color8(200, 100, 50, 128)), value(Color8(100, 50, 25, 255))},
        {value(Color8(9, 8, 7, 255)), value(Color8(9, 8, 7, 255))},
        // So nearly opaque that 8 bits do not show it.
        {value(Color16{65535, 1000, 0, 65534}), value(Color16{65534, 999, 0, 65535})},
        {value(ColorHalf{quarter, half, zero, two}), value(ColorHalf{half, kHalfOne, zero, kHalfOne})},
    };
    for (const auto& row : rows) {
        Faces faces;
        for (Image& face : faces) {
            face = Image(2, 2, row.pixel.format);
            face.Fill(row.pixel);
        }
        ASSERT_TRUE(SaveDdsCubeMap(folder / L"a.dds", From(faces), true, false, nullptr));
        Faces read;
        ASSERT_TRUE(LoadDdsCubeMap(folder / L"a.dds", read, false));
        Image flat(2, 2, row.pixel.format);
        flat.Fill(row.flat);
        for (const Image& face : read) EXPECT_TRUE(SameBytes(face, flat)) << &row - rows;
    }
}

TEST(DdsCubeMap, StoredFormatsAreReadOrRefused) {
    const TemporaryFolder folder;
    const struct {
        std::uint32_t dxgiFormat;
        Bytes pixel;           ///< or block
        std::uint32_t pixels;  ///< side of what it covers
        PixelFormat format;    ///< None: refused
        Color8 cubeMap, picture;
    } rows[] = {
        {10, {0, 0x38, 0, 0x34, 0, 0, 0, 0x3c}, 1, RgbaHalf, {127, 63, 0, 255}, {127, 63, 0, 255}},
        {11, {1, 200, 2, 100, 3, 50, 4, 25}, 1, Rgba16, {200, 100, 50, 25}, {200, 100, 50, 25}},
        {12, {1, 200, 2, 100, 3, 50, 4, 25}, 1, Rgba16, {200, 100, 50, 25}, {200, 100, 50, 25}},
        {28, {200, 100, 50, 25}, 1, Rgba8, {200, 100, 50, 25}, {200, 100, 50, 25}},
        {30, {200, 100, 50, 25}, 1, Rgba8, {200, 100, 50, 25}, {200, 100, 50, 25}},
        {87, {200, 100, 50, 25}, 1, Rgba8, {50, 100, 200, 25}, {50, 100, 200, 25}},
        // The fourth byte means nothing in this format; the cube map reader takes it for alpha all the same.
        {88, {200, 100, 50, 25}, 1, Rgba8, {50, 100, 200, 25}, {50, 100, 200, 255}},
        {71, {0, 0xf8, 0, 0, 0, 0, 0, 0}, 4, Rgba8, {255, 0, 0, 255}, {255, 0, 0, 255}},
        {80, {77, 77, 0, 0, 0, 0, 0, 0}, 4, Rgba8, {77, 77, 77, 255}, {77, 77, 77, 255}},
        {29, {1, 2, 3, 4}, 1, None, {}, {}},                 // sRGB
        {31, {1, 2, 3, 4}, 1, None, {}, {}},                 // signed
        {61, {1}, 1, None, {}, {}},                          // one channel
        {85, {1, 2}, 1, None, {}, {}},                       // 5, 6 and 5 bits
        {2, Bytes(16), 1, None, {}, {}},                     // 32-bit floats
        {72, {0, 0xf8, 0, 0, 0, 0, 0, 0}, 4, None, {}, {}},  // BC1, sRGB
        {81, {77, 77, 0, 0, 0, 0, 0, 0}, 4, None, {}, {}},   // BC4, signed
        {95, Bytes(16), 4, None, {}, {}},                    // BC6H
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.dxgiFormat);
        const std::size_t count = 16 / (row.pixels * row.pixels);
        ASSERT_TRUE(WriteFile(folder / L"cube.dds",
                              MakeDds(Cubes(1, row.dxgiFormat), Repeated(row.pixel, 6 * count))));
        ASSERT_TRUE(
            WriteFile(folder / L"one.dds", MakeDds(Picture(row.dxgiFormat), Repeated(row.pixel, count))));
        Faces faces;
        EXPECT_EQ(LoadDdsCubeMap(folder / L"cube.dds", faces, true), row.format != None);
        const Image picture = LoadPicture(folder / L"one.dds");
        EXPECT_EQ(faces[3].format, row.format);
        EXPECT_EQ(picture.format, row.format);
        if (row.format == None) continue;
        EXPECT_EQ(faces[3].GetPixel8(2, 3), row.cubeMap);
        EXPECT_EQ(picture.GetPixel8(2, 3), row.picture);
        // One is not the other.
        EXPECT_FALSE(LoadDdsCubeMap(folder / L"one.dds", faces, true));
        EXPECT_FALSE(LoadPicture(folder / L"cube.dds").IsValid());
    }
}

TEST(DdsCubeMap, OnlyEightBitsAreCompressed) {
    const TemporaryFolder folder;
    const struct {
        PixelFormat format;
        bool compress;
        std::size_t bytesPerFace;
    } rows[] = {
        {Rgb8, true, 32},    {Grey8, true, 32},   {Rgba8, false, 256},   {Rgb16, true, 512},
        {Rgba16, true, 512}, {Rgb16, false, 512}, {RgbaHalf, true, 512}, {GreyHalf, false, 512},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(ToUtf8(FormatName(row.format)));
        const Color8 colour(255, 0, 255, 255);  // BC1 has it exactly, and so has every format
        ASSERT_TRUE(SaveDdsCubeMap(folder / L"a.dds", From(FilledFaces(8, row.format, colour)), true,
                                   row.compress, nullptr));
        const std::size_t size = folder.Read(L"a.dds").size() - 6 * row.bytesPerFace;
        EXPECT_TRUE(size == 128 || size == 148) << size;
        Faces read;
        ASSERT_TRUE(LoadDdsCubeMap(folder / L"a.dds", read, true));
        EXPECT_EQ(read[0].format, WithAlpha(row.format));
        EXPECT_EQ(read[0].GetPixel8(7, 7).red, FilledFaces(1, row.format, colour)[0].GetPixel8(0, 0).red);

        // A picture is compressed whenever it has 8 bits.
        Image picture(8, 8, row.format);
        picture.Fill(PixelValue(colour));
        std::wstring infoLog;
        ASSERT_TRUE(SavePicture(picture, folder / L"b.dds", None, &infoLog));
        const bool eightBits = ChannelType(row.format) == ChannelKind::Int8;
        const std::size_t rest = folder.Read(L"b.dds").size() - (eightBits ? 32 : 512);
        EXPECT_TRUE(rest == 128 || rest == 148) << rest;
        EXPECT_EQ(infoLog, PictureInfo(folder / L"b.dds", 8, 8, row.format));
    }
}

TEST(DdsCubeMap, CompressedFacesStayInTheirPlacesAndKeepOneBitOfAlpha) {
    const TemporaryFolder folder;
    Faces faces;
    for (std::uint8_t f = 0; f < 6; ++f) {
        faces[f] = Image(8, 8, Rgba8);
        for (std::int32_t i = 0; i < 64; ++i) {
            // Left columns, blocks apart, are opaque, the right ones clear; a ramp downwards.
            const std::uint8_t value = static_cast<std::uint8_t>(40 * f + i / 8);
            faces[f].SetPixel(i % 8, i / 8, Color8(value, value, value, i % 8 < 4 ? 128 : 127));
        }
    }
    for (const bool keepAlpha : {false, true}) {
        ASSERT_TRUE(SaveDdsCubeMap(folder / L"a.dds", From(faces), keepAlpha, true, nullptr));
        Faces read;
        ASSERT_TRUE(LoadDdsCubeMap(folder / L"a.dds", read, true));
        for (std::uint8_t f = 0; f < 6; ++f) {
            SCOPED_TRACE(f);
            for (std::int32_t i = 0; i < 64; ++i) {
                const Color8 pixel = read[f].GetPixel8(i % 8, i / 8);
                const bool opaque = !keepAlpha || i % 8 < 4;
                ASSERT_EQ(pixel.alpha, opaque ? 255 : 0) << i;
                if (opaque) {
                    ASSERT_NEAR(pixel.green, 40 * f + i / 8, 5) << i;
                }
            }
        }
    }
}

TEST(DdsCubeMap, PicturesOfAnySizeComeBack) {
    const TemporaryFolder folder;
    for (const std::uint32_t width : {1u, 3u, 4u, 5u}) {
        for (const PixelFormat format : {Rgb8, Rgba16, RgbHalf}) {
            SCOPED_TRACE(ToUtf8(FormatName(format)) + " " + std::to_string(width));
            Image picture(width, 7, format);
            for (std::int32_t y = 0; y < 7; ++y) {
                for (std::int32_t x = 0; x < static_cast<std::int32_t>(width); ++x) {
                    picture.SetPixel(x, y, y < 4 ? Color8(255, 0, 0, 255) : Color8(0, 0, 255, 255));
                }
            }
            ASSERT_TRUE(SavePicture(picture, folder / L"a.dds"));
            const Image read = LoadPicture(folder / L"a.dds");
            ASSERT_EQ(read.width, width);
            ASSERT_EQ(read.height, 7u);
            EXPECT_EQ(read.GetPixel8(-1, 3), picture.GetPixel8(0, 0));
            EXPECT_EQ(read.GetPixel8(-1, 4), picture.GetPixel8(0, 6));
        }
    }
    // Alpha is kept when the format asked for has it, not when the picture does.
    Image clear(4, 4, Rgba16);
    clear.Fill(PixelValue(Color8(255, 255, 255, 3)));
    ASSERT_TRUE(SavePicture(clear, folder / L"a.dds", Rgb16));
    EXPECT_EQ(LoadPicture(folder / L"a.dds").GetPixel16(0, 0).alpha, 65535);
    ASSERT_TRUE(SavePicture(clear, folder / L"a.dds"));
    EXPECT_EQ(LoadPicture(folder / L"a.dds").GetPixel16(0, 0).alpha, 1023);
}

TEST(DdsCubeMap, FacesOfAnotherSizeGoOnAroundTheirEdges) {
    const TemporaryFolder folder;
    Faces faces = RandomFaces(5, Rgb8);
    faces[4] = RandomImage(2, 3, Rgb8);
    ASSERT_TRUE(SaveDdsCubeMap(folder / L"a.dds", From(faces), true, false, nullptr));
    Faces read;
    ASSERT_TRUE(LoadDdsCubeMap(folder / L"a.dds", read, true));
    for (std::int32_t i = 0; i < 25; ++i) {
        EXPECT_EQ(read[4].GetPixel8(i % 5, i / 5), faces[4].GetPixel8(i % 5, i / 5)) << i;
    }
}

TEST(DdsCubeMap, TallPicturesAreCompressedWhole) {
    // Large pictures are compressed in parts.
    const TemporaryFolder folder;
    const Color8 colours[] = {{255, 0, 0, 255}, {0, 255, 0, 255}, {0, 0, 255, 255}};
    Image tall(5, 1501, Rgb8);
    const auto expected = [&](std::uint32_t y) { return colours[y / 4 % 3]; };
    for (std::uint32_t y = 0; y < tall.height; ++y) {
        for (std::int32_t x = 0; x < 5; ++x) tall.SetPixel(x, static_cast<std::int32_t>(y), expected(y));
    }
    ASSERT_TRUE(SavePicture(tall, folder / L"a.dds"));
    const Image read = LoadPicture(folder / L"a.dds");
    ASSERT_EQ(read.height, tall.height);
    for (std::uint32_t y = 0; y < tall.height; ++y) {
        ASSERT_EQ(read.GetPixel8(4, static_cast<std::int32_t>(y)), expected(y)) << y;
    }
}

TEST(DdsCubeMap, TheInfoLogDescribesTheCubeMap) {
    const TemporaryFolder folder;
    const std::wstring path = folder / L"a.dds";
    std::wstring infoLog = L"before\n";
    ASSERT_TRUE(SaveDdsCubeMap(path, From(RandomFaces(16, RgbHalf)), false, true, &infoLog));
    EXPECT_EQ(infoLog, L"before\nPath\t\t" + path +
                           L"\nSize\t\t12 KB\nResolution\t6 x 16 x 16\nProjection\tCubemap\n"
                           L"Format\t\tHDR 48 bpp RGB float\n");
}

TEST(DdsCubeMap, AFailedWriteLeavesTheOlderFileAndEmptiesTheLog) {
    const TemporaryFolder folder;
    const std::wstring path = folder.Write(L"a.dds", "older");
    const auto fails = [&](const Faces& faces, const std::wstring& to, bool compress = false) {
        std::wstring infoLog = L"before";
        const bool failed = !SaveDdsCubeMap(to, From(faces), true, compress, &infoLog);
        return failed && infoLog.empty() && folder.Read(L"a.dds") == "older" && folder.FileCount() == 1;
    };
    const Faces whole = RandomFaces(4, Rgba8);
    EXPECT_TRUE(fails(whole, L""));
    EXPECT_TRUE(fails(whole, JoinPath(folder / L"missing", L"a.dds")));
    for (std::size_t f = 0; f < 6; ++f) {
        Faces faces = RandomFaces(4, Rgba8);
        faces[f].Clear();
        EXPECT_TRUE(fails(faces, path)) << f;
        EXPECT_TRUE(fails(faces, path, true)) << f;
    }
    for (const int allocations : {0, 1, 5}) {
        FailAllocationsAfter(allocations);
        EXPECT_TRUE(fails(whole, path)) << allocations;
        FailAllocationsAfter(-1);
    }
}

TEST(DdsCubeMap, WithoutMemoryNoFaceIsChanged) {
    const TemporaryFolder folder;
    ASSERT_TRUE(SaveDdsCubeMap(folder / L"a.dds", From(RandomFaces(4, Rgba8)), true, false, nullptr));
    Faces faces;
    faces[0] = Image(3, 3, Rgb8);
    for (int allocations = 0;; ++allocations) {
        FailAllocationsAfter(allocations);
        const bool loaded = LoadDdsCubeMap(folder / L"a.dds", faces, true);
        FailAllocationsAfter(-1);
        if (loaded) {
            EXPECT_GE(allocations, 6);
            break;
        }
        ASSERT_EQ(faces[0].width, 3u) << allocations;
        ASSERT_FALSE(faces[5].IsValid()) << allocations;
    }
}

/// A panorama imported from a file, and what was said.
struct Imported {
    RecordingFeedback feedback;
    AppState settings;
    Panorama panorama;

    Imported(const std::wstring& path, PanoramaFormat format, bool transparency = false)
        : settings(WithTransparency(transparency)), panorama(feedback, settings, nullptr) {
        ImportPanorama(panorama, {path}, format);
    }

    static AppState WithTransparency(bool on) {
        AppState settings;
        settings.transparency = on;
        return settings;
    }
};

TEST(DdsImport, AFileSaysItselfWhetherItIsACubeMap) {
    const TemporaryFolder folder;
    const Bytes rgba(16 * 4 * 6, 99);
    enum Result { Nothing, Equirectangular, Cube };
    const wchar_t* const isCube = L"\" is a cubemap.\n\nNow switching to cubemap.";
    const wchar_t* const isNone = L"\" is not a cubemap.\n\nNow switching to equirectangular.";
    const struct {
        const wchar_t* name;
        DdsFields dds;
        PanoramaFormat format;
        const wchar_t* said;  ///< after the file's name; null: nothing
        Result result;
    } rows[] = {
        {L"cube.dds", Cubes(), PanoramaFormat::DirectXDds, nullptr, Cube},
        {L"cube.dds", Cubes(), PanoramaFormat::Equirectangular, isCube, Cube},
        {L"array.Dds", Array(6), PanoramaFormat::SingleFiles, isCube, Cube},
        {L"palette.DDS", Cubes(), PanoramaFormat::Voronoi, isCube, Cube},
        {L"one.dds", Picture(), PanoramaFormat::DirectXDds, isNone, Equirectangular},
        {L"one.dds", Picture(), PanoramaFormat::Equirectangular, nullptr, Equirectangular},
        {L"volume.dds", Volume(2), PanoramaFormat::DirectXDds, nullptr, Nothing},
        {L"volume.dds", Volume(2), PanoramaFormat::Equirectangular, nullptr, Nothing},
        {L"two.dds", Array(2), PanoramaFormat::DirectXDds, nullptr, Nothing},
        {L"two.dds", Array(2), PanoramaFormat::Equirectangular, nullptr, Nothing},
        {L"cube.dds.bin", Cubes(), PanoramaFormat::DirectXDds, nullptr, Cube},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(ToUtf8(row.name) + " as " + std::to_string(static_cast<int>(row.format)));
        const std::wstring path = folder / row.name;
        ASSERT_TRUE(WriteFile(path, MakeDds(row.dds, rgba)));
        const Imported imported(path, row.format);
        std::vector<std::wstring> said;
        if (row.said) said.push_back(L"\"" + std::wstring(row.name) + row.said);
        EXPECT_EQ(imported.feedback.information, said);
        EXPECT_EQ(imported.panorama.equirectSource.IsValid(), row.result == Equirectangular);
        for (const Image& face : imported.panorama.faces) EXPECT_EQ(face.IsValid(), row.result == Cube);
        EXPECT_EQ(imported.panorama.faceSize, row.result == Cube              ? 4u
                                              : row.result == Equirectangular ? 1u
                                                                              : 0u);
        std::vector<std::wstring> errors;
        if (row.result == Nothing) errors.push_back(L"Could not open \"" + path + L"\"");
        EXPECT_EQ(imported.feedback.errors, errors);
    }
}

TEST(DdsImport, TransparencyKeepsAlpha) {
    const TemporaryFolder folder;
    ASSERT_TRUE(SaveDdsCubeMap(folder / L"a.dds", From(FilledFaces(4, Rgba8, Color8(200, 100, 50, 128))),
                               true, false, nullptr));
    for (const bool transparency : {false, true}) {
        Imported imported(folder / L"a.dds", PanoramaFormat::DirectXDds, transparency);
        EXPECT_EQ(imported.panorama.faces[2].GetPixel8(0, 0),
                  transparency ? Color8(200, 100, 50, 128) : Color8(100, 50, 25, 255));
    }
}

TEST(DdsExport, WritesTheBuiltFacesAtAPowerOfTwo) {
    const TemporaryFolder folder;
    for (const bool equirectangular : {false, true}) {
        SCOPED_TRACE(equirectangular);
        TestPanorama made;
        made.settings.compressDds = false;
        made.settings.resolution0 = 0;
        if (equirectangular) {
            made.SetEquirectangular(RandomImage(400, 200, Rgb16));
        } else {
            made.SetFaces(100, Rgb16);
        }
        made.panorama.modifications.flipHorizontal = true;
        std::wstring infoLog;
        ASSERT_TRUE(ExportCubeMapDDS(made.panorama, folder / L"a.dds", infoLog));
        EXPECT_EQ(
            made.feedback.information,
            (std::vector<std::wstring>{
                L"The resolution of the source 360° photo is too low to export as 6 x 256 x 256\n\nThe photo "
                L"will be exported as 6 x 100 x 100",
                L"The resolution has been changed from 100 to 128 to make it a power of 2"}));
        EXPECT_NE(infoLog.find(L"Resolution\t6 x 128 x 128\nProjection\tCubemap\n"), std::wstring::npos);

        Faces read;
        ASSERT_TRUE(LoadDdsCubeMap(folder / L"a.dds", read, true));
        for (std::uint32_t f = 0; f < 6; ++f) {
            Image built;
            ASSERT_TRUE(BuildFace(made.panorama, built, static_cast<CubeFace>(f), 128, Rgba16));
            EXPECT_TRUE(SameBytes(read[f], built)) << f;
        }
    }
}

TEST(DdsExport, SettingsReachTheFile) {
    const TemporaryFolder folder;
    for (const bool transparency : {false, true}) {
        for (const bool compress : {false, true}) {
            TestPanorama made;
            made.settings.transparency = transparency;
            made.settings.compressDds = compress;
            made.settings.resolution0 = 0;
            Image source(1024, 512, Rgba8);
            source.Fill(PixelValue(Color8(255, 0, 0, 10)));
            made.SetEquirectangular(std::move(source));
            std::wstring infoLog;
            ASSERT_TRUE(ExportCubeMapDDS(made.panorama, folder / L"a.dds", infoLog));
            EXPECT_TRUE(made.feedback.information.empty());
            EXPECT_EQ(FileSizeOf(folder / L"a.dds") / 1024, compress ? 192u : 1536u);
            Faces read;
            ASSERT_TRUE(LoadDdsCubeMap(folder / L"a.dds", read, true));
            EXPECT_EQ(read[0].GetPixel8(1, 1).alpha, !transparency ? 255 : compress ? 0 : 10);
        }
    }
}

TEST(DdsExport, NothingIsWrittenOfAnIncompletePanorama) {
    const TemporaryFolder folder;
    std::wstring infoLog;
    const auto fails = [&](TestPanorama& made, const std::wstring& path) {
        return !ExportCubeMapDDS(made.panorama, path, infoLog) && folder.FileCount() == 0;
    };
    TestPanorama whole, none, oblong, source;
    whole.settings.resolution0 = 0;
    whole.SetFaces(256, Rgb8);
    EXPECT_TRUE(fails(whole, L"")) << "there is no view of it";
    EXPECT_TRUE(fails(none, folder / L"a.dds"));
    oblong.SetFaces(8, Rgb8);
    oblong.panorama.faces[0] = RandomImage(8, 9, Rgb8);
    EXPECT_TRUE(fails(oblong, folder / L"a.dds"));
    for (std::size_t f = 0; f < 6; ++f) {
        TestPanorama missing;
        missing.SetFaces(8, Rgb8);
        missing.panorama.faces[f].Clear();
        EXPECT_TRUE(fails(missing, folder / L"a.dds")) << f;
        EXPECT_TRUE(missing.feedback.information.empty() && missing.feedback.errors.empty());
    }
    int told = 0;
    for (int allocations = 0; allocations < 5; ++allocations) {
        whole.feedback.errors.clear();
        FailAllocationsAfter(allocations);
        EXPECT_TRUE(fails(whole, folder / L"a.dds")) << allocations;
        FailAllocationsAfter(-1);
        told += whole.feedback.errors == std::vector<std::wstring>{L"Out of memory"};
    }
    EXPECT_GT(told, 0) << "a face that cannot be made is told";
}

}  // namespace
}  // namespace skyvault::test
