// Names and places that are hard to write to or to read from, through the menu's own commands.
#include <gtest/gtest.h>

#include "image/picture_files.h"
#include "platform/file_stream.h"
#include "platform/files.h"
#include "platform/utf8.h"
#include "session/commands.h"
#include "session/layouts.h"
#include "tests/recording_host.h"
#include "tests/temporary_folder.h"
#include "tests/test_panorama.h"

namespace skyvault::test {
namespace {

class FileFaults : public testing::Test {
  protected:
    FileFaults() {
        // Nobody else holds a file here.
        SetShareAndFailAtOnce(true);
        settings_.resolution0 = settings_.resolution1 = settings_.resolution2 = 0;
        settings_.antialiasing = false;
        Image picture = RandomImage(64, 32, PixelFormat::Rgb8);
        EXPECT_TRUE(SavePicture(picture, picture_));
        EXPECT_TRUE(CreateFolder(out_));
        host_.answers = {picture_};
        ImportCommand(session_, PanoramaFormat::Equirectangular);
        EXPECT_TRUE(session_.panorama && !session_.panorama->IsEmpty());
    }

    ~FileFaults() override { SetShareAndFailAtOnce(false); }

    static std::wstring Extension(const LayoutRow& layout) {
        return layout.format == PanoramaFormat::DirectXDds    ? L".dds"
               : layout.format == PanoramaFormat::QuickTimeVr ? L".mov"
                                                              : L".bmp";
    }
    void Export(const LayoutRow& layout, const std::wstring& path) {
        host_.information.clear();
        host_.errors.clear();
        host_.answers = {path};
        ExportCommand(session_, layout.format);
    }
    bool Succeeded() const {
        return !host_.information.empty() &&
               host_.information.back().find(L"successfully exported") != std::wstring::npos;
    }

    const TemporaryFolder folder_;
    const std::wstring picture_ = folder_ / L"source.bmp", out_ = folder_ / L"out";
    AppState settings_;
    RecordingHost host_;
    Session session_{settings_, host_};
};

TEST_F(FileFaults, APlaceThatTakesNoFileIsToldAndStaysAsItIs) {
    folder_.Write(L"file.txt", "a file");
    for (const LayoutRow& layout : Layouts()) {
        if (!layout.ExportReady()) continue;
        // Six names are made of one, and a prefix is added to some: all their places are taken.
        const std::wstring name = L"Cubemap_Spheremap_x" + Extension(layout);
        for (const wchar_t* const affix : {L"", L"_front"}) {
            std::wstring taken = JoinPath(out_, name);
            ASSERT_TRUE(CreateFolder(taken.insert(taken.size() - 4, affix)));
        }
        const std::size_t before = FindFiles(out_).size();
        const std::wstring places[] = {
            JoinPath(out_, name),
            JoinPath(folder_ / L"none", name),
            JoinPath(folder_ / L"file.txt", name),
            JoinPath(out_, L"cubemap_spheremap_" + std::wstring(300, L'y') + Extension(layout)),
        };
        for (const std::wstring& place : places) {
            SCOPED_TRACE(std::string(layout.consoleName).append(1, ' ').append(ToUtf8(place)));
            Export(layout, place);
            EXPECT_FALSE(Succeeded());
            ASSERT_EQ(host_.errors.size(), 1u);
            EXPECT_EQ(host_.errors[0], L"Could not write \"" + place + L"\"");
            // The page's script and style sheet are written whatever becomes of the picture.
            if (layout.format == PanoramaFormat::Html) {
                for (const wchar_t* const file : {L"skyvault.js", L"skyvault.css"}) {
                    RemoveFile(JoinPath(out_, file));
                }
                for (const std::wstring& file : FindFiles(out_)) {
                    if (file.ends_with(L".html")) RemoveFile(JoinPath(out_, file));
                }
            }
            EXPECT_EQ(FindFiles(out_).size(), before);
            EXPECT_TRUE(FileExists(folder_ / L"file.txt"));
        }
    }
}

TEST_F(FileFaults, NamesOfEveryKindAreWrittenAndReadAgain) {
    std::wstring deep = out_;
    while (deep.size() < 400) deep = JoinPath(deep, std::wstring(60, L'd'));
    ASSERT_TRUE(CreateFolder(deep));
    const std::wstring names[] = {
        JoinPath(out_, L"\U0001F30D\u200D\U0001F525 \u05E9\u0301"),
        JoinPath(out_, L"%s%n 100% 'a' ;rm -- -x"),
        JoinPath(out_, L"two.dots..and more"),
        JoinPath(out_, std::wstring(120, L'n')),
        JoinPath(deep, L"cubemap_spheremap_p"),
    };
    for (const LayoutRow& layout : Layouts()) {
        if (!layout.ExportReady()) continue;
        for (const std::wstring& name : names) {
            const std::wstring path = WithExportPrefix(layout, name + Extension(layout));
            SCOPED_TRACE(std::string(layout.consoleName).append(1, ' ').append(ToUtf8(path)));
            Export(layout, path);
            EXPECT_TRUE(Succeeded());
            EXPECT_TRUE(host_.errors.empty());
            if (layout.importCommand == 0 || layout.format == PanoramaFormat::SingleFiles) continue;
            AppState settings = settings_;
            RecordingHost host;
            Session again{settings, host};
            host.answers = {path};
            ImportCommand(again, layout.format);
            EXPECT_TRUE(again.panorama && !again.panorama->IsEmpty());
            EXPECT_EQ(settings.importPath, FolderPart(path));
        }
    }
}

TEST_F(FileFaults, NamesOfDevicesAreNoPictures) {
    for (const wchar_t* const name :
         {L"NUL", L"CON", L"NUL.png", L"CON.tga", L"con.dds", L"AUX.mov", L"/dev/zero", L"/dev/stdin"}) {
        for (const std::wstring& path : {std::wstring(name), JoinPath(out_, name)}) {
            SCOPED_TRACE(ToUtf8(path));
            EXPECT_FALSE(LoadPicture(path).IsValid());
            for (const PanoramaFormat format : {PanoramaFormat::QuickTimeVr, PanoramaFormat::DirectXDds}) {
                host_.errors.clear();
                host_.answers = {path};
                ImportCommand(session_, format);
                EXPECT_TRUE(session_.panorama->IsEmpty());
                EXPECT_FALSE(host_.errors.empty());
            }
        }
    }
#ifdef _WIN32
    host_.answers = {picture_};
    ImportCommand(session_, PanoramaFormat::Equirectangular);
    for (const wchar_t* const name : {L"NUL.bmp", L"CON.png", L"com1.bmp"}) {
        Export(*FindLayout(PanoramaFormat::Equirectangular), JoinPath(out_, name));
        const bool exists = FileExists(JoinPath(out_, name)) && LoadPicture(JoinPath(out_, name)).IsValid();
        EXPECT_EQ(Succeeded(), exists) << ToUtf8(name) << ": what is told is what is there";
        EXPECT_EQ(host_.errors.empty(), exists) << ToUtf8(name);
    }
    for (const std::wstring& file : FindFiles(out_))
        EXPECT_FALSE(file.starts_with(L"Skyvault-")) << ToUtf8(file);
#endif
}

}  // namespace
}  // namespace skyvault::test
