// What the tests of faults share: small panoramas in the files of every layout, and a folder to write into.
#pragma once

#include <gtest/gtest.h>

#include <map>

#include "codecs/picture_files.h"
#include "generators/random.h"
#include "platform/file_stream.h"
#include "platform/files.h"
#include "platform/utf8.h"
#include "projection/single_files.h"
#include "session/conversion.h"
#include "tests/temporary_folder.h"
#include "tests/test_panorama.h"

namespace skyvault::test {

/// The layouts and pages that are written.
inline std::vector<const LayoutRow*> WrittenLayouts() {
    std::vector<const LayoutRow*> rows;
    for (const LayoutRow& row : Layouts()) {
        if (row.exportCommand != 0) rows.push_back(&row);
    }
    return rows;
}

/// The files a layout makes of a path.
inline std::vector<std::wstring> FilesFor(const LayoutRow& layout, const std::wstring& path) {
    if (layout.sources == 1) return {path};
    std::vector<std::wstring> paths;
    for (int f = 0; f < kFaceCount; ++f) paths.push_back(SingleFilePath(path, 0, static_cast<CubeFace>(f)));
    return paths;
}

class LayoutFaults : public testing::Test {
  public:
    static std::wstring Extension(const LayoutRow& layout) {
        return layout.ownExtension ? L"." + std::wstring(layout.ownExtension) : L".png";
    }

  protected:
    LayoutFaults() {
        SetShareAndFailAtOnce(true);  // nobody else holds a file here
        SetFixedSeed(7);
        t.settings.resolution0 = t.settings.resolution1 = t.settings.resolution2 = 0;
        t.settings.antialiasing = false;
        t.SetFaces(16, PixelFormat::Rgba8);
        t.settings.logo = folder / L"logo.png";
        EXPECT_TRUE(SavePicture(t.panorama.faces[1], t.settings.logo).IsDone());
        EXPECT_TRUE(CreateFolder(folder / L"in") && CreateFolder(out));
    }
    ~LayoutFaults() override {
        FailAllocationsAfter(-1);
        ClearFixedSeed();
        SetShareAndFailAtOnce(false);
    }

    Outcome Export(const LayoutRow& layout, const std::wstring& path) {
        return ExportPanorama(layout, path, {}, t.settings, t.feedback, t.panorama);
    }
    /// Writes small files of a layout, or a generator's picture.
    std::vector<std::wstring> Sources(const LayoutRow& layout) {
        const std::wstring path = folder / (L"in/a" + Extension(layout));
        const bool isWritten = layout.exportCommand != 0;
        const Outcome written = isWritten ? Export(layout, path) : SavePicture(t.panorama.faces[0], path);
        EXPECT_TRUE(written.IsDone()) << layout.consoleName;
        return FilesFor(layout, path);
    }
    /// Every file of the output folder with its contents.
    std::map<std::wstring, std::string> Written() const {
        std::map<std::wstring, std::string> files;
        for (const std::wstring& name : FindFiles(out)) files[name] = folder.Read(JoinPath(L"out", name));
        return files;
    }
    void EmptyOutput() {
        for (const std::wstring& name : FindFiles(out)) RemoveFile(JoinPath(out, name));
    }

    const OwnTemporaryFiles temporary;
    const TemporaryFolder folder;
    const std::wstring out = folder / L"out";
    TestPanorama t;
};

}  // namespace skyvault::test
