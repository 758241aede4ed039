// The web page beside an exported panorama. The files of Media/www stand beside the test program, as they do
// beside the real one.
#include "webexport/web_page.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>

#include "image/picture_files.h"
#include "platform/files.h"
#include "platform/utf8.h"
#include "tests/child_process.h"
#include "tests/temporary_folder.h"
#include "tests/test_panorama.h"

namespace skyvault {
namespace {

using test::TemporaryFolder;
using test::TestPanorama;

/// The bytes of a file of Media/www; empty when there is none.
std::string Media(const wchar_t* name) {
    const std::string path = ToUtf8(JoinPath(JoinPath(JoinPath(ProgramFolder(), L"Media"), L"www"), name));
    std::ifstream file(std::filesystem::path(std::u8string(path.begin(), path.end())), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

std::size_t Count(const std::string& text, const std::string& what) {
    std::size_t count = 0;
    for (std::size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + what.size())) {
        ++count;
    }
    return count;
}

bool Export(const std::wstring& path) {
    TestPanorama t;
    t.settings.resolution1 = 0;
    t.SetEquirectangular(test::RandomImage(64, 32, PixelFormat::Rgb8));
    return ExportWebPage(t.panorama, path);
}

TEST(WebPage, TheCompanionsLieBesideThePicture) {
    struct Case {
        const wchar_t *picture, *page, *folder;
    };
    const wchar_t separator[] = {kPathSeparator, 0};
    const Case cases[] = {
        {L"C:/out/pano.jpg", L"C:/out/pano.html", L"C:/out"},
        {L"/a.b/two.dots.png", L"/a.b/two.dots.html", L"/a.b"},
        {L"/a.b/none", L"/a.b/none.html", L"/a.b"},
        {L"pano.jpg", L"pano.html", L""},
    };
    for (const Case& c : cases) {
        const WebPageFiles files = CompanionFiles(c.picture);
        const std::wstring folder = c.folder[0] ? c.folder + std::wstring(separator) : L"";
        EXPECT_EQ(files.page, c.page);
        EXPECT_EQ(files.script, folder + L"skyvault.js");
        EXPECT_EQ(files.styleSheet, folder + L"skyvault.css");
    }
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

TEST(WebPage, EveryPlaceOfThePageNamesThePicture) {
    const std::string page = Media(L"skyvault.html");
    struct Case {
        const wchar_t *picture, *page;
        bool ascii = true;
    };
    const Case cases[] = {
        {L"pano.png", L"pano.html"},
        {L"100% a&b #1 'q'.png", L"100% a&b #1 'q'.html"},
        {L"a [URL] [URL].png", L"a [URL] [URL].html"},  // what was put in is not replaced again
        {L"two.dots.png", L"two.dots.html"},
        {L"&amp;.png", L"&amp;.html"},
        {L"Gr\u00fc\u00dfe.png", L"Gr\u00fc\u00dfe.html", false},
    };
    for (const Case& c : cases) {
        TemporaryFolder folder;
        const std::string name = ToUtf8(c.picture);
        ASSERT_TRUE(Export(folder / c.picture)) << name;
        EXPECT_EQ(folder.FileCount(), 4u) << name;
        EXPECT_GT(FileSizeOf(folder / c.picture), 0u) << name;
        const std::string written = folder.Read(c.page);
        EXPECT_EQ(folder.Read(L"skyvault.js"), Media(L"skyvault.js")) << name;
        EXPECT_EQ(folder.Read(L"skyvault.css"), Media(L"skyvault.css")) << name;
        // Other than ASCII depends on the system's code page.
        if (!c.ascii) continue;
        const std::size_t places = Count(page, "[URL]");
        EXPECT_EQ(Count(written, ">" + name + "<"), Count(page, ">[URL]<")) << name;
        EXPECT_EQ(Count(written, name), places) << name;
        EXPECT_EQ(written.size(), page.size() + places * (name.size() - 5)) << name;
    }
}

TEST(WebPage, OlderFilesAreReplacedAndTwoPagesShareTheScript) {
    TemporaryFolder folder;
    for (const wchar_t* name : {L"one.html", L"one.png", L"skyvault.js", L"skyvault.css"}) {
        folder.Write(name, std::string(100000, 'x'));
    }
    ASSERT_TRUE(Export(folder / L"one.png"));
    ASSERT_TRUE(Export(folder / L"two.png"));
    EXPECT_EQ(folder.FileCount(), 6u);
    EXPECT_EQ(folder.Read(L"skyvault.js"), Media(L"skyvault.js"));
    EXPECT_EQ(folder.Read(L"skyvault.css"), Media(L"skyvault.css"));
    EXPECT_EQ(Count(folder.Read(L"one.html"), "one.png"), Count(Media(L"skyvault.html"), "[URL]"));
    EXPECT_EQ(Count(folder.Read(L"two.html"), "two.png"), Count(Media(L"skyvault.html"), "[URL]"));
    EXPECT_EQ(folder.Read(L"one.png"), folder.Read(L"two.png"));
}

TEST(WebPage, WhatIsMissingBesideTheProgramIsLeftOut) {
    // A copy of the console program, with a page that names no picture, an empty style sheet and no script.
    TemporaryFolder folder;
    const std::wstring program(FileNamePart(test::ConsoleProgramPath()));
    const std::string original = ToUtf8(test::ConsoleProgramPath());
    std::filesystem::copy_file(std::u8string(original.begin(), original.end()), folder.SystemPath(program));
    // On Linux, with the module it reads PNG with.
    const auto module = std::filesystem::path(std::u8string(original.begin(), original.end()))
                            .replace_filename("skyvault-oiio.so");
    if (std::filesystem::exists(module)) {
        std::filesystem::copy_file(module, folder.SystemPath(L"skyvault-oiio.so"));
    }
    ASSERT_TRUE(CreateFolder(folder / L"Media/www"));
    folder.Write(L"Media/www/skyvault.html", "no picture [url]");
    folder.Write(L"Media/www/skyvault.css", "");
    Image picture = test::RandomImage(64, 32, PixelFormat::Rgb8);
    ASSERT_TRUE(SavePicture(picture, folder / L"in.png"));
    ASSERT_TRUE(CreateFolder(folder / L"out"));
    test::ChildProcess child(folder / program, {L"convert", L"--from", L"equirectangular", L"--to", L"html",
                                                folder / L"in.png", folder / L"out/pano.png"});
    const test::ProgramResult result = child.Wait();
    EXPECT_EQ(result.exitStatus, 0) << result.err;
    EXPECT_EQ(FindFiles(folder / L"out").size(), 2u);
    EXPECT_GT(FileSizeOf(folder / L"out/pano.png"), 0u);
    EXPECT_EQ(folder.Read(L"out/pano.html"), "no picture [url]");
}

}  // namespace
}  // namespace skyvault
