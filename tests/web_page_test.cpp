// The web page beside an exported panorama. The files of Media/www stand beside the test program, as they do
// beside the real one.
#include "webexport/web_page.h"

#include <gtest/gtest.h>

#include "platform/files.h"
#include "tests/child_process.h"
#include "tests/made_files.h"

namespace skyvault::test {
namespace {

/// A file of Media/www; empty when there is none.
std::string Media(const wchar_t* name) {
    const Bytes bytes = ReadFile(JoinPath(JoinPath(ProgramFolder(), L"Media/www"), name));
    return {bytes.begin(), bytes.end()};
}

std::size_t Count(const std::string& text, const std::string& what) {
    std::size_t count = 0;
    for (std::size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + 1)) ++count;
    return count;
}

TEST(WebPage, TheShippedFilesAreAsciiAndBelongTogether) {
    for (const wchar_t* name : {L"skyvault.html", L"skyvault.js", L"skyvault.css"}) {
        const std::string text = Media(name);
        EXPECT_FALSE(text.empty()) << ToUtf8(name);
        // They are written in the system's code page: anything else would not come through.
        EXPECT_TRUE(std::all_of(text.begin(), text.end(), [](char c) { return c > 0; })) << ToUtf8(name);
        EXPECT_EQ(Count(text, "http:") + Count(text, "https:"), 0u) << ToUtf8(name) << " needs the network";
    }
    const std::string page = Media(L"skyvault.html");
    EXPECT_GE(Count(page, "[URL]"), 1u);
    EXPECT_EQ(Count(page, "src=\"skyvault.js\""), 1u);
    EXPECT_EQ(Count(page, "href=\"skyvault.css\""), 1u);
}

TEST(WebPage, ThePageNamesThePictureAndLiesBesideItWithTheOtherFiles) {
    const std::string shipped = Media(L"skyvault.html");
    const TemporaryFolder folder;
    for (const wchar_t* name : {L"skyvault.js", L"skyvault.css", L"pano.html", L"pano.png"})
        folder.Write(name, std::string(100000, 'x'));
    std::size_t files = 2;
    for (const std::wstring base :
         {L"pano", L"100% a&b #1 'q'", L"a [URL] [URL]", L"two.dots", L"&amp;", L"Gr\u00fc\u00dfe"}) {
        const std::wstring picture = folder / base + L".png";
        TestPanorama t;
        t.settings.resolution1 = 0;
        t.SetEquirectangular(RandomImage(64, 32, PixelFormat::Rgb8));
        Image result;
        const Outcome outcome =
            ExportWebPage(t.panorama, t.ForFile(PanoramaFormat::Html, picture), t.feedback, result);
        ASSERT_TRUE(outcome.IsDone());
        EXPECT_EQ(outcome.infoLog, picture + L"\n\nThe following files have also been generated:\n" +
                                       folder.Path(base + L".html") + L"\n" + folder.Path(L"skyvault.css") +
                                       L"\n" + folder.Path(L"skyvault.js"));
        EXPECT_EQ(folder.FileCount(), files += 2);
        EXPECT_EQ(ReadPictureSize(picture).width, result.width);
        EXPECT_EQ(folder.Read(L"skyvault.js"), Media(L"skyvault.js"));
        EXPECT_EQ(folder.Read(L"skyvault.css"), Media(L"skyvault.css"));
        // Other than ASCII depends on the system's code page.
        const std::string page = folder.Read(base + L".html"), name = ToUtf8(base) + ".png";
        if (base[0] == L'G') continue;
        EXPECT_EQ(Count(page, ">" + name + "<"), Count(shipped, ">[URL]<")) << name;
        EXPECT_EQ(Count(page, name), Count(shipped, "[URL]")) << name;
        EXPECT_EQ(page.size(), shipped.size() + Count(shipped, "[URL]") * (name.size() - 5)) << name;
    }
    EXPECT_EQ(CompanionFiles(L"pano.jpg").script, L"skyvault.js");
    EXPECT_EQ(CompanionFiles(L"/a.b/none").page, L"/a.b/none.html");
}

TEST(WebPage, WhatIsMissingBesideTheProgramIsLeftOutAndTold) {
    // A copy of the console program, with a page that names no picture, an empty style sheet and no script.
    const TemporaryFolder folder;
    const std::string utf8 = ToUtf8(ConsoleProgramPath());
    const std::filesystem::path original(std::u8string(utf8.begin(), utf8.end()));
    const std::wstring program(FileNamePart(ConsoleProgramPath()));
    std::filesystem::copy_file(original, folder.SystemPath(program));
    ASSERT_TRUE(CreateFolder(folder / L"Media/www") && CreateFolder(folder / L"out"));
    folder.Write(L"Media/www/skyvault.html", "no picture [url]");
    folder.Write(L"Media/www/skyvault.css", "");
    Image picture = RandomImage(64, 32, PixelFormat::Rgb8);
    ASSERT_TRUE(Saved(picture, folder / L"in.bmp"));
    ChildProcess child(folder / program, {L"convert", L"--from", L"equirectangular", L"--to", L"html",
                                          folder / L"in.bmp", folder / L"out/pano.bmp"});
    const ProgramResult result = child.Wait();
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_NE(result.err.find("skyvault.css"), std::string::npos);
    EXPECT_EQ(result.out.find("skyvault.css"), std::string::npos);
    EXPECT_NE(result.out.find("pano.html"), std::string::npos);
    EXPECT_EQ(FindFiles(folder / L"out").size(), 2u);
    EXPECT_GT(FileSizeOf(folder / L"out/pano.bmp"), 0u);
    EXPECT_EQ(folder.Read(L"out/pano.html"), "no picture [url]");
}

}  // namespace
}  // namespace skyvault::test
