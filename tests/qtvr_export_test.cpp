// Cubic movies written: the bytes before the faces, the faces, and what is said.
#include "qtvr/qtvr_export.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cctype>
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

std::string FromHex(std::string_view hex) {
    std::string bytes;
    int digits = 0, value = 0;
    for (const char c : hex) {
        if (c == ' ') continue;
        value = value * 16 + (c <= '9' ? c - '0' : c - 'a' + 10);
        if (++digits % 2 == 0) {
            bytes += static_cast<char>(value);
            value = 0;
        }
    }
    return bytes;
}

std::string AsText(const MovieHeader& header) {
    return {reinterpret_cast<const char*>(header.data()), header.size()};
}

struct Piece {
    std::size_t offset;
    std::string bytes;
};

/// Everything in the header that is not zero, at E = 324 and without pictures.
std::string ExpectedHeader() {
    const std::string times = "c100da6c c100da6c", one = "00010000", duration = "00000e10";
    const std::string matrix =
        "00010000 00000000 00000000  00000000 00010000 00000000  00000000 00000000 40000000";
    std::vector<Piece> pieces;
    const auto hex = [&](std::size_t offset, const std::string& text) {
        pieces.push_back({offset, FromHex(text)});
    };
    const auto text = [&](std::size_t offset, const std::string& bytes) {
        pieces.push_back({offset, bytes});
    };
    // Offset, size and type.
    const auto atom = [&](std::size_t offset, std::uint32_t size, const std::string& type) {
        std::string bytes;
        test::AddBig32(bytes, size);
        text(offset, bytes + type);
    };
    const auto qtAtom = [&](std::size_t offset, std::uint32_t size, const std::string& type, int id,
                            int children) {
        atom(offset, size, type);
        text(offset + 11, std::string(1, static_cast<char>(id)));
        text(offset + 15, std::string(1, static_cast<char>(children)));
    };
    atom(0, 2177, "moov");
    atom(8, 108, "mvhd");
    hex(20, times + duration + duration + one + "00ff");
    hex(52, matrix);
    hex(92, duration);
    hex(112, "00000004");

    struct Track {
        std::size_t trak, tkhd, edts, tref, mdia, hdlr, minf, alis, stbl;
        std::uint32_t trakSize, mdiaSize, hdlrSize, minfSize, stblSize;
        const char *reference, *subtype, *handlerFlags, *name;
    };
    const Track tracks[] = {{116, 124, 216, 252, 272, 312, 363, 403, 496, 844, 688, 51, 597, 464, "pano",
                             "qtvr", "80000001 000200b9", "\x12QTVR Media Handler"},
                            {960, 968, 1084, 1120, 1140, 1180, 1240, 1280, 1373, 545, 365, 60, 265, 132,
                             "imgt", "pano", "00000001 000200b6", "\x1bQTVR Panorama Media Handler"},
                            {1505, 1513, 1605, 0, 1641, 1681, 1739, 1767, 1860, 601, 465, 58, 367, 246, "",
                             "vide", "00000000 00010020",
                             "\x19"
                             "Apple Video Media Handler"}};
    int id = 0;
    for (const Track& track : tracks) {
        ++id;
        atom(track.trak, track.trakSize, "trak");
        atom(track.tkhd, 92, "tkhd");
        hex(track.tkhd + 8, id == 3 ? "0000000e" : "0000000f");
        hex(track.tkhd + 12, times);
        text(track.tkhd + 23, std::string(1, static_cast<char>(id)));
        hex(track.tkhd + 28, duration);
        hex(track.tkhd + 44, "0100");
        hex(track.tkhd + 48, matrix);
        hex(track.tkhd + 84, id == 3 ? "01440000 01440000" : "03200000 02580000");
        atom(track.edts, 36, "edts");
        atom(track.edts + 8, 28, "elst");
        hex(track.edts + 20, "00000001" + duration + "00000000" + one);
        if (track.tref > 0) {
            atom(track.tref, 20, "tref");
            atom(track.tref + 8, 12, track.reference);
            text(track.tref + 19, std::string(1, static_cast<char>(id + 1)));
        }
        atom(track.mdia, track.mdiaSize, "mdia");
        atom(track.mdia + 8, 32, "mdhd");
        hex(track.mdia + 20, times + duration + duration);
        atom(track.hdlr, track.hdlrSize, "hdlr");
        text(track.hdlr + 12, std::string("mhlr") + track.subtype + "appl");
        hex(track.hdlr + 24, track.handlerFlags);
        text(track.hdlr + 32, track.name);
        atom(track.minf, track.minfSize, "minf");
        atom(track.alis, 57, "hdlr");
        text(track.alis + 12, "dhlralisappl");
        hex(track.alis + 24, "00000001 0001002a");
        text(track.alis + 32,
             "\x18"
             "Apple Alias Data Handler");
        atom(track.alis + 57, 36, "dinf");
        atom(track.alis + 65, 28, "dref");
        hex(track.alis + 77, "00000001 0000000c");
        text(track.alis + 85, "alis");
        hex(track.alis + 89, "00000001");
        atom(track.stbl, track.stblSize, "stbl");
    }
    for (const std::size_t gmhd : {371u, 1248u}) {
        atom(gmhd, 32, "gmhd");
        atom(gmhd + 8, 24, "gmin");
        hex(gmhd + 20, "0040 8000 8000 8000");
    }
    // Track 1's tables, with the world in its sample description.
    atom(504, 364, "stsd");
    hex(516, "00000001 0000015c");
    text(524, "qtvr");
    hex(534, "0001");
    qtAtom(548, 320, "sean", 1, 3);
    qtAtom(568, 44, "vrsc", 1, 0);
    hex(588, "0002 0000 00000000 00000001");
    qtAtom(612, 172, "imgp", 1, 2);
    qtAtom(632, 76, "impn", 1, 0);
    hex(652, "0002 0000 00000002 00000003 00000002 00000000 00000001");
    qtAtom(708, 76, "impn", 2, 0);
    hex(728, "0002 0000 00000001 00000003 00000002 000003ff 00000000");
    qtAtom(784, 84, "vrnp", 1, 1);
    qtAtom(804, 64, "vrni", 1, 1);
    qtAtom(824, 44, "nloc", 1, 0);
    hex(844, "0002 0000");
    text(848, "pano");
    // The tables of one sample.
    for (const auto& [offset, rest] : {std::pair{868u, "00000050 00000001"}, {1413u, "000000c0 00000001"}}) {
        atom(offset, 24, "stts");
        hex(offset + 12, "00000001 00000001" + duration);
        atom(offset + 24, 28, "stsc");
        hex(offset + 36, "00000001 00000001 00000001 00000001");
        atom(offset + 52, 20, "stsz");
        hex(offset + 64, rest);
        atom(offset + 72, 20, "stco");
        hex(offset + 84, offset == 868 ? "00000001 000008b9" : "00000001 00000909");
    }
    atom(1060, 24, "load");
    hex(1080, "00000100");
    atom(1381, 32, "stsd");
    hex(1393, "00000001 00000010 00000000 000000000000 0001");
    // Track 3's.
    atom(1747, 20, "vmhd");
    hex(1758, "01 0040 8000 8000 8000");
    atom(1868, 102, "stsd");
    hex(1880, "00000001 00000056");
    text(1888, "jpeg");
    hex(1898, "0001");
    text(1904, "appl");
    hex(1912, "00000200 0144 0144 00480000 00480000 00000000 0001");
    text(1934, "\x0cPhoto - JPEG");
    hex(1966, "0018 ffff");
    atom(1970, 24, "stts");
    hex(1982, "00000001 00000006 00000258");
    atom(1994, 28, "stsc");
    hex(2006, "00000001 00000001 00000001 00000001");
    atom(2022, 44, "stsz");
    hex(2038, "00000006");
    atom(2066, 40, "stco");
    hex(2078, "00000006 000009c9 000009c9 000009c9 000009c9 000009c9 000009c9");
    atom(2106, 71, "udta");
    atom(2114, 12, "ctyp");
    text(2122, "qtvr");
    atom(2126, 47, "\xa9swr");
    hex(2134, "0023");
    text(2138, "Skyvault 0.1 by Brambleworks Studio");
    // Behind moov.
    atom(2177, 24, "free");
    atom(2201, 8, "wide");
    atom(2209, 296, "mdat");
    atom(2217, 8, "wide");
    atom(2225, 0, "mdat");
    qtAtom(2245, 68, "sean", 1, 1);
    qtAtom(2265, 48, "ndhd", 1, 0);
    hex(2285, "0002 0000");
    text(2289, "pano");
    hex(2293, "00000001");
    qtAtom(2325, 180, "sean", 1, 2);
    qtAtom(2345, 104, "pdat", 1, 0);
    // 360, -45, 45, 10, 90, 0, 0, 70 as floats from here on.
    hex(2365, "0002 0000 00000001 00000000 00000000 43b40000 c2340000 42340000 41200000 42b40000");
    hex(2409, "428c0000 00000510 00000144 0004 0001 00000510 00000144 0004 0001 00000001");
    text(2441, "cube");
    qtAtom(2449, 56, "cuvw", 1, 0);
    hex(2473, "43b40000 c2b40000 42b40000 41200000 42f00000 00000000 00000000 428c0000");

    std::string header(2505, '\0');
    for (const Piece& piece : pieces) header.replace(piece.offset, piece.bytes.size(), piece.bytes);
    return header;
}

TEST(MovieTemplate, EveryByteIsInItsPlace) {
    const std::string header = AsText(MakeMovieHeader(324, {})), expected = ExpectedHeader();
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
