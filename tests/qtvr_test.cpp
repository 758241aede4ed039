// Cubic movies read: tiles put into their places by tables or by stitching, and files that are no movies; and
// written: the bytes before the faces, the faces, and what is told.
#include "qtvr/qtvr_import.h"

#include "platform/debug_line.h"
#include "qtvr/movie_scan.h"
#include "qtvr/movie_template.h"
#include "qtvr/qtvr_export.h"
#include "qtvr/tile_stitching.h"
#include "tests/made_files.h"

namespace skyvault::test {
namespace {

std::uint32_t Big32At(const std::string& bytes, std::size_t offset) {
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < 4; ++i) value = value << 8 | static_cast<std::uint8_t>(bytes.at(offset + i));
    return value;
}

/// A movie's chunk table.
std::string MakeStco(const std::vector<std::uint32_t>& offsets) {
    const auto count = static_cast<std::uint32_t>(offsets.size());
    std::vector<std::uint32_t> fields = {16 + 4 * count, 0x7374636f, 0, count};
    fields.insert(fields.end(), offsets.begin(), offsets.end());
    std::string bytes;
    for (const std::uint32_t field : fields) {
        for (int shift = 24; shift >= 0; shift -= 8) bytes += static_cast<char>(field >> shift);
    }
    return bytes;
}

/// A tile of n × n on a face.
struct MadeTile {
    int n, face, column, row;
};
constexpr int kTileEdge = 32;

Image SkyTile(const MadeTile& tile) {
    Image picture(kTileEdge, kTileEdge, PixelFormat::Rgb8);
    const auto wave = [](float angle) { return static_cast<std::uint8_t>(128 + 110 * std::sin(angle)); };
    ForPixels(picture, [&](int x, int y) {
        const auto [dx, dy, dz] = FacePixelToDirection(tile.n * kTileEdge, static_cast<CubeFace>(tile.face),
                                                       tile.column * kTileEdge + x, tile.row * kTileEdge + y);
        picture.SetPixel(x, y,
                         Color8(wave(5.3f * dx + 3.1f * dy * dz + 0.4f), wave(4.1f * dy - 4.7f * dx * dz),
                                wave(6.1f * dz + 3.0f * dx * dy), 255));
    });
    return picture;
}

/// The bytes a picture has as a JPEG file.
std::string JpegBytes(Image picture) {
    const TemporaryFolder folder;
    return SavePicture(picture, folder / L"picture.jpg").IsDone() ? folder.Read(L"picture.jpg") : "";
}

/// The tiles of all faces, the faces backwards, each by rows.
std::vector<MadeTile> TilesOf(int n) {
    std::vector<MadeTile> tiles;
    for (int i = 0; i < 6 * n * n; ++i) tiles.push_back({n, 5 - i / (n * n), i % n, i / n % n});
    return tiles;
}

/// Every tile is where it was cut from. Codecs blur a little; another tile is another colour altogether.
void ExpectSky(const Panorama& panorama, int n) {
    ASSERT_EQ(panorama.faceSize, static_cast<std::uint32_t>(n * kTileEdge));
    for (const MadeTile& tile : TilesOf(n)) {
        const Image& face = panorama.faces[static_cast<std::size_t>(tile.face)];
        const int x = tile.column * kTileEdge, y = tile.row * kTileEdge;
        ASSERT_TRUE(face.format == PixelFormat::Rgba8 && face.width == panorama.faceSize);
        const Image seen = face.CopyRect(PixelRect{x, y, x + kTileEdge - 1, y + kTileEdge - 1});
        EXPECT_LT(Difference(SkyTile(tile), seen, true), 5)
            << n << ": " << tile.face << ", " << x << ", " << y;
    }
}

std::string DataFile(const std::string& name) {
    std::ifstream file(SKYVAULT_SOURCE_DIR "/tests/data/" + name, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

/// A movie of n × n tiles on each face. Its pictures lie in another order than its tables tell them in, with
/// bytes between them, behind a small one of noise; its first chunk table has other things to tell.
std::string SkyMovie(int n) {
    return DataFile("tiles_" + std::to_string(n) + ".mov");
}

std::string Repeated(const std::string& text, int count) {
    std::string all;
    for (int i = 0; i < count; ++i) all += text;
    return all;
}

struct QtvrImport : testing::Test {
    const OwnTemporaryFiles temporary;
    const TemporaryFolder folder;
    TestPanorama t;
    std::wstring lines;  ///< on the debugger channel

    Reason Import(const std::string& movie) {
        t.panorama = {};
        t.feedback = {};
        t.feedback.active = true;
        const DebugLineCapture capture;
        const ImportRequest request = t.From(folder.Write(L"movie.mov", movie));
        const Reason reason = ImportQuickTimeVr(request, t.feedback, t.panorama).reason;
        lines = capture.Text();
        EXPECT_TRUE(temporary.Empty());
        EXPECT_EQ(t.panorama.IsEmpty(), reason != Reason::Done);
        EXPECT_TRUE(t.feedback.information.empty());
        return reason;
    }
};

TEST_F(QtvrImport, EveryTileComesToItsPlaceByTablesOrByItsEdges) {
    for (int i = 0; i < 6; ++i) {
        const int n = 1 + i % 3;
        const bool withTables = i < 3;
        SCOPED_TRACE(std::to_string(n) + (withTables ? " tables" : ""));
        std::string movie = SkyMovie(n);
        for (const char* const table : {"stco", "stco", "cufa"})
            if (!withTables) movie.replace(movie.find(table), 4, "none");
        ASSERT_EQ(Import(movie), Reason::Done);
        ExpectSky(t.panorama, n);
        const std::wstring count = std::to_wstring(6 * n * n), more = std::to_wstring(6 * n * n + 1);
        EXPECT_EQ(lines, L"Header is " + std::to_wstring(movie.find("\xff\xd8")) + L" bytes\n" + more +
                             L" JPEG files found\n" + count +
                             L" JPEG files found with the highest square resolution: 32\nTileRes = " +
                             std::to_wstring(n) +
                             (withTables ? L"\ncufa found!\nstco found!\nstco found!\n"
                                         : L"\nCould not parse header, switching to stitching mode...\n"));
        std::vector<std::wstring>& texts = t.feedback.progressTexts;
        texts.erase(std::unique(texts.begin(), texts.end()), texts.end());
        EXPECT_EQ(texts.front(), L"Extracting JPG files...");
        EXPECT_EQ(texts.end()[-2], withTables ? L"Parsing STCO..." : L"Stitching tiles...");
        EXPECT_EQ(texts.back(), L"Creating cube faces...");
    }
}

TEST_F(QtvrImport, TellsWhatIsNoCubicMovie) {
    const std::string tile = JpegBytes(SkyTile({1, 0, 0, 0}));
    const std::string larger = JpegBytes(RandomImage(40, 8, PixelFormat::Rgb8));
    const std::pair<const char*, std::string> rows[] = {
        {"25 tiles", Repeated(tile, 25)},
        {"5 tiles", Repeated(tile, 5)},
        {"a larger picture that is not square", Repeated(tile, 6) + larger},
        {"six pictures that are none", Repeated("\xff\xd8 no picture \xff\xd9", 6)},
        {"a cut tile", Repeated(tile, 5) + tile.substr(0, 100) + "\xff\xd9"},
    };
    for (const auto& [what, movie] : rows) EXPECT_EQ(Import(movie), Reason::NotACubicMovie) << what;
    EXPECT_EQ(Import("moov mdat"), Reason::CannotOpen);
}

TEST_F(QtvrImport, DamagedTablesLeadToStitching) {
    const std::string movie = SkyMovie(1);
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
        std::string changed = movie;
        changed.replace(row.offset, row.bytes.size(), row.bytes);
        EXPECT_EQ(Import(changed), Reason::Done) << row.what;
        EXPECT_EQ(lines.find(L"switching to stitching mode") != std::wstring::npos, row.stitched) << row.what;
    }
}

// --- marks and tables --------------------------------------------------------------------------------------

MovieBytes AsMovie(const std::string& text) {
    return std::as_bytes(std::span(text));
}

/// S and E stand for the marks, F for the byte both begin with.
std::string Expand(const std::string& text) {
    std::string bytes;
    for (const char c : text)
        bytes += c == 'S' ? "\xff\xd8" : c == 'E' ? "\xff\xd9" : c == 'F' ? "\xff" : std::string(1, c);
    return bytes;
}

TEST(MovieScan, PicturesReachFromTheLastStartMarkToAnEndMark) {
    const std::pair<const char*, const char*> rows[] = {
        {"", ""},          {"F", ""},          {"aSbEc", "SbE|"},  {"SESE", "SE|SE|"},
        {"EESbE", "SbE|"}, {"FSaFE", "SaFE|"}, {"SaE..S", "SaE|"}, {"SaSbEcE", "SbE|SbEcE|"}};
    const DebugLineCapture lines;
    MoviePictures pictures;
    for (const auto& [movie, expected] : rows) {
        const std::string bytes = Expand(movie);
        FindPictures(AsMovie(bytes), pictures);
        std::string found;
        for (const ByteRange& range :
             std::span(pictures.ranges).first(static_cast<std::size_t>(pictures.count)))
            found += bytes.substr(range.offset, range.size) + "|";
        EXPECT_EQ(found, Expand(expected)) << movie;
    }
    // A file full of marks is not followed without end.
    FindPictures(AsMovie(Expand(Repeated("S", 1000))), pictures);
    EXPECT_EQ(pictures.count, 0);
    FindPictures(AsMovie(Expand(Repeated("SE", 1000))), pictures);
    EXPECT_EQ(pictures.count, kMostPictures);
    FindPictures(AsMovie(Expand("S" + std::string(1000, '.') + Repeated("E", 1000))), pictures);
    std::size_t sum = 0;
    for (const ByteRange& range : std::span(pictures.ranges).first(static_cast<std::size_t>(pictures.count)))
        sum += range.size;
    EXPECT_TRUE(pictures.count > 1 && sum <= 4 * 3002u) << sum;
    EXPECT_LT(lines.Text().size(), 10000u);
}

TEST(MovieScan, EntriesTellTheirFaceExactly) {
    for (const auto& [where, w, x, y, face] : TableOf<float, float, float, int>("face_entries")) {
        EXPECT_EQ(FaceOfEntry({w, x, y}), face) << where;
    }
}

TEST(MovieScan, OffsetsOfALaterChunkTableCountUnlessTheyBeginBeforeTheEarlierOnes) {
    FaceGrid grid;
    BuildFaceGrid(1, grid);
    FaceTable table;
    ASSERT_TRUE(ReadFaceTable({}, 1, table));
    const std::string ascending = MakeStco({10, 11, 12, 13, 14, 15}),
                      swapped = MakeStco({10, 12, 11, 13, 14, 15});
    const struct {
        const char* what;
        std::string movie;
        int right, back;  ///< tiles of these faces; −1: not placed
    } rows[] = {
        {"none", "moov", -1, -1},
        {"swapped", swapped, 2, 1},
        {"later one counts", ascending + swapped, 2, 1},
        {"later one begins before", ascending + MakeStco({9, 12, 11, 13, 14, 15}), 1, 2},
        {"the first one always counts", MakeStco({0, 2, 1, 3, 4, 5}), 2, 1},
        {"other counts are passed over", MakeStco({1, 2, 3, 4, 5}) + swapped, 2, 1},
        {"cut off", ascending.substr(0, 39), -1, -1},
    };
    const DebugLineCapture quiet;
    for (const auto& row : rows) {
        TilePlaces places;
        EXPECT_EQ(PlaceTiles(AsMovie(row.movie), grid, table, places), row.right >= 0) << row.what;
        // Cells: top, front, right, back, left, bottom.
        EXPECT_TRUE(places[2] == row.right && places[3] == row.back) << row.what;
    }
}

TEST(FaceGrid, EveryCellHasFourNeighboursThatKnowIt) {
    for (int n = 1; n <= 6; ++n) {
        FaceGrid grid;
        BuildFaceGrid(n, grid);
        ASSERT_EQ(TilesPerSide(grid.cellCount), n);
        for (int i = 0; i < 4 * grid.cellCount; ++i) {
            const auto across = [&](CellEdge e) { return grid.cells.at(e.cell).neighbours.at(e.edge); };
            const CellEdge own = {i / 4, i % 4}, other = across(own);
            ASSERT_GE(other.cell, 0);
            EXPECT_TRUE(across(other).cell == own.cell && across(other).edge == own.edge) << n << " " << i;
        }
    }
    for (const int count : {0, 1, 5, 7, 25, 217, 294}) EXPECT_EQ(TilesPerSide(count), 0) << count;
}

TEST(TileStitching, OfEqualTilesTheFirst) {
    FaceGrid grid;
    BuildFaceGrid(2, grid);
    std::vector<Image> tiles;
    for (int i = 0; i < 24; ++i) tiles.push_back(RandomImage(5, 5, PixelFormat::Grey8));
    SilentFeedback feedback;
    TilePlaces places;
    ASSERT_TRUE(StitchTiles(grid, tiles, feedback, places));
    for (int i = 0; i < 24; ++i) EXPECT_EQ(places[static_cast<std::size_t>(i)], i);
}

// --- written ---------------------------------------------------------------------------------------------

TEST(MovieTemplate, EveryByteIsInItsPlace) {
    // E = 324, no pictures; written down atom by atom from the format's description.
    const std::string expected = DataFile("movie_header.bin");
    EXPECT_TRUE(std::ranges::equal(std::as_bytes(std::span(expected)), MakeMovieHeader(324, {})));

    const MovieHeader made = MakeMovieHeader(65536 + 7, {});
    const std::string header(reinterpret_cast<const char*>(made.data()), made.size());
    EXPECT_EQ(Big32At(header, 1916), 0x00070007u) << "16 bits of the size";
    EXPECT_EQ(Big32At(header, 2413), 4u * 65543u);
}

TEST(QtvrExport, TheHeaderPointsAtWholeJpegFiles) {
    const OwnTemporaryFiles temporary;
    const TemporaryFolder folder;
    const std::wstring path = folder / L"movie.mov";
    TestPanorama t;
    const auto run = [&](const std::wstring& to) {
        Image unused;
        return ExportQuickTimeVr(t.panorama, t.ForFile(PanoramaFormat::QuickTimeVr, to), t.feedback, unused);
    };
    EXPECT_EQ(run(path).reason, Reason::NothingToShow);
    t.SetFaces(300, PixelFormat::Rgba16);
    EXPECT_EQ(run(L"").reason, Reason::CannotWrite);
    t.feedback.information.clear();
    ASSERT_TRUE(run(path).IsDone());
    EXPECT_EQ(Big32At(folder.Read(L"movie.mov"), 2417), 300u) << "not made a power of two";
    ASSERT_EQ(t.feedback.information.size(), 1u) << "the source is too small";

    t.settings.resolution0 = 0;
    const DebugLineCapture capture;
    const Outcome outcome = run(path);
    ASSERT_TRUE(outcome.IsDone());
    const std::string movie = folder.Read(L"movie.mov");
    std::size_t end = 2505;
    std::wstring lines;
    for (std::size_t f = 0; f < 6; ++f) {
        const std::size_t size = Big32At(movie, 2042 + 4 * f);
        ASSERT_EQ(Big32At(movie, 2082 + 4 * f), end) << f;
        EXPECT_EQ(movie.substr(end, 2), "\xff\xd8") << f;
        end += size;
        EXPECT_EQ(movie.substr(end - 2, 2), "\xff\xd9") << f;
        lines += L"CubeFace " + std::to_wstring(f) + L": " + std::to_wstring(size) + L" bytes\n";
    }
    EXPECT_EQ(movie.size(), end) << "nothing behind the last face";
    EXPECT_EQ(2209 + Big32At(movie, 2209), end);
    EXPECT_NE(capture.Text().find(lines), std::wstring::npos);
    EXPECT_EQ(outcome.infoLog, L"Path\t\t" + path + L"\nSize\t\t" + FileSizeText(movie.size()) +
                                   L"\nResolution\t6 x 256 x 256\nProjection\tCubemap\nFormat\t\t" +
                                   FormatName(PixelFormat::Rgba16) + L"\n");
    EXPECT_EQ(folder.FileCount(), 1u);
    // Nobody wants a movie without one of its faces.
    FailAllocationsAfter(1);
    EXPECT_FALSE(run(path).IsDone());
    FailAllocationsAfter(-1);
    EXPECT_TRUE(temporary.Empty() && folder.Read(L"movie.mov") == movie);
}

}  // namespace
}  // namespace skyvault::test
