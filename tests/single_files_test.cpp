// Six files for six faces: their names, and faces that are missing; and the window's view of them.
#include "projection/single_files.h"

#include <gtest/gtest.h>

#include "projection/labelled_faces.h"
#include "projection/pixel_text.h"
#include "tests/made_files.h"

namespace skyvault::test {
namespace {

TEST(SingleFiles, NamesKeepFolderStemAndExtension) {
    for (const DataRow& row : PathTable("face_files")) {
        const auto face = static_cast<CubeFace>(std::stoi(row[2]));
        EXPECT_EQ(SingleFilePath(FromUtf8(row[0]), std::stoi(row[1]), face), FromUtf8(row[3])) << row.where;
    }
}

TEST(SingleFiles, AnyFaceMayBeMissingAndTheLastOneThereDecidesTheSize) {
    const TemporaryFolder folder;
    const std::wstring s = folder / L"small.png", l = folder / L"large.png";
    Image small = RandomImage(8, 8, PixelFormat::Rgb8), large = RandomImage(20, 16, PixelFormat::Rgba16);
    ASSERT_TRUE(Saved(small, s) && Saved(large, l));
    const std::wstring none = folder.Write(L"text.png", "no picture");
    using Widths = std::array<std::uint32_t, 7>;  // of the faces, 0: not there; and their size
    const std::pair<std::vector<std::wstring>, Widths> rows[] = {
        {{none, L"", l, none, none, L""}, {0, 0, 20, 0, 0, 0, 20}},
        {{l, s, none, none, none, none}, {20, 8, 0, 0, 0, 0, 8}},
        {{s}, {8, 0, 0, 0, 0, 0, 8}},
        {{none, none, none, none, none, none}, {}},
    };
    for (const auto& [paths, expected] : rows) {
        TestPanorama t;
        ImportRequest request = t.From({});
        request.paths = paths;
        const bool any = expected.back() > 0;
        EXPECT_EQ(ImportSingleFiles(request, t.feedback, t.panorama).IsDone(), any);
        Widths widths{};
        for (std::size_t f = 0; f < 6; ++f) widths[f] = t.panorama.faces[f].width;
        widths.back() = t.panorama.faceSize;
        EXPECT_EQ(widths, expected);
        // Faces of several sizes are odd, but can be looked at.
        Image view;
        EXPECT_EQ(RenderLabelledFaces(t.panorama, t.ForView({}), t.feedback, view).IsDone(), any);
    }
}

TEST(SingleFiles, TheWindowShowsSixSquareFacesEachWithItsLabelBelow) {
    const Color8 colours[6] = {{200, 0, 0, 255}, {0, 200, 0, 255},   {0, 0, 200, 255},
                               {90, 90, 0, 255}, {0, 120, 120, 255}, {150, 0, 150, 255}};
    TestPanorama t;
    t.SetFaces(4, PixelFormat::Rgb8);
    for (std::size_t f = 0; f < 6; ++f) t.panorama.faces[f].Fill(PixelValue(colours[f]));
    const auto view = [&](ClientSize room, int namingSystem) {
        Image picture;
        t.settings.fileNamingSystem = namingSystem;
        const bool shown = RenderLabelledFaces(t.panorama, t.ForView({}, room), t.feedback, picture).IsDone();
        EXPECT_EQ(shown, picture.IsValid());
        return picture;
    };
    const struct {
        ClientSize room;
        std::uint8_t background, text;
        int smallestEdge;
    } rows[] = {{{1000, 700}, 255, 0, 290},
                {{600, 1200}, 20, 255, 270},
                {{1500, 200}, 127, 255, 160},
                {{200, 160}, 200, 0, 50}};
    for (const auto& row : rows) {
        const int width = row.room.width, height = row.room.height;
        const Color8 text(row.text, row.text, row.text, 255);
        t.settings.backgroundColour = Color8(row.background, row.background, row.background, 255);
        t.settings.transparency = row.background == 20;
        const Image seen = view(row.room, 0);
        EXPECT_EQ(SameBytes(seen, view(row.room, 5)), width == 200)
            << "labels name the files where there is room";
        ASSERT_EQ((PictureSize{seen.width, seen.height}), PictureSize(width, height));
        EXPECT_EQ(seen.GetPixel8(0, 0).alpha, t.settings.transparency ? 0 : 255);
        for (const Color8& colour : colours) {
            // From the first to the last pixel of the face's colour, and the text below.
            int left = width, right = -1, top = height, bottom = -1, pixels = 0, letters = 0;
            ForPixels(seen, [&](int x, int y) {
                const Color8 pixel = seen.GetPixel8(x, y);
                if (pixel == colour) {
                    left = std::min(left, x), right = std::max(right, x), top = std::min(top, y), bottom = y;
                    ++pixels;
                }
                letters += pixel == text && x >= left && x <= right && y > bottom && y < bottom + 12;
            });
            const int edge = right - left + 1;
            EXPECT_EQ(bottom - top + 1, edge);
            EXPECT_EQ(pixels, edge * edge) << "nothing is drawn over a face";
            EXPECT_GE(edge, row.smallestEdge) << "the faces are not lost in their frame";
            EXPECT_GT(letters, 20);
        }
    }
    // Whatever the room, a view or none.
    for (int width = -1; width < 38; width += 3)
        for (int height = -1; height < 76; height += 3)
            EXPECT_TRUE(view({width, height}, 0).IsValid() ? width > 0 && height > 0
                                                           : width < 3 || height < 2);
}

TEST(SingleFiles, EveryLetterOfALabelIsInTheFont) {
    std::wstring letters = L"FrontRightBackLeftTopBottom*";
    for (int at = 0; at < 36; ++at) letters += FaceAffix(at / 6, at % 6);
    for (const wchar_t letter : letters) {
        const Image empty = Filled(kPixelLetterWidth, kPixelLetterHeight, PixelFormat::Rgb8, Color8());
        Image image = empty.CopyRect();
        DrawPixelText(image, 0, 0, 1, std::wstring(1, letter), kOpaqueWhite);
        EXPECT_FALSE(SameBytes(image, empty)) << static_cast<int>(letter);
    }
}

}  // namespace
}  // namespace skyvault::test
