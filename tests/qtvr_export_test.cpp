// Cubic movies written: the bytes before the faces, the faces, and what is said.
#include "qtvr/qtvr_export.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <set>

#include "platform/debug_line.h"
#include "platform/files.h"
#include "qtvr/movie_template.h"
#include "tests/made_movies.h"
#include "tests/own_temporary_files.h"
#include "tests/test_panorama.h"

namespace skyvault {
namespace {

using test::Big32At;
using test::TestPanorama;
using testing::ElementsAre;

std::string AsText(const MovieHeader& header) {
    return {reinterpret_cast<const char*>(header.data()), header.size()};
}

TEST(MovieTemplate, EveryByteIsInItsPlace) {
    // E = 324, no pictures; written down atom by atom from the format's description.
    std::ifstream file(SKYVAULT_SOURCE_DIR "/tests/data/movie_header.bin", std::ios::binary);
    const std::string expected{std::istreambuf_iterator<char>(file), {}};
    const std::string header = AsText(MakeMovieHeader(324, {}));
    ASSERT_EQ(header.size(), expected.size());
    for (std::size_t i = 0; i < header.size(); ++i) ASSERT_EQ(header[i], expected[i]) << "at offset " << i;
}

/// The offset behind the atoms from `begin` on, each of which ends where the next begins; every type met is
/// added to `met`.
void WalkAtoms(const std::string& movie, std::size_t begin, std::size_t end, std::vector<std::string>& met) {
    static const std::set<std::string> containers = {"moov", "trak", "edts", "tref", "mdia",
                                                     "minf", "gmhd", "dinf", "stbl", "udta"};
    std::size_t at = begin;
    while (at + 8 <= end) {
        const std::size_t size = Big32At(movie, at);
        const std::string type = movie.substr(at + 4, 4);
        ASSERT_GE(size, 8u) << at;
        ASSERT_LE(at + size, end) << at;
        met.push_back(type);
        if (containers.count(type) > 0) WalkAtoms(movie, at + 8, at + size, met);
        at += size;
    }
    // User data may end in a zero.
    ASSERT_TRUE(at == end || (end - at == 4 && Big32At(movie, at) == 0)) << at;
}

TEST(QtvrExport, AtomsFillTheFileAndChunksPointAtWholeJpegFiles) {
    const test::OwnTemporaryFiles temporary;
    const test::TemporaryFolder folder;
    for (const PixelFormat format : {PixelFormat::Rgb8, PixelFormat::Rgba16}) {
        TestPanorama t;
        t.SetFaces(52, format);
        const std::wstring path = folder / L"movie.mov";
        std::wstring log = L"before\n", lines;
        {
            const DebugLineCapture capture;
            ASSERT_TRUE(WriteQuickTimeVr(t.panorama, path, 324, format, &log));
            lines = capture.Text();
        }
        const std::string movie = folder.Read(L"movie.mov");
        std::vector<std::string> met;
        WalkAtoms(movie, 0, movie.size(), met);
        EXPECT_EQ(std::count(met.begin(), met.end(), "trak"), 3);
        EXPECT_EQ(std::count(met.begin(), met.end(), "stco"), 3);
        EXPECT_EQ(met.back(), "mdat");

        std::size_t expectedOffset = 2505;
        std::wstring expectedLines;
        for (std::size_t f = 0; f < 6; ++f) {
            const std::size_t size = Big32At(movie, 2042 + 4 * f), offset = Big32At(movie, 2082 + 4 * f);
            ASSERT_EQ(offset, expectedOffset) << f;
            ASSERT_LE(offset + size, movie.size()) << f;
            EXPECT_EQ(movie.substr(offset, 2), "\xff\xd8") << f;
            EXPECT_EQ(movie.substr(offset + size - 2, 2), "\xff\xd9") << f;
            expectedLines += L"CubeFace " + std::to_wstring(f) + L": " + std::to_wstring(size) + L" bytes\n";
            expectedOffset += size;
        }
        EXPECT_EQ(movie.size(), expectedOffset) << "nothing behind the last face";
        EXPECT_EQ(lines, expectedLines);
        EXPECT_EQ(log, L"before\nPath\t\t" + path + L"\nSize\t\t" + FileSizeText(movie.size()) +
                           L"\nResolution\t6 x 324 x 324\nProjection\tCubemap\nFormat\t\t" +
                           FormatName(format) + L"\n");
        EXPECT_EQ(folder.FileCount(), 1u);
        EXPECT_TRUE(temporary.Empty());
    }
}

TEST(QtvrExport, AMissingFaceHasNoBytesAndItsOffsetIsTheNextOnes) {
    const std::string header = AsText(MakeMovieHeader(65536 + 7, {10, 0, 30, 0, 0, 600}));
    const std::uint32_t offsets[] = {2505, 2515, 2515, 2545, 2545, 2545};
    for (std::size_t f = 0; f < 6; ++f) EXPECT_EQ(Big32At(header, 2082 + 4 * f), offsets[f]) << f;
    EXPECT_EQ(Big32At(header, 2046), 0u);
    EXPECT_EQ(Big32At(header, 2062), 600u);
    EXPECT_EQ(Big32At(header, 2209), 296u + 640u);
    EXPECT_EQ(Big32At(header, 1916), 0x00070007u) << "16 bits of the size";
    EXPECT_EQ(Big32At(header, 2413), 4u * 65543u);

    // Without memory for any face the movie is written all the same.
    const test::OwnTemporaryFiles temporary;
    const test::TemporaryFolder folder;
    TestPanorama t;
    t.SetFaces(8, PixelFormat::Rgb8);
    FailAllocationsAfter(0);
    const bool written = WriteQuickTimeVr(t.panorama, folder / L"movie.mov", 8, PixelFormat::Rgb8, nullptr);
    FailAllocationsAfter(-1);
    EXPECT_TRUE(written);
    EXPECT_EQ(folder.Read(L"movie.mov"), AsText(MakeMovieHeader(8, {})));
}

TEST(QtvrExport, RefusesWhatItCannotDoAndLeavesNothing) {
    const test::OwnTemporaryFiles temporary;
    const test::TemporaryFolder folder;
    const std::wstring path = folder / L"movie.mov";
    TestPanorama t, empty;
    t.SetFaces(8, PixelFormat::Rgb8);
    std::wstring log;
    EXPECT_FALSE(ExportQuickTimeVr(t.panorama, L"", log));
    EXPECT_FALSE(ExportQuickTimeVr(empty.panorama, path, log));
    EXPECT_FALSE(WriteQuickTimeVr(t.panorama, path, 0, PixelFormat::Rgb8, &log));
    EXPECT_FALSE(WriteQuickTimeVr(t.panorama, path, -5, PixelFormat::Rgb8, &log));
    EXPECT_FALSE(ExportQuickTimeVr(t.panorama, folder / L"none/movie.mov", log));
    // A folder of that name.
    ASSERT_TRUE(CreateFolder(folder / L"taken.mov"));
    EXPECT_FALSE(ExportQuickTimeVr(t.panorama, folder / L"taken.mov", log));
    EXPECT_EQ(log, L"");
    EXPECT_EQ(folder.FileCount(), 1u);
    EXPECT_TRUE(temporary.Empty());
}

TEST(QtvrExport, SizeIsTheOptionsButNoMoreThanTheSource) {
    const test::OwnTemporaryFiles temporary;
    const test::TemporaryFolder folder;
    TestPanorama t;
    t.SetFaces(300, PixelFormat::Rgb8);
    std::wstring log;
    t.settings.resolution0 = 2;
    ASSERT_TRUE(ExportQuickTimeVr(t.panorama, folder / L"a.mov", log));
    EXPECT_EQ(Big32At(folder.Read(L"a.mov"), 2417), 300u) << "not made a power of two";
    EXPECT_THAT(t.feedback.information,
                ElementsAre(L"The resolution of the source 360° photo is too low to export as 6 x 1024 x "
                            L"1024\n\nThe photo will be exported as 6 x 300 x 300"));
    t.settings.resolution0 = 0;
    ASSERT_TRUE(ExportQuickTimeVr(t.panorama, folder / L"b.mov", log));
    EXPECT_EQ(Big32At(folder.Read(L"b.mov"), 2417), 256u);
}

}  // namespace
}  // namespace skyvault
