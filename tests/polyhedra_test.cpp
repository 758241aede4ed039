// The polyhedra: what a viewer inside sees of their faces, pictures and borders.
#include "generators/polyhedra.h"

#include <cmath>
#include <limits>
#include <vector>

#include "generators/polyhedron_faces.h"
#include "tests/data_table.h"
#include "tests/generator_checks.h"

namespace skyvault {
namespace {

constexpr Color8 kBlack{0, 0, 0, 255};

/// A picture as large as fits into a face's circle with its corners; on a hexahedron, the whole face.
constexpr float kInscribed = 0.70710678f;

struct PolyhedronPanorama : test::GeneratorPanorama {
    PolyhedronPanorama() { settings.polyhedraTextureScale = kInscribed; }
    void Show(const std::wstring& texture, PanoramaFormat solid = PanoramaFormat::Hexahedron) {
        ASSERT_EQ(Generate(GeneratePolyhedron, texture, solid), Reason::Done);
    }
    Color8 Along(const Direction& d) const { return SampleCubeFaces(panorama.faces, d).color8; }
};

struct Polyhedra : test::GeneratorTest {
    static Color8 FrameColour(int frame) {
        return Color8(static_cast<std::uint8_t>(40 + 6 * frame), 90, 200, 255);
    }
    /// One-coloured frames side by side, or one below the other.
    std::wstring Filmstrip(int frames, bool standing = false) const {
        const auto colour = [&](int x, int y) { return FrameColour((standing ? y : x) / 8); };
        return Save(
            test::Drawn(standing ? 8 : 8 * frames, standing ? 8 * frames : 8, PixelFormat::Rgb8, colour));
    }
    /// Red in the left half, green in the upper one.
    std::wstring Quarters(int width = 16, int height = 16) const {
        const auto quarter = [&](int x, int y) { return Quarter(x < width / 2, y < height / 2); };
        return Save(test::Drawn(width, height, PixelFormat::Rgb8, quarter));
    }
    static Color8 Quarter(bool left, bool top) { return Color8(left ? 200 : 0, top ? 200 : 0, 50, 255); }
};

TEST_F(Polyhedra, PicturesAreUprightAndNotMirrored) {
    using enum PanoramaFormat;
    for (const auto& [format, faces] : {std::pair{Tetrahedron, 4},
                                        {Hexahedron, 6},
                                        {Octahedron, 8},
                                        {Dodecahedron, 12},
                                        {Icosahedron, 20},
                                        {Football, 32}}) {
        PolyhedronPanorama t;
        t.Show(Quarters(), format);
        const Polyhedron shape = MakePolyhedron(format);
        ASSERT_EQ(shape.faceCount, faces);
        for (int i = 0; i < faces; ++i) {
            Direction n = shape.faces[static_cast<std::size_t>(i)].plane;
            Normalize(n);
            // Up is the way to the zenith; where that is no way, as a cube map's top and bottom have it. To
            // the right of someone who looks along n with the head up.
            Direction up{0, 1, 0};
            if (std::fabs(n.y) > 0.99f) up = {0, 0, n.y > 0 ? -1.0f : 1.0f};
            const Direction right{up.y * n.z - up.z * n.y, up.z * n.x - up.x * n.z, up.x * n.y - up.y * n.x};
            for (int quarter = 0; quarter < 4; ++quarter) {
                const bool left = quarter % 2 == 0, top = quarter < 2;
                const float u = left ? -0.05f : 0.05f, v = top ? 0.05f : -0.05f;
                const Direction d{n.x + u * right.x + v * up.x, n.y + u * right.y + v * up.y,
                                  n.z + u * right.z + v * up.z};
                EXPECT_EQ(t.Along(d), Quarter(left, top)) << faces << " faces, face " << i;
            }
        }
    }
}

TEST_F(Polyhedra, PicturesAreAsLargeAsAskedAndRepeat) {
    for (const auto& [where, width, height, scale, across, down] :
         TableOf<int, int, float, int, int>("polyhedra_pictures")) {
        PolyhedronPanorama t;
        t.settings.polyhedraTextureScale = scale * kInscribed;
        t.Show(Quarters(width, height));
        for (const Image& face : t.panorama.faces) {
            for (int i = 1; i < 256; ++i) {
                EXPECT_EQ(face.GetPixel8(i, 9) != face.GetPixel8(i - 1, 9), i % (256 / across) == 0) << where;
                EXPECT_EQ(face.GetPixel8(9, i) != face.GetPixel8(9, i - 1), i % (256 / down) == 0) << where;
            }
        }
    }
}

TEST_F(Polyhedra, ABorderIsAsWideAsAskedOnEveryFace) {
    const std::wstring texture = Filmstrip(1);
    PolyhedronPanorama cube;
    cube.settings.polyhedraBorder = 0.25f;
    cube.Show(texture);
    for (const float along : {0.0f, 0.5f, 0.9f}) {
        EXPECT_EQ(cube.Along({along, -0.76f, 1}), kBlack);
        EXPECT_EQ(cube.Along({1, along, 0.76f}), kBlack);
        EXPECT_EQ(cube.Along({0.74f, -1, 0.8f * along}), FrameColour(0));
    }
    for (const float none : {0.0f, -1.0f, std::numeric_limits<float>::quiet_NaN()}) {
        cube.settings.polyhedraBorder = none;
        cube.Show(texture);
        const auto isBlack = [](auto&, const Color8& colour) { return colour == kBlack; };
        EXPECT_EQ(test::CountPixels(cube.panorama, isBlack), 0) << none;
    }
}

TEST_F(Polyhedra, FacesShowTheFramesInTurn) {
    for (const bool standing : {false, true}) {
        PolyhedronPanorama t;
        t.settings.polyhedraFrames = 6;
        t.Show(Filmstrip(6, standing));
        for (int f = 0; f < kFaceCount; ++f) {
            EXPECT_EQ(t.Along(FacePixelToDirection(256, static_cast<CubeFace>(f), 30, 200)), FrameColour(f));
        }
    }
    for (const auto& [where, faces, pentagons, frames, first, rest] :
         TableOf<int, int, int, int, int>("polyhedra_frames")) {
        for (int i = 0; i < faces; ++i) {
            EXPECT_EQ(FrameOfFace(i, faces, pentagons, frames),
                      rest > 0 && i >= pentagons ? first + (i - pentagons) % rest : i % first)
                << where << ", face " << i;
        }
    }
}

}  // namespace
}  // namespace skyvault
