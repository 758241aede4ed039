// What photos carry, from one file into another: profile, EXIF and XMP, orientation and panorama properties.
#include "codecs/photo_metadata.h"

#include <gtest/gtest.h>

#include "codecs/bytes.h"
#include "codecs/exif_block.h"
#include "codecs/md5.h"
#include "codecs/xmp_packet.h"
#include "image/turn_upright.h"
#include "projection/equirectangular.h"
#include "session/conversion.h"
#include "session/sphere_tags.h"
#include "tests/child_process.h"
#include "tests/made_files.h"

namespace skyvault::test {
namespace {

using ByteVector = std::vector<std::byte>;

constexpr std::uint16_t kMakerNote = 37500;

ByteVector ProfileOf(std::string_view space, std::size_t size) {
    ByteVector icc(size);
    const Bytes noise = Noise(size, 5);
    std::transform(noise.begin() + 128, noise.end(), icc.begin() + 128,
                   [](std::uint8_t value) { return std::byte{value}; });
    SetBig32(icc.data(), static_cast<std::uint32_t>(size));
    SetBig32(&icc[128], 0);
    std::ranges::copy(BytesOfText(space), &icc[16]);
    std::ranges::copy(BytesOfText("acsp"), &icc[36]);
    return icc;
}

/// A photo's EXIF as a camera writes it, with a thumbnail behind everything else.
ByteVector ExifOf(bool bigEndian, std::uint16_t orientation) {
    const auto number = [&](std::uint16_t tag, std::uint32_t value, std::uint32_t count = 1) {
        TiffValue made{tag, tiff_type::kLong, count, ByteVector(4)};
        (bigEndian ? SetBig32 : SetLittle32)(made.bytes.data(), value);
        return made;
    };
    const auto text = [](std::uint16_t tag, std::string_view value) {
        const auto bytes = BytesOfText(value);
        return TiffValue{
            tag, tiff_type::kText, static_cast<std::uint32_t>(value.size()), {bytes.begin(), bytes.end()}};
    };
    ExifTree tree{.bigEndian = bigEndian, .main = {}, .exif = {}, .gps = {}, .interop = {}};
    tree.main = {text(tiff_tag::kMake, "Maker"), text(tiff_tag::kModel, "Maker One"),
                 number(tiff_tag::kOrientation, orientation)};
    tree.exif = {text(tiff_tag::kDateTaken, "2024:05:01 12:30:00"), number(tiff_tag::kPixelWidth, 4000),
                 number(tiff_tag::kPixelHeight, 2000)};
    tree.exif.push_back({kMakerNote, tiff_type::kUndefined, 300, ProfileOf("note", 300)});
    tree.gps = {number(2, 48), number(4, 11)};
    ByteVector exif = ExifOfTree(tree);
    // The second directory, of the thumbnail, whose offset is told at the end of the first.
    const ByteSource source = SourceOf(exif);
    const std::uint64_t linkAt = TiffReader(source).Directory(TiffReader(source).FirstDirectory())->endAt;
    std::uint32_t secondAt = 0;
    const auto thumbnailAt = static_cast<std::uint32_t>(exif.size());
    Append(exif, BytesOfText("THUMBNAIL!"));
    const ByteVector second = WriteExifTree(
        {.bigEndian = bigEndian,
         .main = {number(tiff_tag::kThumbnailAt, thumbnailAt), number(tiff_tag::kThumbnailBytes, 10)},
         .exif = {},
         .gps = {},
         .interop = {}},
        static_cast<std::uint32_t>(exif.size()), secondAt);
    Append(exif, second);
    (bigEndian ? SetBig32 : SetLittle32)(&exif[linkAt], secondAt);
    return exif;
}

std::string XmpOf(const std::string& descriptions) {
    return "<x:xmpmeta xmlns:x=\"adobe:ns:meta/\"><rdf:RDF "
           "xmlns:rdf=\"http://www.w3.org/1999/02/22-rdf-syntax-ns#\">" +
           descriptions + "</rdf:RDF></x:xmpmeta>";
}
const std::string kTitle =
    "<rdf:Description rdf:about=\"\" xmlns:dc=\"http://purl.org/dc/elements/1.1/\" dc:title=\"A > 'b'\"/>";
const std::string kPanorama =
    "<rdf:Description rdf:about='' xmlns:P='http://ns.google.com/photos/1.0/panorama/' "
    "P:PoseHeadingDegrees='350'>"
    "<P:InitialViewHeadingDegrees>90</P:InitialViewHeadingDegrees>"
    "<P:FullPanoWidthPixels>400</P:FullPanoWidthPixels><P:FullPanoHeightPixels>200</P:FullPanoHeightPixels>"
    "<P:CroppedAreaImageWidthPixels>400</P:CroppedAreaImageWidthPixels>"
    "<P:CroppedAreaImageHeightPixels>100</P:CroppedAreaImageHeightPixels></rdf:Description>";

PhotoMetadata PhotoOf(bool bigEndian, const std::string& xmp) {
    return {.icc = ProfileOf("RGB ", 150000), .exif = ExifOf(bigEndian, 6), .xmp = xmp, .lost = {}};
}

const TiffEntry* Find(const TiffReader& reader, std::uint16_t directory, std::uint16_t tag,
                      std::optional<TiffDirectory>& found) {
    found = reader.Directory(reader.FirstDirectory());
    if (found && directory != 0) found = reader.Directory(*reader.Number(found->Find(directory)));
    return found ? found->Find(tag) : nullptr;
}

TEST(TurnUpright, EveryOrientationOfEveryFormat) {
    constexpr const char* kUpright[] = {"abc/def",  "abc/def",  "cba/fed",  "fed/cba", "def/abc",
                                        "ad/be/cf", "da/eb/fc", "fc/eb/da", "cf/be/ad"};
    for (const PixelFormat format : AllFormats()) {
        Image letters(3, 2, format);
        for (std::size_t i = 0; i < letters.ByteCount(); ++i) letters.pixels[i] = static_cast<std::byte>(i);
        for (int orientation = 0; orientation <= 8; ++orientation) {
            Image image = letters.CopyRect();
            ASSERT_TRUE(TurnUpright(orientation, image));
            std::string told;
            for (std::uint32_t y = 0; y < image.height; ++y) {
                for (std::uint32_t x = 0; x < image.width; ++x) {
                    const std::size_t bytes = BytesPerPixel(format);
                    for (int i = 0; i < 6; ++i) {
                        const std::byte* const letter = letters.PixelAddress(i % 3, i / 3);
                        if (std::equal(letter, letter + bytes, image.Row(y) + x * bytes))
                            told += static_cast<char>('a' + i);
                    }
                }
                if (y + 1 < image.height) told += '/';
            }
            EXPECT_EQ(told, kUpright[orientation]) << orientation;
        }
    }
    // More than one of the squares that are turned at a time.
    const Image large = RandomImage(150, 97, PixelFormat::Rgb8);
    Image turned = large.CopyRect();
    ASSERT_TRUE(TurnUpright(6, turned) && TurnUpright(8, turned));
    EXPECT_TRUE(SameBytes(large, turned));
}

TEST(PhotoMetadata, FilesGiveBackWhatWasPutIntoThem) {
    const TemporaryFolder folder;
    const std::string longXmp =
        XmpOf(kTitle + "<rdf:Description rdf:about=\"\" xmlns:h=\"urn:history\"><h:t>" +
              std::string(200000, 'x') + "</h:t></rdf:Description>");
    for (const wchar_t* name : {L"a.jpg", L"a.png", L"a.tif"}) {
        for (const bool bigEndian : {false, true}) {
            for (const std::string& xmp : {XmpOf(kTitle), longXmp}) {
                SCOPED_TRACE(ToUtf8(name) + (bigEndian ? " MM " : " II ") + std::to_string(xmp.size()));
                const PhotoMetadata photo = PhotoOf(bigEndian, xmp);
                Image image = RandomImage(60, 30, PixelFormat::Rgb8);
                ASSERT_TRUE(Saved(image, folder / L"plain" + name));
                const Outcome saved = SavePicture(image, folder / name, {.metadata = &photo});
                ASSERT_TRUE(saved.IsDone() && saved.lost.empty());
                // The pixels are those of a file without.
                EXPECT_TRUE(SameBytes(Loaded(folder / name), Loaded(folder / L"plain" + name)));

                const PhotoMetadata read = ReadPhotoMetadata(folder / name);
                EXPECT_TRUE(read.lost.empty());
                EXPECT_EQ(read.icc, photo.icc);
                const bool split = name[2] == L'j' && xmp.size() > 65000;
                EXPECT_TRUE(split ? read.xmp.find(std::string(200000, 'x')) != std::string::npos &&
                                        read.xmp.find(kTitle) != std::string::npos && IsSoundXmp(read.xmp)
                                  : read.xmp == xmp);
                EXPECT_EQ(read.xmp.find("HasExtendedXMP"), std::string::npos);

                const ByteSource source = SourceOf(read.exif);
                const TiffReader exif(source);
                std::optional<TiffDirectory> directory;
                EXPECT_EQ(OrientationOf(read.exif), 1);
                EXPECT_EQ(exif.Number(Find(exif, tiff_tag::kExif, tiff_tag::kPixelWidth, directory)), 60u);
                EXPECT_EQ(exif.Number(Find(exif, tiff_tag::kExif, tiff_tag::kPixelHeight, directory)), 30u);
                const TiffEntry* const note = Find(exif, tiff_tag::kExif, kMakerNote, directory);
                ASSERT_NE(note, nullptr);
                EXPECT_EQ(exif.Value(*note), ProfileOf("note", 300));
                const ExifFacts facts = FactsOfExif(read.exif);
                EXPECT_EQ(facts.camera + L"|" + facts.taken, L"Maker One|2024:05:01 12:30:00");
                EXPECT_TRUE(facts.position);
                EXPECT_EQ(TextOfBytes(read.exif).find("THUMBNAIL"), std::string_view::npos);
                if (name[2] == L't') continue;
                const ByteSource before = SourceOf(photo.exif);
                std::optional<TiffDirectory> old;
                EXPECT_EQ(note->valueAt, Find(TiffReader(before), tiff_tag::kExif, kMakerNote, old)->valueAt);
            }
        }
    }
}

TEST(PhotoMetadata, ABlockDoesNotGrowWithEveryConversion) {
    const auto corrected = [](const ByteVector& exif) {
        return CorrectedExif(exif, {70000, 35000}, "Skyvault 0.1.0");
    };
    const ByteVector once = corrected(ExifOf(true, 3));
    EXPECT_EQ(corrected(once), once);
    const std::string_view text = TextOfBytes(once);
    EXPECT_EQ(text.find("Skyvault"), text.rfind("Skyvault"));
}

TEST(PhotoMetadata, WhatDoesNotFitIsLeftOutAndToldAndTheFileIsWritten) {
    const TemporaryFolder folder;
    struct Row {
        const char* what;
        PixelFormat format;
        const wchar_t* name;
        PhotoMetadata photo;
        std::size_t lost;
    };
    const auto withExif = [](std::size_t size) {
        ByteVector exif = ExifOf(false, 1);
        exif.resize(size, std::byte{1});
        return exif;
    };
    const Row rows[] = {
        {"CMYK", PixelFormat::Rgb8, L"a.jpg", {ProfileOf("CMYK", 500), {}, "", {}}, 1},
        {"grey to colour", PixelFormat::Rgb8, L"a.png", {ProfileOf("GRAY", 500), {}, "", {}}, 1},
        {"grey to grey", PixelFormat::Grey8, L"a.png", {ProfileOf("GRAY", 500), {}, "", {}}, 0},
        {"grey to grey", PixelFormat::Grey8, L"a.jpg", {ProfileOf("GRAY", 500), {}, "", {}}, 0},
        {"grey to grey", PixelFormat::Grey8, L"a.tif", {ProfileOf("GRAY", 500), {}, "", {}}, 0},
        {"colour to alpha", PixelFormat::Rgba8, L"a.tif", {ProfileOf("RGB ", 500), {}, "", {}}, 0},
        {"EXIF", PixelFormat::Rgb8, L"a.jpg", {{}, withExif(70000), "", {}}, 1},
        {"EXIF", PixelFormat::Rgb8, L"a.png", {{}, withExif(70000), "", {}}, 0},
        {"bmp", PixelFormat::Rgb8, L"a.bmp", {ProfileOf("RGB ", 500), withExif(700), XmpOf(kTitle), {}}, 0},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        Image image = RandomImage(20, 10, row.format);
        const Outcome saved = SavePicture(image, folder / row.name, {.metadata = &row.photo});
        ASSERT_TRUE(saved.IsDone());
        EXPECT_EQ(saved.lost.size(), row.lost);
        const PhotoMetadata read = ReadPhotoMetadata(folder / row.name);
        EXPECT_EQ(read.IsEmpty(), row.lost > 0 || row.name[2] == L'b');
        EXPECT_TRUE(Loaded(folder / row.name).IsValid());
    }
}

TEST(PhotoMetadata, EmptyElementsOfXmpStayEmpty) {
    const std::string xmp = XmpOf(
        "<rdf:Description rdf:about=\"\" xmlns:tiff=\"http://ns.adobe.com/tiff/1.0/\">"
        "<tiff:Orientation/></rdf:Description>");
    const std::string corrected = CorrectedXmp(xmp, {2, 1}, {});
    EXPECT_NE(corrected.find("<tiff:Orientation"), std::string::npos);
    EXPECT_EQ(corrected.find("/>1"), std::string::npos) << corrected;
}

TEST(PhotoMetadata, PhotosStandUprightOnceTheyAreRead) {
    const TemporaryFolder folder;
    const Image stored = RandomImage(40, 20, PixelFormat::Rgb8);
    for (const wchar_t* name : {L"a.jpg", L"a.png", L"a.tif"}) {
        for (const int orientation : {1, 3, 6}) {
            // Written upright, and then told to be something else.
            const PhotoMetadata photo{.icc = {}, .exif = ExifOf(false, 1), .xmp = "", .lost = {}};
            Image copy = stored.CopyRect();
            ASSERT_TRUE(SavePicture(copy, folder / name, {.metadata = &photo}).IsDone());
            Image expected = Loaded(folder / name);
            Bytes bytes = ReadFile(folder / name);
            const Bytes entry{0x12, 1, 4, 0, 1, 0, 0, 0, 1, 0, 0, 0},
                shortEntry{0x12, 1, 3, 0, 1, 0, 0, 0, 1, 0};
            auto at = std::search(bytes.begin(), bytes.end(), entry.begin(), entry.end());
            if (at == bytes.end())
                at = std::search(bytes.begin(), bytes.end(), shortEntry.begin(), shortEntry.end());
            ASSERT_NE(at, bytes.end());
            at[8] = static_cast<std::uint8_t>(orientation);
            ASSERT_TRUE(WriteFile(folder / name, bytes));
            ASSERT_TRUE(TurnUpright(orientation, expected));
            EXPECT_TRUE(SameBytes(Loaded(folder / name), expected)) << ToUtf8(name) << orientation;
            EXPECT_EQ(ReadPictureSize(folder / name), (PictureSize{expected.width, expected.height}));
            const Image small = Loaded(folder / name, 0, {10, 100});
            EXPECT_EQ(small.width, 10u);
            EXPECT_EQ(small.height, orientation == 6 ? 20u : 5u);
        }
    }
}

TEST(PhotoMetadata, APacketLosesThePanoramaAndNothingElse) {
    const std::string kept = XmpOf(kTitle);
    struct Row {
        std::string before, after;
    };
    const Row rows[] = {
        {XmpOf(kTitle), kept},
        {"\xef\xbb\xbf<?xpacket begin='' id='W5M0'?>" + kept + "  <?xpacket end='w'?>",
         "\xef\xbb\xbf<?xpacket begin='' id='W5M0'?>" + kept + "  <?xpacket end='w'?>"},
        {XmpOf(kPanorama + kTitle), XmpOf("<rdf:Description rdf:about=''></rdf:Description>" + kTitle)},
        // Another prefix of the same name is another namespace.
        {XmpOf("<rdf:Description xmlns:GPano='urn:other' GPano:x='1'/>"),
         XmpOf("<rdf:Description xmlns:GPano='urn:other' GPano:x='1'/>")},
        {XmpOf("<rdf:Description xmlns:t='http://ns.adobe.com/tiff/1.0/' t:Orientation='6'>"
               "<t:ImageWidth>9</t:ImageWidth></rdf:Description>"),
         XmpOf("<rdf:Description xmlns:t='http://ns.adobe.com/tiff/1.0/' t:Orientation='1'>"
               "<t:ImageWidth>512</t:ImageWidth></rdf:Description>")},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(CorrectedXmp(row.before, {512, 256}, {}), row.after);
        const std::string with = CorrectedXmp(row.before, {512, 256}, {{"PoseHeadingDegrees", "1\"2"}});
        EXPECT_EQ(ReadSphereTags(with), (SphereTags{{"PoseHeadingDegrees", "1&quot;2"}}));
    }
    for (const std::string& broken :
         {std::string(), std::string("text"), kept.substr(0, kept.size() - 1), kept + kept,
          "<!DOCTYPE a>" + kept, std::string("<a><b></a></b>"), std::string("<a b=c/>")}) {
        EXPECT_FALSE(IsSoundXmp(broken)) << broken;
    }
    // RFC 1321
    EXPECT_EQ(Md5Text(""), "D41D8CD98F00B204E9800998ECF8427E");
    EXPECT_EQ(Md5Text("12345678901234567890123456789012345678901234567890123456789012345678901234567890"),
              "57EDF4A22BE3C955AC49DA2E2107B67A");
}

TEST(SphereTags, TheCompassTurnsWithThePanorama) {
    TestPanorama t;
    t.SetEquirectangular(DirectionPicture(360));
    t.panorama.metadata.xmp = XmpOf(kPanorama);
    const auto tags = [&](const Camera& camera = {}) {
        return SphereTagsOfExport(t.panorama, camera, t.settings);
    };
    EXPECT_EQ(tags()["PoseHeadingDegrees"], "350");
    EXPECT_EQ(tags()["InitialViewHeadingDegrees"], "90");
    RotatePanorama(t.panorama.modifications, 0.5235988f, 0, 0);
    EXPECT_EQ(tags()["PoseHeadingDegrees"], "20");
    EXPECT_EQ(tags()["InitialViewHeadingDegrees"], "60");
    // What lies in the middle now lay 30 degrees to the right: its colour says so.
    Image result;
    ASSERT_TRUE(
        RenderEquirectangular(t.panorama, t.ForFile(PanoramaFormat::Equirectangular), t.feedback, result)
            .IsDone());
    const Color16 middle =
        result.GetPixel16(static_cast<int>(result.width) / 2, static_cast<int>(result.height) / 2);
    EXPECT_NEAR(middle.red / 32767.5 - 1, 0.5, 0.02);
    EXPECT_EQ(tags({0.5235988f, 0.1745329f, 0})["InitialViewHeadingDegrees"], "30");
    EXPECT_EQ(tags({0.5235988f, 0.1745329f, 0})["InitialViewPitchDegrees"], "-10");
    t.panorama.modifications.flipHorizontal = true;
    EXPECT_FALSE(tags().contains("PoseHeadingDegrees"));
    EXPECT_EQ(
        CropTrouble(L"a.jpg", ReadSphereTags(XmpOf(kPanorama))),
        L"\"a.jpg\" is a part of a panorama (400 x 100 of 400 x 200 pixels) and was taken for a whole one");
    EXPECT_EQ(CropTrouble(L"a.jpg", tags()), L"");
}

TEST(PhotoMetadata, EveryLayoutCarriesThePhotoAndOnlyTheSphereItsProperties) {
    const TemporaryFolder folder;
    PhotoMetadata photo = PhotoOf(false, XmpOf(kPanorama + kTitle));
    photo.exif = ExifOf(false, 1);
    Image image = RandomImage(64, 32, PixelFormat::Rgb8);
    const SphereTags sphere{{"PoseHeadingDegrees", "5"}};
    ASSERT_TRUE(SavePicture(image, folder / L"in.jpg", {.metadata = &photo, .sphere = &sphere}).IsDone());
    AppState settings;
    RecordingFeedback feedback;
    for (const LayoutRow& row : Layouts()) {
        if (row.kind == LayoutKind::Generator || row.ownExtension != nullptr) continue;
        for (const bool strip : {false, true}) {
            SCOPED_TRACE(row.consoleName);
            const std::wstring output = folder / L"out.png";
            const ConversionResult result =
                ConvertPanorama({.from = FindLayout(PanoramaFormat::Equirectangular),
                                 .sources = {folder / L"in.jpg"},
                                 .to = &row,
                                 .output = output,
                                 .modifications = {},
                                 .camera = {},
                                 .stripMetadata = strip},
                                settings, feedback);
            ASSERT_TRUE(result.outcome.IsDone());
            EXPECT_TRUE(result.troubles.empty());
            const bool isSphere =
                row.format == PanoramaFormat::Equirectangular || row.kind == LayoutKind::Page;
            const PhotoMetadata read = ReadPhotoMetadata(FilesOfExport(row, output, settings).back() == output
                                                             ? output
                                                             : FilesOfExport(row, output, settings).front());
            EXPECT_EQ(read.icc, photo.icc);
            EXPECT_EQ(read.exif.empty(), strip);
            EXPECT_EQ(read.xmp.find("dc:title") == std::string::npos, strip);
            const SphereTags tags = ReadSphereTags(read.xmp);
            EXPECT_EQ(tags.size(), isSphere && !strip ? 15u : 0u);
            EXPECT_EQ(read.xmp.find("ns.google.com") == std::string::npos, tags.empty());
            if (tags.empty()) continue;
            const PictureSize size = ReadPictureSize(output);
            EXPECT_EQ(tags.at("FullPanoWidthPixels"), std::to_string(size.width));
            EXPECT_EQ(tags.at("CroppedAreaImageHeightPixels"), std::to_string(size.height));
            EXPECT_EQ(tags.at("PoseHeadingDegrees"), "5");
        }
    }
}

TEST(PhotoMetadata, TheConsoleTellsWhatAPhotoCarriesAndWhatItLoses) {
    const TemporaryFolder folder;
    const PhotoMetadata photo = PhotoOf(true, XmpOf(kPanorama));
    Image image = RandomImage(64, 32, PixelFormat::Rgb8);
    const SphereTags sphere = ReadSphereTags(photo.xmp);
    const std::wstring path = folder / L"in.jpg";
    ASSERT_TRUE(SavePicture(image, path, {.metadata = &photo, .sphere = &sphere}).IsDone());
    const ProgramResult info = RunConsole("info", {path});
    EXPECT_NE(
        info.out.find(
            "Profile\t\twithout a name\nCamera\t\tMaker One\nTaken\t\t2024:05:01 12:30:00\nPosition\tyes\n"
            "Sphere\t\tequirectangular, 400 x 100 of 400 x 200, heading 350\n"),
        std::string::npos)
        << info.out;
    // The byte order of the EXIF block is broken.
    Bytes bytes = ReadFile(path);
    const std::string name = "Exif";
    *(std::search(bytes.begin(), bytes.end(), name.begin(), name.end()) + 6) = 'X';
    ASSERT_TRUE(WriteFile(path, bytes));
    const ProgramResult converted =
        RunConsole("convert --from equirectangular --to strip", {path, folder / L"out.jpg"});
    EXPECT_EQ(converted.exitStatus, 0);
    EXPECT_NE(converted.err.find("in.jpg\": the EXIF data are damaged and were left out"), std::string::npos);
    EXPECT_NE(converted.err.find("is a part of a panorama (400 x 100 of 400 x 200 pixels)"),
              std::string::npos);
    EXPECT_EQ(ReadPhotoMetadata(folder / L"out.jpg").icc, photo.icc);
}

}  // namespace
}  // namespace skyvault::test
