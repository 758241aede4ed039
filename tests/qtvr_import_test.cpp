// Cubic movies read: tiles put into their places by tables or by stitching, and files that are no movies.
#include "qtvr/qtvr_import.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "platform/debug_line.h"
#include "qtvr/movie_scan.h"
#include "qtvr/qtvr_export.h"
#include "qtvr/tile_stitching.h"
#include "tests/made_movies.h"
#include "tests/own_temporary_files.h"
#include "tests/test_panorama.h"

namespace skyvault {
namespace {

using test::TestPanorama;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr std::int32_t kTile = 32;

/// What a tile shows: told by face, column and row; its first quarter is darker, so that a turned or mirrored
/// tile is found.
Color8 TileColour(int face, int column, int row, bool firstQuarter) {
    const int dark = firstQuarter ? 40 : 0;
    return Color8(static_cast<std::uint8_t>(50 + 40 * face - dark),
                  static_cast<std::uint8_t>(50 + 60 * column - dark),
                  static_cast<std::uint8_t>(50 + 60 * row - dark), 255);
}

Image TilePicture(int face, int column, int row) {
    Image tile(kTile, kTile, PixelFormat::Rgb8);
    for (std::int32_t y = 0; y < kTile; ++y) {
        for (std::int32_t x = 0; x < kTile; ++x) {
            tile.SetPixel(x, y, TileColour(face, column, row, x < kTile / 2 && y < kTile / 2));
        }
    }
    return tile;
}

/// Of the three channels together.
int Difference(const Color8& a, const Color8& b) {
    return std::abs(a.red - b.red) + std::abs(a.green - b.green) + std::abs(a.blue - b.blue);
}

bool Near(const Color8& a, const Color8& b, int tolerance) {
    return std::abs(a.red - b.red) <= tolerance && std::abs(a.green - b.green) <= tolerance &&
           std::abs(a.blue - b.blue) <= tolerance && a.alpha == b.alpha;
}

void ExpectTilesInPlace(const Panorama& panorama, int n) {
    ASSERT_EQ(panorama.faceSize, static_cast<std::uint32_t>(n * kTile));
    for (int f = 0; f < 6; ++f) {
        const Image& face = panorama.faces[static_cast<std::size_t>(f)];
        ASSERT_EQ(face.format, PixelFormat::Rgba8);
        ASSERT_EQ(face.width, panorama.faceSize);
        ASSERT_EQ(face.height, panorama.faceSize);
        for (int y = kTile / 4; y < n * kTile; y += kTile / 2) {
            for (int x = kTile / 4; x < n * kTile; x += kTile / 2) {
                const bool first = x % kTile < kTile / 2 && y % kTile < kTile / 2;
                ASSERT_TRUE(Near(face.GetPixel8(x, y), TileColour(f, x / kTile, y / kTile, first), 12))
                    << "face " << f << " at " << x << ", " << y;
            }
        }
    }
}

struct MovieOptions {
    bool table = true, offsets = true;
    /// Pictures are stored in another order than samples; bytes between them.
    bool shuffled = false;
    std::string preview = {};  ///< stored before the tiles
};

/// A movie whose samples go through the faces backwards, each by rows.
std::string MakeMovie(int n, const MovieOptions& options) {
    struct Sample {
        int face, column, row;
    };
    std::vector<Sample> samples;
    std::vector<test::MadeEntry> entries;
    for (int f = 5; f >= 0; --f) {
        for (int i = 0; i < n * n; ++i) {
            const int column = i % n, row = i / n;
            samples.push_back({f, column, row});
            entries.push_back(
                {f, static_cast<float>(2 * column - (n - 1)), static_cast<float>(n - 1 - 2 * row)});
        }
    }
    const std::size_t count = samples.size();
    std::vector<std::uint32_t> offsets(count);
    std::string movie = "....moov";
    // The tables are as long with any offsets.
    const std::size_t tablesAt = movie.size();
    const auto tables = [&] {
        return (options.offsets ? test::MakeStco({1, 2, 3}) + test::MakeStco(offsets) : "") +
               (options.table ? test::MakeCufa(entries) : "");
    };
    movie += tables() + options.preview;
    for (std::size_t i = 0; i < count; ++i) {
        // 7 has no divisor in common with 6, 24 and 54.
        const std::size_t s = options.shuffled ? i * 7 % count : i;
        offsets[s] = static_cast<std::uint32_t>(movie.size());
        movie += test::JpegBytes(TilePicture(samples[s].face, samples[s].column, samples[s].row));
        if (options.shuffled) movie += std::string(i, '-');
    }
    return movie.replace(tablesAt, tables().size(), tables());
}

TEST(QtvrImport, EveryTileComesToItsPlaceByTheTables) {
    const test::OwnTemporaryFiles temporary;
    const test::TemporaryFolder folder;
    const std::string preview = test::JpegBytes(test::RandomImage(24, 24, PixelFormat::Rgb8));
    for (const int n : {1, 2, 3}) {
        for (const bool shuffled : {false, true}) {
            SCOPED_TRACE(std::to_string(n) + (shuffled ? " shuffled" : ""));
            const std::string movie =
                MakeMovie(n, {.shuffled = shuffled, .preview = shuffled ? preview : ""});
            TestPanorama t;
            t.feedback.active = true;
            std::wstring lines;
            {
                const DebugLineCapture capture;
                ASSERT_TRUE(ImportQuickTimeVr(t.panorama, folder.Write(L"movie.mov", movie)));
                lines = capture.Text();
            }
            ExpectTilesInPlace(t.panorama, n);
            EXPECT_TRUE(temporary.Empty());
            const std::wstring count = std::to_wstring(6 * n * n);
            EXPECT_EQ(lines, L"Header is " + std::to_wstring(movie.find("\xff\xd8")) + L" bytes\n" +
                                 std::to_wstring(6 * n * n + (shuffled ? 1 : 0)) + L" JPEG files found\n" +
                                 count + L" JPEG files found with the highest square resolution: 32\n" +
                                 L"TileRes = " + std::to_wstring(n) + L"\n" +
                                 L"cufa found!\nstco found!\nstco found!\n");
            std::vector<std::wstring> texts = t.feedback.progressTexts;
            texts.erase(std::unique(texts.begin(), texts.end()), texts.end());
            EXPECT_THAT(texts, ElementsAre(L"Extracting JPG files...", L"Parsing CUFA...", L"Parsing STCO...",
                                           L"Creating cube faces..."));
            EXPECT_THAT(t.feedback.errors, IsEmpty());
        }
    }
}

TEST(QtvrImport, AnExportedMovieImportsBackFaceByFace) {
    const test::OwnTemporaryFiles temporary;
    const test::TemporaryFolder folder;
    TestPanorama t;
    for (int f = 0; f < 6; ++f) t.panorama.faces[static_cast<std::size_t>(f)] = TilePicture(f, 1, 2);
    t.panorama.faceSize = kTile;
    ASSERT_TRUE(WriteQuickTimeVr(t.panorama, folder / L"movie.mov", kTile, PixelFormat::Rgb8, nullptr));
    TestPanorama again;
    ASSERT_TRUE(ImportQuickTimeVr(again.panorama, folder / L"movie.mov"));
    ASSERT_EQ(again.panorama.faceSize, static_cast<std::uint32_t>(kTile));
    for (int f = 0; f < 6; ++f) {
        for (const std::int32_t y : {8, 24}) {
            for (const std::int32_t x : {8, 24}) {
                EXPECT_TRUE(Near(again.panorama.faces[static_cast<std::size_t>(f)].GetPixel8(x, y),
                                 TileColour(f, 1, 2, x == 8 && y == 8), 12))
                    << f << " " << x << " " << y;
            }
        }
    }
}

TEST(QtvrImport, SaysWhatIsNoCubicMovie) {
    const test::OwnTemporaryFiles temporary;
    const test::TemporaryFolder folder;
    const std::string tile = test::JpegBytes(TilePicture(0, 0, 0));
    const std::string larger = test::JpegBytes(test::RandomImage(40, 8, PixelFormat::Rgb8));
    const auto repeated = [](const std::string& text, int count) {
        std::string all;
        for (int i = 0; i < count; ++i) all += text;
        return all;
    };
    const struct {
        const char* what;
        std::string movie;
        bool message;
    } rows[] = {
        {"empty", "", false},
        {"no picture", "moov mdat", false},
        {"a start alone", "moov \xff\xd8 mdat", false},
        {"an end alone", "moov \xff\xd9", false},
        {"25 tiles", repeated(tile, 25), true},
        {"5 tiles", repeated(tile, 5), true},
        {"7 tiles", repeated(tile, 7), true},
        {"a larger picture that is not square", repeated(tile, 6) + larger, true},
        {"six pictures that are none", repeated("\xff\xd8 no picture \xff\xd9", 6), true},
        {"a cut tile", repeated(tile, 5) + tile.substr(0, 100) + "\xff\xd9", true},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        TestPanorama t;
        const DebugLineCapture quiet;
        EXPECT_FALSE(ImportQuickTimeVr(t.panorama, folder.Write(L"movie.mov", row.movie)));
        EXPECT_TRUE(t.panorama.IsEmpty());
        EXPECT_EQ(t.panorama.faceSize, 0u);
        const std::vector<std::wstring> message = {L"This is not a cubic VR movie"};
        EXPECT_EQ(t.feedback.errors, row.message ? message : std::vector<std::wstring>());
        EXPECT_TRUE(temporary.Empty());
    }
    TestPanorama t;
    EXPECT_FALSE(ImportQuickTimeVr(t.panorama, folder / L"none.mov"));
    EXPECT_THAT(t.feedback.errors, IsEmpty());
}

TEST(QtvrImport, DamagedTablesLeadToStitchingAndEveryCutIsSurvived) {
    const test::OwnTemporaryFiles temporary;
    const test::TemporaryFolder folder;
    const std::string movie = MakeMovie(1, {});
    const std::size_t cufa = movie.find("cufa"), stco = movie.rfind("stco");
    const struct {
        const char* what;
        std::size_t offset;
        std::string bytes;
        bool stitched;
    } rows[] = {
        {"table of no entries", cufa - 4, std::string(4, '\0'), true},
        {"table of many entries", cufa - 4, std::string(4, '\xff'), true},
        {"size that truncates to six entries", cufa - 4, std::string("\0\0\0\xe3", 4), false},
        {"an entry that is no face", cufa + 16, std::string(4, '\x7f'), true},
        {"a centre that is no number", cufa + 16 + 16, "\x7f\xc0", true},
        {"five offsets", stco + 11, "\x05", true},
        {"offsets by the million", stco + 8, "\x7f", true},
        {"all offsets alike", stco + 12, std::string(24, '\x11'), false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        std::string changed = movie;
        changed.replace(row.offset, row.bytes.size(), row.bytes);
        TestPanorama t;
        const DebugLineCapture capture;
        EXPECT_TRUE(ImportQuickTimeVr(t.panorama, folder.Write(L"movie.mov", changed)));
        const bool stitched = capture.Text().find(L"switching to stitching mode") != std::wstring::npos;
        EXPECT_EQ(stitched, row.stitched);
    }
    // Cut anywhere: the last face is missing, or more.
    for (std::size_t size = 1; size < movie.size(); size += movie.size() / 19) {
        TestPanorama t;
        const DebugLineCapture quiet;
        EXPECT_FALSE(ImportQuickTimeVr(t.panorama, folder.Write(L"movie.mov", movie.substr(0, size))))
            << size;
        EXPECT_TRUE(temporary.Empty());
    }
}

TEST(QtvrImport, MemoryThatRunsOutIsSaid) {
    const test::OwnTemporaryFiles temporary;
    const test::TemporaryFolder folder;
    // A table without entries: the tiles are stitched, which takes memory too.
    const std::wstring path = folder.Write(L"movie.mov", test::MakeCufa({}) + MakeMovie(1, {.table = false}));
    int outcomes[2] = {};
    for (int allowed = 0; allowed < 400 && outcomes[1] == 0; ++allowed) {
        TestPanorama t;
        const DebugLineCapture quiet;
        FailAllocationsAfter(allowed);
        const bool imported = ImportQuickTimeVr(t.panorama, path);
        FailAllocationsAfter(-1);
        ++outcomes[imported ? 1 : 0];
        EXPECT_EQ(t.panorama.IsEmpty(), !imported) << allowed;
        EXPECT_EQ(t.feedback.errors.size(), imported ? 0u : 1u) << allowed;
        EXPECT_TRUE(temporary.Empty());
    }
    EXPECT_GT(outcomes[0], 7);
    EXPECT_EQ(outcomes[1], 1);
}

// --- marks and tables --------------------------------------------------------------------------------------

MovieBytes Bytes(const std::string& text) {
    return {reinterpret_cast<const std::byte*>(text.data()), text.size()};
}

TEST(MovieScan, PicturesReachFromTheLastStartMarkToAnEndMark) {
    // S and E stand for the marks, F for the byte both begin with.
    const struct {
        const char* movie;
        std::vector<std::string> pictures;
        std::wstring lines;
    } rows[] = {
        {"", {}, L"0 JPEG files found\n"},
        {"F", {}, L"0 JPEG files found\n"},
        {"aSbEc", {"SbE"}, L"Header is 1 bytes\n1 JPEG files found\n"},
        {"SESE", {"SE", "SE"}, L"Header is 0 bytes\n2 JPEG files found\n"},
        {"EESbE", {"SbE"}, L"Header is 4 bytes\n1 JPEG files found\n"},
        {"FSaFE", {"SaFE"}, L"Header is 1 bytes\n1 JPEG files found\n"},
        {"SaSbEcE", {"SbE", "SbEcE"}, L"Header is 0 bytes\nHeader is 3 bytes\n2 JPEG files found\n"},
        {"SaE..S", {"SaE"}, L"Header is 0 bytes\n1 JPEG files found\n"},
    };
    const auto expand = [](const std::string& text) {
        std::string bytes;
        for (const char c : text) {
            bytes += c == 'S' ? "\xff\xd8" : c == 'E' ? "\xff\xd9" : c == 'F' ? "\xff" : std::string(1, c);
        }
        return bytes;
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.movie);
        const std::string movie = expand(row.movie);
        MoviePictures pictures;
        const DebugLineCapture capture;
        FindPictures(Bytes(movie), pictures);
        std::vector<std::string> found, expected;
        for (int i = 0; i < pictures.count; ++i) {
            const ByteRange range = pictures.ranges[static_cast<std::size_t>(i)];
            found.push_back(movie.substr(range.offset, range.size));
        }
        for (const std::string& picture : row.pictures) expected.push_back(expand(picture));
        EXPECT_EQ(found, expected);
        EXPECT_EQ(capture.Text(), row.lines);
    }
}

TEST(MovieScan, AFileFullOfMarksIsNotFollowedWithoutEnd) {
    std::string pairs, ends = "\xff\xd8" + std::string(1000, '.'), starts;
    for (int i = 0; i < 1000; ++i) {
        pairs += "\xff\xd8\xff\xd9";
        ends += "\xff\xd9";
        starts += "\xff\xd8";
    }
    MoviePictures pictures;
    const DebugLineCapture capture;
    FindPictures(Bytes(pairs), pictures);
    EXPECT_EQ(pictures.count, 432);
    FindPictures(Bytes(ends), pictures);
    std::size_t sum = 0;
    for (int i = 0; i < pictures.count; ++i) sum += pictures.ranges[static_cast<std::size_t>(i)].size;
    EXPECT_LE(sum, 4 * ends.size());
    EXPECT_GT(pictures.count, 1);
    FindPictures(Bytes(starts), pictures);
    EXPECT_EQ(pictures.count, 0);
    EXPECT_LT(capture.Text().size(), 10000u);
}

TEST(MovieScan, EntriesSayTheirFaceExactly) {
    const float a = 0.70710677f, b = 0.70710683f;  // not the same
    const struct {
        float w, x, y;
        int face;
    } rows[] = {
        {1, 0, 0, 0},   {-0.3f, 0, 0, 0}, {a, 0, -a, 1}, {a, 0, -b, -1}, {0, 0, -1, 2},   {0, 0, 1, 2},
        {a, 0, a, 3},   {-a, 0, -a, 3},   {a, a, 0, 4},  {-a, -a, 0, 4}, {a, -a, 0, 5},   {-a, a, 0, 5},
        {-a, 0, a, -1}, {a, a, a, -1},    {a, b, 0, -1}, {NAN, 0, 0, 0}, {1, NAN, 0, -1}, {0, 0, 0, 3},
    };
    for (const auto& row : rows) {
        FaceTableEntry entry;
        entry.w = row.w, entry.x = row.x, entry.y = row.y;
        EXPECT_EQ(FaceOfEntry(entry), row.face) << row.w << " " << row.x << " " << row.y;
    }
}

TEST(MovieScan, OffsetsOfALaterChunkTableCountUnlessTheyBeginBeforeTheEarlierOnes) {
    FaceGrid grid;
    BuildFaceGrid(1, grid);
    FaceTable table;
    ASSERT_TRUE(ReadFaceTable({}, 1, table));
    const std::vector<std::uint32_t> ascending = {10, 11, 12, 13, 14, 15}, swapped = {10, 12, 11, 13, 14, 15},
                                     early = {9, 12, 11, 13, 14, 15}, five = {1, 2, 3, 4, 5};
    const struct {
        const char* what;
        std::string movie;
        bool placed;
        int right, back;  ///< tiles of these faces
    } rows[] = {
        {"none", "moov", false, -1, -1},
        {"one", test::MakeStco(ascending), true, 1, 2},
        {"swapped", test::MakeStco(swapped), true, 2, 1},
        {"later one counts", test::MakeStco(ascending) + test::MakeStco(swapped), true, 2, 1},
        {"later one begins before", test::MakeStco(ascending) + test::MakeStco(early), true, 1, 2},
        {"the first one always counts", test::MakeStco({0, 2, 1, 3, 4, 5}), true, 2, 1},
        {"other counts are passed over", test::MakeStco(five) + test::MakeStco(swapped), true, 2, 1},
        {"cut off", test::MakeStco(ascending).substr(0, 39), false, -1, -1},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        const DebugLineCapture quiet;
        TilePlaces places;
        EXPECT_EQ(PlaceTiles(Bytes(row.movie), grid, table, places), row.placed);
        // Cells: top, front, right, back, left, bottom.
        EXPECT_EQ(places[2], row.right);
        EXPECT_EQ(places[3], row.back);
    }
}

TEST(FaceGrid, EveryCellHasFourNeighboursThatKnowIt) {
    for (int n = 1; n <= 6; ++n) {
        FaceGrid grid;
        const DebugLineCapture capture;
        BuildFaceGrid(n, grid);
        EXPECT_EQ(capture.Text(), L"");
        ASSERT_EQ(grid.cellCount, 6 * n * n);
        EXPECT_EQ(TilesPerSide(grid.cellCount), n);
        for (int c = 0; c < grid.cellCount; ++c) {
            const FaceCell& cell = grid.cells[static_cast<std::size_t>(c)];
            for (int k = 0; k < 4; ++k) {
                const CellEdge across = cell.neighbours[static_cast<std::size_t>(k)];
                ASSERT_GE(across.cell, 0);
                const CellEdge back = grid.cells[static_cast<std::size_t>(across.cell)]
                                          .neighbours[static_cast<std::size_t>(across.edge)];
                EXPECT_TRUE(back.cell == c && back.edge == k) << n << " " << c << " " << k;
            }
        }
    }
    // Below the top lies the front, whose top edge it touches; right of the back lies the left.
    FaceGrid grid;
    BuildFaceGrid(1, grid);
    EXPECT_EQ(grid.cells[0].neighbours[2].cell, 1);
    EXPECT_EQ(grid.cells[0].neighbours[2].edge, 0);
    EXPECT_EQ(grid.cells[3].neighbours[1].cell, 4);
    EXPECT_EQ(grid.cells[3].neighbours[2].cell, 5);
    EXPECT_EQ(grid.cells[3].neighbours[2].edge, 2);
    for (const int count : {0, 1, 5, 7, 25, 217, 294}) EXPECT_EQ(TilesPerSide(count), 0) << count;
}

// --- stitching ---------------------------------------------------------------------------------------------

/// The same placement, by the plain rule: every edge read again pixel by pixel.
TilePlaces PlainStitching(const FaceGrid& grid, const std::vector<Image>& tiles) {
    const std::int32_t last = static_cast<std::int32_t>(tiles[0].width) - 1;
    const auto pixel = [&](const Image& tile, int edge, std::int32_t i) {
        const std::int32_t xs[] = {i, last, last - i, 0}, ys[] = {0, i, last, last - i};
        return tile.GetPixel8(xs[edge], ys[edge]);
    };
    const auto edgeCost = [&](int tile, int edge, int other, int otherEdge) {
        float sum = 0;
        for (std::int32_t i = 0; i <= last; ++i) {
            const Color8 a = pixel(tiles[static_cast<std::size_t>(tile)], edge, i);
            const Color8 b = pixel(tiles[static_cast<std::size_t>(other)], otherEdge, last - i);
            sum += static_cast<float>(std::abs(a.red - b.red) + std::abs(a.green - b.green) +
                                      std::abs(a.blue - b.blue));
        }
        return sum / static_cast<float>(last + 1);
    };
    const int count = grid.cellCount;
    TilePlaces best{};
    float bestTotal = 100000.0f;
    for (int start = 0; start < count; ++start) {
        TilePlaces places;
        places.fill(-1);
        places[0] = start;
        float total = 0;
        for (int c = 1; c < count; ++c) {
            float lowest = 1000.0f;
            int chosen = -1;
            for (int t = 0; t < count; ++t) {
                if (std::find(places.begin(), places.begin() + c, t) != places.begin() + c) continue;
                float sum = 0;
                int edges = 0;
                for (int k = 0; k < 4; ++k) {
                    const CellEdge across =
                        grid.cells[static_cast<std::size_t>(c)].neighbours[static_cast<std::size_t>(k)];
                    const int other = places[static_cast<std::size_t>(across.cell)];
                    if (other < 0) continue;
                    sum += edgeCost(t, k, other, across.edge);
                    ++edges;
                }
                const float cost = sum / static_cast<float>(edges);
                if (cost < lowest) lowest = cost, chosen = t;
            }
            places[static_cast<std::size_t>(c)] = chosen;
            total += lowest;
        }
        if (total < bestTotal) bestTotal = total, best = places;
    }
    return best;
}

TEST(TileStitching, PlacesAsThePlainRuleDoes) {
    for (const int n : {1, 2, 3}) {
        FaceGrid grid;
        BuildFaceGrid(n, grid);
        for (const PixelFormat format : {PixelFormat::Rgb8, PixelFormat::Grey8, PixelFormat::Rgba8}) {
            std::vector<Image> tiles;
            for (int t = 0; t < grid.cellCount; ++t) {
                tiles.push_back(test::RandomImage(5, 5, format, static_cast<std::uint32_t>(t)));
                // Ties: some tiles are alike.
                if (t % 7 == 3) tiles.back() = tiles.front().CopyRect();
            }
            test::RecordingFeedback feedback;
            TilePlaces places;
            places.fill(-1);
            ASSERT_TRUE(StitchTiles(grid, tiles, feedback, places));
            const TilePlaces expected = PlainStitching(grid, tiles);
            for (int c = 0; c < grid.cellCount; ++c) {
                ASSERT_EQ(places[static_cast<std::size_t>(c)], expected[static_cast<std::size_t>(c)])
                    << "N " << n << ", format " << static_cast<int>(format) << ", cell " << c;
            }
        }
    }
}

/// A smooth colour for every direction.
Color8 SkyColour(double x, double y, double z) {
    const double length = std::sqrt(x * x + y * y + z * z);
    x /= length, y /= length, z /= length;
    const auto channel = [](double value) { return static_cast<std::uint8_t>(128 + 110 * std::sin(value)); };
    return Color8(channel(5.3 * x + 3.1 * y * z + 0.4), channel(4.1 * y - 4.7 * x * z),
                  channel(6.1 * z + 3.0 * x * y), 255);
}

Color8 SkyOnFace(int face, double u, double v) {
    switch (face) {
        case 0:
            return SkyColour(u, -v, 1);
        case 1:
            return SkyColour(1, -v, -u);
        case 2:
            return SkyColour(-u, -v, -1);
        case 3:
            return SkyColour(-1, -v, u);
        case 4:
            return SkyColour(u, 1, v);
        default:
            return SkyColour(u, -1, -v);
    }
}

TEST(TileStitching, ASmoothSkyIsPutTogetherFromJpegTilesInAnyOrder) {
    const test::OwnTemporaryFiles temporary;
    const test::TemporaryFolder folder;
    for (const int n : {1, 2, 3}) {
        const int size = n * kTile, count = 6 * n * n;
        const auto at = [size](int pixel) { return (2.0 * pixel + 1) / size - 1; };
        std::string movie = "header ";
        for (int i = 0; i < count; ++i) {
            const int s = i * 5 % count;  // 5 has no divisor in common with 6, 24 and 54
            const int face = s / (n * n), column = s % n, row = s / n % n;
            Image tile(kTile, kTile, PixelFormat::Rgb8);
            for (int y = 0; y < kTile; ++y) {
                for (int x = 0; x < kTile; ++x) {
                    tile.SetPixel(x, y, SkyOnFace(face, at(column * kTile + x), at(row * kTile + y)));
                }
            }
            movie += test::JpegBytes(std::move(tile));
        }
        TestPanorama t;
        t.feedback.active = true;
        std::wstring lines;
        {
            const DebugLineCapture capture;
            // Even the smallest movie is stitched when its table is unusable.
            const std::string table = n == 1 ? test::MakeCufa({}) : "";
            ASSERT_TRUE(ImportQuickTimeVr(t.panorama, folder.Write(L"sky.mov", table + movie)));
            lines = capture.Text();
        }
        EXPECT_THAT(lines, HasSubstr(L"Could not parse header, switching to stitching mode...\n"));
        ASSERT_EQ(t.panorama.faceSize, static_cast<std::uint32_t>(size));
        for (int f = 0; f < 6; ++f) {
            const Image& picture = t.panorama.faces[static_cast<std::size_t>(f)];
            for (int tile = 0; tile < n * n; ++tile) {
                // Every codec blurs a little; another tile is another colour altogether.
                const int left = tile % n * kTile, top = tile / n * kTile;
                int sum = 0;
                for (int y = top; y < top + kTile; ++y) {
                    for (int x = left; x < left + kTile; ++x) {
                        sum += Difference(picture.GetPixel8(x, y), SkyOnFace(f, at(x), at(y)));
                    }
                }
                EXPECT_LT(sum / (kTile * kTile), 45) << "N " << n << ", face " << f << ", tile " << tile;
            }
        }
        EXPECT_TRUE(temporary.Empty());
    }
}

}  // namespace
}  // namespace skyvault
