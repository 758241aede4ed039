// Cubic movies written: the bytes before the faces, the faces, and what is told.
#include "qtvr/qtvr_export.h"

#include "platform/debug_line.h"
#include "qtvr/movie_template.h"
#include "tests/made_movies.h"
#include "tests/own_temporary_files.h"

namespace skyvault::test {
namespace {

std::string AsText(const MovieHeader& header) {
    return {reinterpret_cast<const char*>(header.data()), header.size()};
}

TEST(MovieTemplate, EveryByteIsInItsPlace) {
    // E = 324, no pictures; written down atom by atom from the format's description.
    std::ifstream file(SKYVAULT_SOURCE_DIR "/tests/data/movie_header.bin", std::ios::binary);
    const std::string expected{std::istreambuf_iterator<char>(file), {}};
    EXPECT_TRUE(AsText(MakeMovieHeader(324, {})) == expected);

    // A missing face has no bytes, and the next one's offset.
    const std::string header = AsText(MakeMovieHeader(65536 + 7, {10, 0, 30, 0, 0, 600}));
    const std::uint32_t offsets[] = {2505, 2515, 2515, 2545, 2545, 2545};
    for (std::size_t f = 0; f < 6; ++f) EXPECT_EQ(Big32At(header, 2082 + 4 * f), offsets[f]) << f;
    EXPECT_EQ(Big32At(header, 2046), 0u);
    EXPECT_EQ(Big32At(header, 2062), 600u);
    EXPECT_EQ(Big32At(header, 2209), 296u + 640u);
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
