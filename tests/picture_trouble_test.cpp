// What is said of files that cannot be read.

#include <gtest/gtest.h>

#include "codecs/picture_files.h"
#include "codecs/picture_trouble.h"
#include "platform/memory_budget.h"
#include "platform/path_text.h"
#include "session/conversion.h"
#include "session/messages.h"
#include "tests/made_dds.h"
#include "tests/made_files.h"

namespace skyvault::test {
namespace {

TEST(PictureTrouble, EveryCauseIsFoundInTheFile) {
    const TemporaryFolder folder;
    const std::string tga("\0\0\2\0\0\0\0\0\0\0\0\0\4\0\4\0\x18\0", 18),
        packed = std::string("\0\0\12", 3) + tga.substr(3);
    const struct {
        const wchar_t* name;
        std::string bytes;
        Cause cause;
    } rows[] = {
        {L"empty.png", "", Cause::Empty},
        {L"letter.jpg", "Dear photographer,", Cause::NotAPicture},
        {L"layers.psd", "8BPS and so on", Cause::KindNotRead},
        {L"plain.png", "P6\n1 1\n255\nabc", Cause::KindNotRead},
        {L"texture.png", "DDS and so on", Cause::MisnamedPicture},
        {L"animation.tga", std::string("GIF89a\4\0\4\0\0\0\0", 13), Cause::MisnamedPicture},
        {L"cut.tga", tga + "abc", Cause::CutShort},
        {L"packed.tga", packed + std::string(48, 'a'), Cause::KindNotRead},
        {L"letter.tga", "Dear photographer, here are the pictures", Cause::NotAPicture},
        {L"cut.dds", "DDS |", Cause::CutShort},
        {L"cut.webp", std::string("RIFF\0\1\0\0WEBPVP8 ", 16), Cause::CutShort},
    };
    for (const auto& row : rows)
        EXPECT_EQ(WhyNotRead(folder.Write(row.name, row.bytes)), row.cause) << row.name;
    EXPECT_EQ(WhyNotRead(folder.Path()), Cause::IsFolder);
    EXPECT_EQ(WhyNotRead(folder / L"none.png"), Cause::NoFile);

    Image image;
    EXPECT_EQ(LineOf(LoadPicture(folder / L"layers.psd", image)),
              L"Could not open " + Quoted(folder / L"layers.psd") + L": pictures of its kind are not read");
}

TEST(PictureTrouble, PicturesThatAreCutAreToldFromDamagedOnes) {
    const TemporaryFolder folder;
    for (const wchar_t* name : {L"a.bmp", L"a.gif", L"a.jpg", L"a.png", L"a.tif", L"a.dds"}) {
        SCOPED_TRACE(ToUtf8(name));
        Image image = RandomImage(64, 64, PixelFormat::Rgb8);
        ASSERT_TRUE(Saved(image, folder / name));
        const std::string whole = folder.Read(name);
        for (const std::size_t size : {whole.size() / 2, whole.size() * 7 / 8}) {
            folder.Write(name, whole.substr(0, size));
            EXPECT_EQ(WhyNotRead(folder / name), Cause::CutShort) << size;
        }
        folder.Write(name, whole);
        EXPECT_NE(WhyNotRead(folder / name), Cause::CutShort);
    }
}

TEST(PictureTrouble, WhatNeedsTooMuchMemoryIsSaidToNeedIt) {
    const TemporaryFolder folder;
    TestPanorama made;
    Image source = RandomImage(256, 128, PixelFormat::Rgb8);
    const std::wstring picture = folder / L"source.png", movie = folder / L"movie.mov";
    ASSERT_TRUE(Saved(source, picture));
    const auto import = [&](PanoramaFormat format, const std::vector<std::wstring>& paths) {
        TestPanorama t;
        Outcome outcome = ImportPanorama(*FindLayout(format), paths, t.settings, t.feedback, t.panorama);
        return std::pair(std::move(outcome), FaceTroubles(t.panorama, paths));
    };
    ASSERT_TRUE(ImportPanorama(*FindLayout(PanoramaFormat::Equirectangular), {picture}, made.settings,
                               made.feedback, made.panorama)
                    .IsDone());
    ASSERT_TRUE(ExportPanorama(*FindLayout(PanoramaFormat::QuickTimeVr), movie, {}, made.settings,
                               made.feedback, made.panorama)
                    .IsDone());
    Image face = RandomImage(8, 8, PixelFormat::Rgb8);
    ASSERT_TRUE(Saved(face, folder / L"face.bmp"));
    SetMemoryBudget(4096);
    const std::wstring small = folder / L"face.bmp";
    const auto [refused, none] = import(PanoramaFormat::QuickTimeVr, {movie});
    EXPECT_EQ(refused.reason, Reason::NeedsMemory);
    EXPECT_EQ(refused.file, movie);
    EXPECT_EQ(import(PanoramaFormat::SingleFiles, {picture, L"", L"", L"", L"", L""}).first.reason,
              Reason::NeedsMemory);
    const auto [done, lines] =
        import(PanoramaFormat::SingleFiles, {small, picture, small, small, small, small});
    SetMemoryBudget(0);
    EXPECT_TRUE(done.IsDone());
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_NE(lines[0].find(L" of memory, of which "), std::wstring::npos);
    EXPECT_TRUE(lines[0].ends_with(L"; there is no right face"));
}

}  // namespace
}  // namespace skyvault::test
