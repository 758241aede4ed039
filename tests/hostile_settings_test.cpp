// Values no dialog would give, for every key a settings file has: whatever they are, every generator, export
// and view ends soon, in its usual size, and the settings can be saved and read again.
#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <limits>
#include <string_view>

#include "image/picture_files.h"
#include "image/random.h"
#include "platform/files.h"
#include "platform/utf8.h"
#include "session/batch.h"
#include "session/commands.h"
#include "session/conversion.h"
#include "settings/settings_file.h"
#include "settings/settings_table.h"
#include "tests/recording_host.h"
#include "tests/temporary_folder.h"
#include "tests/test_panorama.h"

namespace skyvault::test {
namespace {

using Ints = std::numeric_limits<std::int32_t>;
using Floats = std::numeric_limits<float>;

/// The hostile values of each type of field.
std::vector<std::int32_t> Hostile(std::int32_t) {
    return {Ints::min(), -1, 7, 1000, 2'000'000'000, Ints::max()};
}
std::vector<float> Hostile(float) {
    return {Floats::quiet_NaN(),
            Floats::infinity(),
            -Floats::infinity(),
            Floats::max(),
            Floats::lowest(),
            Floats::denorm_min(),
            -1.0f,
            0.0f};
}
std::vector<bool> Hostile(bool) {
    return {false, true};
}
std::vector<std::wstring> Hostile(const std::wstring&) {
    using namespace std::string_literals;
    return {L""s,       std::wstring(5000, L'x'),
            L"\0.png"s, L"\U0001F30D\xd83c?*|<>\".png"s,
            L"CON.png", L"/dev/zero",
            L"///\\\\", L"\t\r\n\t"};
}
std::vector<Color8> Hostile(const Color8&) {
    return {Color8(0, 0, 0, 0), Color8(255, 255, 255, 17)};
}
std::vector<ScreenRect> Hostile(const ScreenRect&) {
    return {{0, 0, 0, 0},
            {Ints::max(), Ints::max(), Ints::min(), Ints::min()},
            {Ints::min(), Ints::min(), Ints::max(), Ints::max()},
            {Ints::min(), Ints::min(), Ints::min(), Ints::min()}};
}

/// Runs try(settings, number of the value) for each of a key's values.
template <typename Try>
void ForHostileValues(const AppState& plain, const Setting& setting, Try tryOut) {
    std::visit(
        [&](auto field) {
            int number = 0;
            for (const auto& value : Hostile(plain.*field)) {
                AppState settings = plain;
                settings.*field = value;
                SCOPED_TRACE(ToUtf8(setting.key) + ", value " + std::to_string(number++));
                tryOut(settings);
            }
        },
        setting.field);
}

class HostileSettings : public testing::Test {
  protected:
    HostileSettings() {
        SetFixedSeed(3);
        plain_.resolution0 = plain_.resolution1 = plain_.resolution2 = 0;
        plain_.antialiasing = false;
        plain_.transparency = true;
        Image picture = RandomImage(16, 9, PixelFormat::Rgba8);
        picture_ = folder_ / L"picture.png";
        plain_.logo = picture_;
        EXPECT_TRUE(SavePicture(picture, picture_));
        EXPECT_TRUE(CreateFolder(folder_ / L"out"));
    }
    ~HostileSettings() override { ClearFixedSeed(); }

    std::wstring Output(const LayoutRow& layout) const {
        const wchar_t* const extension = layout.format == PanoramaFormat::DirectXDds    ? L".dds"
                                         : layout.format == PanoramaFormat::QuickTimeVr ? L".mov"
                                                                                        : L".bmp";
        return folder_ / (L"out/a" + std::wstring(extension));
    }

    const TemporaryFolder folder_;
    std::wstring picture_;
    AppState plain_;
};

bool ConcernsGenerators(std::wstring_view key) {
    for (const wchar_t* const start : {L"Voronoi", L"Blobs", L"Fractal", L"Lights", L"Polyhedra"}) {
        if (key.starts_with(start)) return true;
    }
    return key == L"Resolution0" || key == L"Transparency" || key == L"BackgroundColour";
}

TEST_F(HostileSettings, GeneratorsFillTheirFacesInTime) {
    for (const Setting& setting : SettingsTable()) {
        if (!ConcernsGenerators(setting.key)) continue;
        ForHostileValues(plain_, setting, [&](const AppState& settings) {
            for (const LayoutRow& layout : Layouts()) {
                if (layout.format < PanoramaFormat::Voronoi || layout.importFrom == nullptr) continue;
                RecordingFeedback feedback;
                Panorama panorama(feedback, settings, nullptr);
                const auto start = std::chrono::steady_clock::now();
                EXPECT_TRUE(layout.importFrom(panorama, {picture_})) << layout.consoleName;
                const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - start;
                EXPECT_LT(seconds.count(), 20) << layout.consoleName;
                for (const Image& face : panorama.faces) {
                    EXPECT_TRUE(face.IsValid() && face.width == 256 && face.height == 256)
                        << layout.consoleName;
                }
                EXPECT_TRUE(feedback.errors.empty()) << layout.consoleName;
            }
        });
    }
}

/// An export that is written with any settings, and what a window shows meanwhile.
TEST_F(HostileSettings, ExportsAndViewsKeepTheirSizes) {
    for (const Setting& setting : SettingsTable()) {
        const std::wstring_view key = setting.key;
        if (ConcernsGenerators(key) && !key.starts_with(L"Resolution") && key != L"BackgroundColour")
            continue;
        ForHostileValues(plain_, setting, [&](AppState settings) {
            RecordingHost host;
            host.clientSize = {90, 60};
            Session session{settings, host};
            host.answers = {picture_};
            ImportCommand(session, PanoramaFormat::Equirectangular);
            ASSERT_TRUE(session.panorama && !session.panorama->IsEmpty());
            session.panorama->modifications.logoSize = 0.5f;
            for (const LayoutRow& layout : Layouts()) {
                if (layout.exportTo == nullptr) continue;
                SCOPED_TRACE(layout.consoleName);
                for (const std::wstring& name : FindFiles(folder_ / L"out")) {
                    RemoveFile(folder_ / JoinPath(L"out", name));
                }
                Modifications keep = session.panorama->modifications;
                std::wstring infoLog;
                EXPECT_TRUE(layout.exportTo(*session.panorama, Output(layout), {}, infoLog));
                const std::size_t files = FindFiles(folder_ / L"out").size();
                EXPECT_EQ(files, layout.format == PanoramaFormat::SingleFiles ? 6u
                                 : layout.format == PanoramaFormat::Html ? FindFiles(folder_ / L"out").size()
                                                                         : 1u);
                EXPECT_LE(session.panorama->resultPicture.width, 1280u);
                if (layout.viewCommand == 0) continue;
                settings.view = static_cast<std::int32_t>(layout.format);
                host.shown.clear();
                Refresh(session);
                ASSERT_EQ(host.shown.size(), 1u);
                EXPECT_TRUE(host.shown[0].IsValid() && host.shown[0].width <= 90 &&
                            host.shown[0].height <= 60);
                session.panorama->modifications = keep;
            }
            // What the settings hold is saved and comes back as numbers.
            RemoveFile(folder_ / L"settings.txt");
            ASSERT_TRUE(SaveSettings(settings, folder_ / L"settings.txt", host));
            AppState loaded;
            LoadSettings(loaded, folder_ / L"settings.txt", {0, 0, 1600, 1200});
            EXPECT_TRUE(loaded.settingsLoaded);
            EXPECT_EQ(loaded.view, settings.view);
            for (const Setting& other : SettingsTable()) {
                if (const auto* number = std::get_if<float AppState::*>(&other.field)) {
                    EXPECT_TRUE(std::isfinite(loaded.**number)) << ToUtf8(other.key);
                }
            }
            const ScreenRect& window = loaded.windowRect;
            EXPECT_TRUE(window.left >= 0 && window.top >= 0 && window.right <= 1600 && window.bottom <= 1200);
            EXPECT_TRUE(window.right - window.left >= 320 && window.bottom - window.top >= 240);
        });
    }
}

TEST_F(HostileSettings, ModificationsAndCamerasOfAnySizeAreDrawn) {
    std::vector<float> values = Hostile(float{});
    values.push_back(1e10f);
    struct Row {
        const char* name;
        void (*set)(Modifications& modifications, Camera& camera, float value);
    };
    const Row rows[] = {
        {"horizon", [](Modifications& m, Camera&, float v) { m.horizonPower = v; }},
        {"logo", [](Modifications& m, Camera&, float v) { m.logoSize = v; }},
        {"turn", [](Modifications& m, Camera&, float v) { RotatePanorama(m, v, 0, v); }},
        {"camera", [](Modifications&, Camera& c, float v) { c.heading = c.pitch = c.roll = v; }},
    };
    for (const Row& row : rows) {
        for (const float value : values) {
            for (const bool cube : {false, true}) {
                SCOPED_TRACE(
                    std::string(row.name).append(cube ? ", cube, " : ", ").append(std::to_string(value)));
                TestPanorama t;
                t.settings = plain_;
                t.target.size = {90, 60};
                if (cube) {
                    t.SetFaces(8, PixelFormat::Rgb8);
                } else {
                    t.SetEquirectangular(RandomImage(32, 16, PixelFormat::Rgba16));
                }
                Camera camera;
                row.set(t.panorama.modifications, camera, value);
                for (const LayoutRow& layout : Layouts()) {
                    if (layout.viewCommand == 0) continue;
                    std::wstring infoLog;
                    EXPECT_TRUE(layout.exportTo(t.panorama, {}, camera, infoLog)) << layout.consoleName;
                }
            }
        }
    }
}

TEST_F(HostileSettings, ThePreviewNeverLosesItsWayBack) {
    RecordingHost host;
    AppState settings = plain_;
    settings.view = static_cast<std::int32_t>(PanoramaFormat::Preview);
    Session session{settings, host};
    host.clientSize = {90, 60};
    host.answers = {picture_};
    ImportCommand(session, PanoramaFormat::Equirectangular);
    for (int i = 0; i < 2000; ++i) {
        host.canShow = i > 1900;
        RunCommand(session, kCommandSmallerFov);
    }
    EXPECT_TRUE(std::isfinite(settings.previewFov));
    // So far away only one pixel is seen, and it is one of the picture's.
    const Image& seen = host.shown.back();
    const Color8 ahead = seen.GetPixel8(0, 0);
    EXPECT_FALSE(ahead == kOpaqueWhite);
    for (std::int32_t i = 1; i < static_cast<std::int32_t>(seen.height); ++i) {
        EXPECT_EQ(seen.GetPixel8(i, i), ahead);
    }
    const float before = settings.previewFov;
    RunCommand(session, kCommandBiggerFov);
    EXPECT_LT(settings.previewFov, before);
}

TEST_F(HostileSettings, ABatchWithoutANamingSystemLosesNoFace) {
    AppState settings = plain_;
    settings.fileNamingSystem = 77;
    ASSERT_TRUE(CreateFolder(folder_ / L"in"));
    Image picture = RandomImage(16, 8, PixelFormat::Rgb8);
    ASSERT_TRUE(SavePicture(picture, folder_ / L"in/a.bmp"));
    BatchJob job;
    job.to = PanoramaFormat::SingleFiles;
    job.sourceFolder = folder_ / L"in";
    job.destinationFolder = folder_ / L"out";
    job.extension = L"bmp";
    struct : BatchObserver {
        bool OnBegin(const BatchItem&, std::size_t, std::size_t) override { return true; }
        void OnEnd(const BatchItem&, BatchOutcome, const ConversionResult&) override {}
    } observer;
    const BatchPlan plan = PlanBatch(job, settings.fileNamingSystem);
    EXPECT_EQ(RunBatch(job, plan.items, false, settings, observer).converted, 1u);
    EXPECT_EQ(FindFiles(folder_ / L"out").size(), 6u);
    EXPECT_EQ(RunBatch(job, plan.items, true, settings, observer).skipped, 1u);
}

}  // namespace
}  // namespace skyvault::test
