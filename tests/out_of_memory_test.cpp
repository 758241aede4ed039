// Memory that runs out at every place where a conversion asks for it: one allocation fails, or all from one
// on. What is then reported as done is what it would have been; what is not leaves no file and says why.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>

#include "image/memory_faults.h"
#include "image/picture_files.h"
#include "image/random.h"
#include "platform/debug_line.h"
#include "platform/files.h"
#include "platform/utf8.h"
#include "projection/single_files.h"
#include "session/commands.h"
#include "session/conversion.h"
#include "tests/own_temporary_files.h"
#include "tests/recording_host.h"
#include "tests/temporary_folder.h"
#include "tests/test_panorama.h"

namespace skyvault::test {
namespace {

constexpr const char* kOldContents = "what was there before";

struct Way {
    PanoramaFormat from, to;
    void (*prepare)(Conversion&, AppState&) = nullptr;
};

using enum PanoramaFormat;
void WithAntialiasing(Conversion&, AppState& settings) {
    settings.antialiasing = true;
}
void WithLogo(Conversion& conversion, AppState& settings) {
    settings.transparency = true;
    conversion.modifications.logoSize = 0.5f;
}

const Way kWays[] = {
    {Equirectangular, HorizontalCross},
    {HorizontalCross, VerticalCross},
    {VerticalCross, Strip},
    {Strip, StripXyz},
    {StripXyz, SingleFiles},
    {SingleFiles, SphereMap},
    {SphereMap, MirrorBall},
    {MirrorBall, Heart},
    {Heart, InteriorStrip},
    {InteriorStrip, InteriorSquare},
    {InteriorSquare, DirectXDds},
    {DirectXDds, QuickTimeVr},
    {QuickTimeVr, Preview},
    {Equirectangular, Html},
    {Strip, Equirectangular},
    {Equirectangular, Equirectangular, WithAntialiasing},
    {Strip, SphereMap, WithAntialiasing},
    {Equirectangular, Heart, WithLogo},
    {Strip, SingleFiles, WithLogo},
    {Voronoi, Strip},
    {FractalPlanet, Strip},
    {DotsOfLight, Strip},
    {Blobs, Strip},
    {Rectangles, Strip},
    {Icosahedron, Strip},
    {Voronoi, Strip, WithAntialiasing},
};

std::string NameOf(const Way& way) {
    return std::string(FindLayout(way.from)->consoleName) + " to " + FindLayout(way.to)->consoleName +
           (way.prepare == WithAntialiasing ? ", antialiased"
            : way.prepare == WithLogo       ? ", with a logo"
                                            : "");
}

const wchar_t* ExtensionOf(PanoramaFormat format) {
    return format == DirectXDds ? L".dds" : format == QuickTimeVr ? L".mov" : L".png";
}

/// Every file of a folder with its contents.
using Files = std::map<std::wstring, std::string>;
Files FilesOf(const TemporaryFolder& folder, const std::wstring& below) {
    Files files;
    for (const std::wstring& name : FindFiles(folder / below)) {
        files[name] = folder.Read(JoinPath(below, name));
    }
    return files;
}

class OutOfMemory : public testing::Test {
  protected:
    OutOfMemory() {
        SetFixedSeed(7);
        settings_.resolution0 = settings_.resolution1 = settings_.resolution2 = 0;
        settings_.antialiasing = false;
        settings_.voronoiPoints = settings_.blobsForceFields = settings_.lightsLights = 5;
        Image logo = RandomImage(5, 4, PixelFormat::Rgba8);
        settings_.logo = folder_ / L"logo.png";
        EXPECT_TRUE(SavePicture(logo, settings_.logo));
        EXPECT_TRUE(CreateFolder(folder_ / L"in") && CreateFolder(folder_ / L"out"));
    }
    ~OutOfMemory() override {
        FailAllocationsAfter(-1);
        ClearFixedSeed();
    }

    /// Small files of a layout; a generator's palette.
    std::vector<std::wstring> Sources(PanoramaFormat format) {
        const LayoutRow& layout = *FindLayout(format);
        const std::wstring path = folder_ / (L"in/a" + std::wstring(ExtensionOf(format)));
        TestPanorama t;
        t.settings = settings_;
        t.SetFaces(16, PixelFormat::Rgba8);
        std::wstring infoLog;
        if (layout.exportTo != nullptr) {
            EXPECT_TRUE(layout.exportTo(t.panorama, path, {}, infoLog));
        } else {
            EXPECT_TRUE(SavePicture(t.panorama.faces[0], path));
        }
        std::vector<std::wstring> sources = {path};
        if (format == SingleFiles) sources.clear();
        for (int f = 0; format == SingleFiles && f < kFaceCount; ++f) {
            sources.push_back(SingleFilePath(path, 0, static_cast<CubeFace>(f)));
        }
        return sources;
    }

    Files Convert(const Conversion& conversion, const AppState& settings) {
        RecordingFeedback feedback;
        const ConversionResult result = ConvertPanorama(conversion, settings, feedback);
        EXPECT_TRUE(result.done) << ToUtf8(result.reason);
        return FilesOf(folder_, L"out");
    }

    /// A logo that cannot be read is done without, which is no failure.
    Files WithoutLogo(const Conversion& conversion, AppState settings) {
        settings.logo = folder_ / L"none.png";
        return Convert(conversion, settings);
    }

    /// The same picture but for the colours of what is transparent, which bleeding gives it if it has memory.
    bool LooksLike(const std::string& a, const std::string& b) {
        const Image one = LoadPicture(folder_.Write(L"one.png", a));
        const Image other = LoadPicture(folder_.Write(L"other.png", b));
        bool same =
            one.IsValid() && other.IsValid() && one.width == other.width && one.height == other.height;
        for (std::int32_t y = 0; same && y < static_cast<std::int32_t>(one.height); ++y) {
            for (std::int32_t x = 0; x < static_cast<std::int32_t>(one.width); ++x) {
                const Color8 p = one.GetPixel8(x, y), q = other.GetPixel8(x, y);
                same = same && (p == q || (p.alpha == 0 && q.alpha == 0));
            }
        }
        return same;
    }

    const OwnTemporaryFiles temporary_;
    const TemporaryFolder folder_;
    AppState settings_;
};

/// False when the program never came to ask for memory that was not there.
bool SawFailure(const DebugLineCapture& lines) {
    return lines.Text().find(L"out of memory exception") != std::wstring::npos;
}

TEST_F(OutOfMemory, AConversionIsWholeOrLeavesEverythingAsItWas) {
    for (const Way& way : kWays) {
        AppState settings = settings_;
        Conversion conversion{FindLayout(way.from), Sources(way.from), FindLayout(way.to), {}, {}, {}};
        if (way.prepare) way.prepare(conversion, settings);
        conversion.output = folder_ / (L"out/b" + std::wstring(ExtensionOf(way.to)));
        const Files whole = Convert(conversion, settings);
        const Files plainer = WithoutLogo(conversion, settings);

        int failures = 0;
        for (const bool once : {true, false}) {
            bool failed = true;
            for (int k = 0; failed; ++k) {
                SCOPED_TRACE(NameOf(way) + (once ? ": only allocation " : ": all from allocation ") +
                             std::to_string(k));
                for (const auto& [file, contents] : whole) {
                    folder_.Write(JoinPath(L"out", file), kOldContents);
                }
                RecordingFeedback feedback;
                const DebugLineCapture lines;
                once ? FailOneAllocationAfter(k) : FailAllocationsAfter(k);
                const ConversionResult result = ConvertPanorama(conversion, settings, feedback);
                FailAllocationsAfter(-1);
                failed = SawFailure(lines);
                failures += failed;
                EXPECT_EQ(result.reason.empty(), result.done);
                EXPECT_TRUE(failed || result.done);
                EXPECT_TRUE(temporary_.Empty());
                const Files after = FilesOf(folder_, L"out");
                EXPECT_EQ(after.size(), whole.size()) << "a file is left over";
                if (!result.missingFaces.empty()) continue;  // which is told; they are white
                for (const auto& [file, contents] : after) {
                    EXPECT_TRUE((contents == kOldContents && !result.done) || contents == whole.at(file) ||
                                contents == plainer.at(file) || LooksLike(contents, whole.at(file)) ||
                                LooksLike(contents, plainer.at(file)))
                        << ToUtf8(file) << " after: " << ToUtf8(result.reason);
                }
            }
        }
        EXPECT_GT(failures, 2) << NameOf(way);
        for (const auto& [file, contents] : whole) RemoveFile(folder_ / JoinPath(L"out", file));
    }
}

bool IsSuccess(const std::wstring& text) {
    return text.find(L"successfully exported") != std::wstring::npos;
}

TEST_F(OutOfMemory, TheWindowSaysSoAndGoesOn) {
    for (const Way& way : kWays) {
        // Slow ones that add nothing here: generators are all imported alike.
        if (way.from >= Voronoi && way.from != Blobs) continue;
        AppState settings = settings_;
        Conversion conversion{FindLayout(way.from), Sources(way.from), FindLayout(way.to), {}, {}, {}};
        if (way.prepare) way.prepare(conversion, settings);
        const std::wstring output = folder_ / (L"out/b" + std::wstring(ExtensionOf(way.to)));
        settings.view = static_cast<std::int32_t>(way.to);

        // One session lives through all of it.
        RecordingHost host;
        Session session{settings, host};
        const auto import = [&] {
            host.errors.clear();
            host.answers.assign(conversion.sources.begin(), conversion.sources.end());
            ImportCommand(session, way.from);
            if (session.panorama) session.panorama->modifications = conversion.modifications;
            return host.errors.empty();
        };
        const auto exportIt = [&] {
            host.errors.clear();
            host.information.clear();
            host.answers = {output};
            ExportCommand(session, way.to);
            return std::any_of(host.information.begin(), host.information.end(), IsSuccess);
        };
        ASSERT_TRUE(import() && exportIt()) << NameOf(way);
        const Files whole = FilesOf(folder_, L"out");
        bool failed = true;
        for (int k = 0; failed; ++k) {
            SCOPED_TRACE(NameOf(way) + ": only allocation " + std::to_string(k));
            for (const auto& [file, contents] : whole) RemoveFile(folder_ / JoinPath(L"out", file));
            const DebugLineCapture lines;
            FailOneAllocationAfter(k);
            const bool imported = import();
            EXPECT_EQ(session.panorama->IsEmpty() && imported, false);
            const bool exported = exportIt();
            FailAllocationsAfter(-1);
            failed = SawFailure(lines);
            EXPECT_NE(exported, !host.errors.empty()) << "one of them is told";
            for (const std::wstring& error : host.errors) {
                EXPECT_TRUE(error == L"Out of memory" || error.starts_with(L"Could not ")) << ToUtf8(error);
            }
            if (exported) {
                EXPECT_EQ(FilesOf(folder_, L"out").size(), whole.size());
            }
            EXPECT_FALSE(host.progressOpen);
        }
        ASSERT_TRUE(import() && exportIt()) << NameOf(way);
        EXPECT_TRUE(FilesOf(folder_, L"out") == whole) << NameOf(way);
        for (const auto& [file, contents] : whole) RemoveFile(folder_ / JoinPath(L"out", file));
    }
}

}  // namespace
}  // namespace skyvault::test
