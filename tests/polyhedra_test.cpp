// The polyhedra: what a viewer inside sees of their faces, pictures and borders.
#include "generators/polyhedra.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <set>

#include "generators/polyhedron_faces.h"
#include "projection/face_rows.h"
#include "tests/generator_checks.h"

namespace skyvault {
namespace {

struct Solid {
    PanoramaFormat format;
    const char* name;
    int faces, sides;  ///< sides of a face; the football has faces of two kinds
};

constexpr Solid kSolids[] = {
    {PanoramaFormat::Tetrahedron, "tetrahedron", 4, 3},
    {PanoramaFormat::Hexahedron, "hexahedron", 6, 4},
    {PanoramaFormat::Octahedron, "octahedron", 8, 3},
    {PanoramaFormat::Dodecahedron, "dodecahedron", 12, 5},
    {PanoramaFormat::Icosahedron, "icosahedron", 20, 3},
    {PanoramaFormat::Football, "football", 32, 0},
};

/// A picture as large as fits into a face's circle with its corners; on a hexahedron, the whole face.
constexpr float kInscribed = 0.70710678f;

Color8 FrameColour(int frame) {
    return Color8(std::uint8_t(40 + 6 * frame), 90, 200, 255);
}

/// A filmstrip of one-coloured frames.
std::wstring Filmstrip(const test::TemporaryFolder& folder, int frames, bool standing = false) {
    const std::uint32_t length = 8u * std::uint32_t(frames);
    Image strip(standing ? 8 : length, standing ? length : 8, PixelFormat::Rgb8);
    for (int y = 0; y < int(strip.height); ++y) {
        for (int x = 0; x < int(strip.width); ++x) strip.SetPixel(x, y, FrameColour((standing ? y : x) / 8));
    }
    const std::wstring path = folder.Path(L"strip.png");
    EXPECT_TRUE(SavePicture(strip, path));
    return path;
}

constexpr Color8 kTopLeft{200, 0, 0, 255}, kTopRight{0, 200, 0, 255}, kBottomLeft{0, 0, 200, 255},
    kBottomRight{200, 200, 0, 255};

/// A picture of four quarters.
std::wstring Quarters(const test::TemporaryFolder& folder, std::uint32_t width = 16,
                      std::uint32_t height = 16) {
    Image picture(width, height, PixelFormat::Rgb8);
    for (int y = 0; y < int(height); ++y) {
        for (int x = 0; x < int(width); ++x) {
            const bool left = x < int(width / 2), top = y < int(height / 2);
            picture.SetPixel(x, y, top ? (left ? kTopLeft : kTopRight) : (left ? kBottomLeft : kBottomRight));
        }
    }
    const std::wstring path = folder.Path(L"quarters.png");
    EXPECT_TRUE(SavePicture(picture, path));
    return path;
}

/// A panorama of 6 × 256² pixels, not antialiased, with pictures that fill a face's square.
struct SmallPanorama : test::GeneratorPanorama {
    SmallPanorama() { settings.polyhedraTextureScale = kInscribed; }
    Color8 Along(const Direction& d) const { return SampleCubeFaces(panorama.faces, d).color8; }
};

/// Solid angle of a pyramid over a regular polygon, seen from its tip.
double PyramidAngle(int sides, double edge, double height) {
    const double cotangent = 1 / std::tan(3.14159265358979 / sides);
    return 2 * 3.14159265358979 - 2 * sides *
                                      std::asin(2 * height * std::sin(3.14159265358979 / sides) /
                                                std::hypot(2 * height, edge * cotangent));
}

TEST(Polyhedra, AllFacesAreSeenAndEachHasItsShareOfTheSphere) {
    const test::TemporaryFolder folder;
    // A football with edges of 1: distances from tables of the truncated icosahedron.
    const double pentagon = PyramidAngle(5, 1.0, 2.32743843677),
                 hexagon = PyramidAngle(6, 1.0, 2.26728394223);
    ASSERT_NEAR(12 * pentagon + 20 * hexagon, 4 * 3.14159265358979, 1e-9);
    for (const Solid& solid : kSolids) {
        SmallPanorama t;
        t.settings.polyhedraFrames = solid.faces;
        ASSERT_TRUE(GeneratePolyhedron(t.panorama, Filmstrip(folder, solid.faces), solid.format));
        std::vector<double> seen(static_cast<std::size_t>(solid.faces));
        double all = 0;
        const EdgeScale scale(256);
        for (const Image& face : t.panorama.faces) {
            for (int y = 0; y < 256; ++y) {
                for (int x = 0; x < 256; ++x) {
                    const double a = double(scale(x)), b = double(scale(y));
                    const double angle = std::pow(1 + a * a + b * b, -1.5);
                    const int frame = (face.GetPixel8(x, y).red - 40) / 6;
                    ASSERT_TRUE(frame >= 0 && frame < solid.faces &&
                                face.GetPixel8(x, y) == FrameColour(frame));
                    seen[static_cast<std::size_t>(frame)] += angle;
                    all += angle;
                }
            }
        }
        for (int i = 0; i < solid.faces; ++i) {
            const bool football = solid.format == PanoramaFormat::Football;
            const double share =
                football ? (i < 12 ? pentagon : hexagon) / (4 * 3.14159265358979) : 1.0 / solid.faces;
            EXPECT_NEAR(seen[static_cast<std::size_t>(i)] / all / share, 1, 0.02)
                << solid.name << " face " << i;
        }
    }
}

TEST(Polyhedra, PicturesAreUprightAndNotMirrored) {
    const test::TemporaryFolder folder;
    const std::wstring texture = Quarters(folder);
    for (const Solid& solid : kSolids) {
        SmallPanorama t;
        ASSERT_TRUE(GeneratePolyhedron(t.panorama, texture, solid.format));
        const Polyhedron shape = MakePolyhedron(solid.format);
        ASSERT_EQ(shape.faceCount, solid.faces);
        for (int i = 0; i < solid.faces; ++i) {
            const auto& face = shape.faces[static_cast<std::size_t>(i)];
            EXPECT_EQ(face.edgeCount, solid.sides > 0 ? solid.sides : i < 12 ? 5 : 6) << solid.name;
            Direction n = face.plane;
            Normalize(n);
            // Up is the way to the zenith; where that is no way, as a cube map's top and bottom have it.
            Direction up{0, 1, 0};
            if (std::fabs(n.y) > 0.99f) up = {0, 0, n.y > 0 ? -1.0f : 1.0f};
            const float along = up.x * n.x + up.y * n.y + up.z * n.z;
            up = {up.x - along * n.x, up.y - along * n.y, up.z - along * n.z};
            Normalize(up);
            // To the right of someone who looks along n with the head up.
            const Direction right{up.y * n.z - up.z * n.y, up.z * n.x - up.x * n.z, up.x * n.y - up.y * n.x};
            const auto at = [&](float u, float v) {
                return t.Along({n.x + u * right.x + v * up.x, n.y + u * right.y + v * up.y,
                                n.z + u * right.z + v * up.z});
            };
            EXPECT_EQ(at(-0.05f, 0.05f), kTopLeft) << solid.name << " face " << i;
            EXPECT_EQ(at(0.05f, 0.05f), kTopRight) << solid.name << " face " << i;
            EXPECT_EQ(at(-0.05f, -0.05f), kBottomLeft) << solid.name << " face " << i;
            EXPECT_EQ(at(0.05f, -0.05f), kBottomRight) << solid.name << " face " << i;
        }
    }
}

/// How often the colour changes along a row (or column) of a face of 256 pixels, and where first.
struct Changes {
    int count = 0, first = -1;
    friend bool operator==(const Changes&, const Changes&) = default;
};
void PrintTo(const Changes& c, std::ostream* out) {
    *out << c.count << " changes, the first at " << c.first;
}

Changes ChangesAlong(const Image& face, bool column) {
    Changes changes;
    for (int i = 1; i < 256; ++i) {
        if (column ? face.GetPixel8(100, i) == face.GetPixel8(100, i - 1)
                   : face.GetPixel8(i, 100) == face.GetPixel8(i - 1, 100)) {
            continue;
        }
        if (changes.count++ == 0) changes.first = i;
    }
    return changes;
}

TEST(Polyhedra, PicturesAreAsLargeAsAskedAndRepeat) {
    const test::TemporaryFolder folder;
    struct Row {
        std::uint32_t width, height;
        float scale;
        Changes across, down;
    };
    const Row rows[] = {
        {16, 16, kInscribed, {1, 128}, {1, 128}},
        {16, 16, 2 * kInscribed, {1, 128}, {1, 128}},
        // One whole picture in the middle and half of one on either side.
        {16, 16, kInscribed / 2, {3, 64}, {3, 64}},
        {16, 16, kInscribed / 4, {7, 32}, {7, 32}},
        // Measured along the shorter side: the longer one is beyond the face, or repeats half as often.
        {32, 16, kInscribed, {1, 128}, {1, 128}},
        {32, 16, kInscribed / 2, {1, 128}, {3, 64}},
        {16, 32, kInscribed / 4, {7, 32}, {3, 64}},
    };
    for (const Row& row : rows) {
        const std::wstring texture = Quarters(folder, row.width, row.height);
        SmallPanorama t;
        t.settings.polyhedraTextureScale = row.scale;
        ASSERT_TRUE(GeneratePolyhedron(t.panorama, texture, PanoramaFormat::Hexahedron));
        for (const Image& face : t.panorama.faces) {
            EXPECT_EQ(ChangesAlong(face, false), row.across)
                << row.width << " x " << row.height << " " << row.scale;
            EXPECT_EQ(ChangesAlong(face, true), row.down)
                << row.width << " x " << row.height << " " << row.scale;
        }
    }
}

TEST(Polyhedra, ABorderIsAsWideAsAskedOnEveryFace) {
    const test::TemporaryFolder folder;
    const std::wstring texture = Filmstrip(folder, 1);
    constexpr Color8 kBlack{0, 0, 0, 255};
    SmallPanorama cube;
    cube.settings.polyhedraBorder = 0.25f;
    ASSERT_TRUE(GeneratePolyhedron(cube.panorama, texture, PanoramaFormat::Hexahedron));
    const EdgeScale scale(256);
    for (const Image& face : cube.panorama.faces) {
        for (int y = 0; y < 256; ++y) {
            for (int x = 0; x < 256; ++x) {
                const bool border = std::max(std::fabs(scale(x)), std::fabs(scale(y))) > 0.75f;
                ASSERT_EQ(face.GetPixel8(x, y), border ? kBlack : FrameColour(0)) << x << " " << y;
            }
        }
    }

    // The middle of a face is the last of it to become black.
    for (const Solid& solid : kSolids) {
        const Polyhedron shape = MakePolyhedron(solid.format);
        // In circles of a hexagon and a pentagon of the same edge: tan 60° / tan 54°.
        const float hexagon = 1.2584086f;
        for (const float width : {0.95f, 1.05f, hexagon - 0.05f, hexagon + 0.05f}) {
            SmallPanorama t;
            t.settings.polyhedraBorder = width;
            ASSERT_TRUE(GeneratePolyhedron(t.panorama, texture, solid.format));
            for (int i = 0; i < solid.faces; ++i) {
                const bool isHexagon = solid.format == PanoramaFormat::Football && i >= 12;
                const bool black = width > (isHexagon ? hexagon : 1.0f);
                EXPECT_EQ(t.Along(shape.faces[static_cast<std::size_t>(i)].plane) == kBlack, black)
                    << solid.name << " face " << i << ", " << width;
            }
        }
        for (const float width : {0.0f, -1.0f, std::numeric_limits<float>::quiet_NaN()}) {
            SmallPanorama t;
            t.settings.polyhedraBorder = width;
            ASSERT_TRUE(GeneratePolyhedron(t.panorama, texture, solid.format));
            for (const Image& face : t.panorama.faces) {
                for (int i = 0; i < 256; ++i) ASSERT_NE(face.GetPixel8(i, i), kBlack) << solid.name;
            }
        }
    }
}

TEST(Polyhedra, FacesShowTheFramesInTurn) {
    const test::TemporaryFolder folder;
    for (const bool standing : {false, true}) {
        SmallPanorama t;
        t.settings.polyhedraFrames = 6;
        ASSERT_TRUE(
            GeneratePolyhedron(t.panorama, Filmstrip(folder, 6, standing), PanoramaFormat::Hexahedron));
        for (int f = 0; f < kFaceCount; ++f) {
            EXPECT_EQ(t.panorama.faces[static_cast<std::size_t>(f)].GetPixel8(30, 200), FrameColour(f))
                << standing;
        }
    }
    struct Row {
        int faces, pentagons, frames;
        std::set<int> first, rest;  // what pentagons (or all faces) and hexagons show
    };
    const auto upTo = [](int from, int to) {
        std::set<int> numbers;
        for (int i = from; i <= to; ++i) numbers.insert(i);
        return numbers;
    };
    const Row rows[] = {
        {4, 0, 1, {0}, {}},
        {8, 0, 3, {0, 1, 2}, {}},
        {6, 0, 100, upTo(0, 5), {}},
        {32, 12, 1, {0}, {0}},
        {32, 12, 2, {0}, {1}},
        {32, 12, 3, {0}, {1, 2}},
        {32, 12, 8, {0, 1, 2}, {3, 4, 5, 6, 7}},
        {32, 12, 32, upTo(0, 11), upTo(12, 31)},
        {32, 12, 500, upTo(0, 11), upTo(12, 31)},
    };
    for (const Row& row : rows) {
        std::set<int> first, rest;
        for (int i = 0; i < row.faces; ++i) {
            (row.pentagons > 0 && i >= row.pentagons ? rest : first)
                .insert(FrameOfFace(i, row.faces, row.pentagons, row.frames));
        }
        EXPECT_EQ(first, row.first) << row.faces << " faces, " << row.frames << " frames";
        EXPECT_EQ(rest, row.rest) << row.faces << " faces, " << row.frames << " frames";
    }
}

TEST(Polyhedra, TransparentPlacesShowTheBackground) {
    const test::TemporaryFolder folder;
    Image picture(2, 1, PixelFormat::Rgba8);
    picture.SetPixel(0, 0, Color8(255, 0, 0, 0));
    picture.SetPixel(1, 0, Color8(0, 0, 255, 255));
    const std::wstring texture = folder.Path(L"half.png");
    ASSERT_TRUE(SavePicture(picture, texture));
    for (const bool transparency : {false, true}) {
        SmallPanorama t;
        t.settings.transparency = transparency;
        t.settings.backgroundColour = Color8(1, 2, 3, 255);
        ASSERT_TRUE(GeneratePolyhedron(t.panorama, texture, PanoramaFormat::Hexahedron));
        const Image& front = t.panorama.faces[0];
        EXPECT_EQ(front.GetPixel8(200, 9), Color8(0, 0, 255, 255));
        EXPECT_EQ(front.GetPixel8(20, 9).alpha, transparency ? 0 : 255);
        if (!transparency) {
            EXPECT_EQ(front.GetPixel8(20, 9), Color8(1, 2, 3, 255));
        }
    }
}

}  // namespace
}  // namespace skyvault
