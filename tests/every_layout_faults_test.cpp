// Every layout and generator with memory that runs out, places that are hard to write to or to read from, and
// settings no dialog would give: nothing crashes, what is reported as done is there and whole, and what is
// not done leaves an older file as it was.
#include <limits>

#include "platform/debug_line.h"
#include "session/messages.h"
#include "settings/settings_table.h"
#include "tests/layout_faults.h"

namespace skyvault::test {
namespace {

struct Way {
    const LayoutRow &from, &to;
    std::wstring extension;
};

/// The imports and generators, each with another layout to write; the polyhedra are all made alike.
std::vector<Way> Ways() {
    std::vector<Way> ways;
    const std::vector<const LayoutRow*> targets = WrittenLayouts();
    for (const LayoutRow& from : Layouts()) {
        if (from.import == nullptr || from.format > PanoramaFormat::Tetrahedron) continue;
        const bool isRead = from.kind == LayoutKind::Panorama;
        const LayoutRow& to = *targets[isRead ? (ways.size() + 3) % targets.size() : 5];
        ways.push_back({from, to, isRead ? LayoutFaults::Extension(to) : L".bmp"});
    }
    for (const std::size_t own : {1u, 2u}) {
        ways.push_back({Layouts()[0], *targets[own], LayoutFaults::Extension(*targets[own])});
    }
    return ways;
}

bool SawFailure(const DebugLineCapture& lines) {
    return lines.Text().find(L"out of memory exception") != std::wstring::npos;
}

/// The same picture but for the colours of what is transparent, which bleeding gives it if it has memory.
bool LooksLike(const TemporaryFolder& folder, const std::string& a, const std::string& b) {
    Image one, other;
    if (!LoadPicture(folder.Write(L"one.png", a), one).IsDone() || !HasAlpha(one.format)) return false;
    if (!LoadPicture(folder.Write(L"other.png", b), other).IsDone()) return false;
    one.FlattenAlpha(kOpaqueWhite);
    other.FlattenAlpha(kOpaqueWhite);
    return SameBytes(one, other);
}

TEST_F(LayoutFaults, MemoryThatRunsOutLeavesWholeFilesOrTheOlderOnes) {
    int number = 0;
    for (const Way& way : Ways()) {
        // Every third way draws a logo, every second is antialiased. Without alpha bleeding would show.
        t.settings.transparency = ++number % 3 == 0 && way.extension == L".png";
        t.settings.antialiasing = number % 2 == 0;
        Conversion conversion{&way.from, Sources(way.from), &way.to, JoinPath(out, L"b" + way.extension), {},
                              {}};
        conversion.modifications.logoSize = t.settings.transparency ? 0.5f : 0.0f;
        const auto convert = [&](const AppState& settings) {
            const ConversionResult result = ConvertPanorama(conversion, settings, t.feedback);
            EXPECT_TRUE(result.outcome.IsDone() || !LineOf(result.outcome).empty());
            return result;
        };
        EmptyOutput();
        ASSERT_TRUE(convert(t.settings).outcome.IsDone());
        const auto whole = Written();
        // A logo that cannot be read is done without.
        AppState plain = t.settings;
        plain.logo.clear();
        ASSERT_TRUE(convert(plain).outcome.IsDone());
        const auto plainer = Written();
        bool failed = true;
        for (int k = 0; failed || k % 2 == 1; ++k) {
            SCOPED_TRACE(std::string(way.from.consoleName) + " to " + way.to.consoleName + ": allocation " +
                         std::to_string(k / 2) + (k % 2 == 0 ? " only" : " and all after it"));
            for (const auto& [file, contents] : whole) folder.Write(JoinPath(L"out", file), "old");
            const DebugLineCapture lines;
            k % 2 == 0 ? FailOneAllocationAfter(k / 2) : FailAllocationsAfter(k / 2);
            const ConversionResult result = convert(t.settings);
            if (way.to.render) {
                const Outcome view = RenderView(way.to, {90, 60}, {}, t.settings, t.feedback, t.panorama);
                EXPECT_TRUE(view.IsDone() || view.reason == Reason::NoMemory);
            }
            FailAllocationsAfter(-1);
            failed = SawFailure(lines);
            const bool done = result.outcome.IsDone();
            EXPECT_TRUE(failed ? k < 200 : done && k > 4);
            EXPECT_TRUE(temporary.Empty());
            EXPECT_EQ(Written().size(), whole.size()) << "a file is left over";
            if (!result.troubles.empty()) continue;  // which is told; they are white
            for (const auto& [file, contents] : Written()) {
                const bool isOld = contents == "old" && !done;
                EXPECT_TRUE(isOld || contents == whole.at(file) || contents == plainer.at(file) ||
                            LooksLike(folder, contents, whole.at(file)) ||
                            LooksLike(folder, contents, plainer.at(file)))
                    << ToUtf8(file) << " after: " << ToUtf8(LineOf(result.outcome));
            }
        }
    }
}

TEST_F(LayoutFaults, APlaceThatTakesNoFileIsToldAndStaysAsItIs) {
    folder.Write(L"file.txt", "a file");
    for (const LayoutRow* const layout : WrittenLayouts()) {
        const std::wstring name = L"x" + Extension(*layout);
        const std::wstring taken = FilesFor(*layout, JoinPath(out, name)).front();
        ASSERT_TRUE(CreateFolder(taken));
        const std::wstring places[] = {
            JoinPath(out, name),
            JoinPath(folder / L"none", name),
            JoinPath(folder / L"file.txt", name),
            JoinPath(out, std::wstring(300, L'y') + Extension(*layout)),
#ifndef _WIN32
            L"/proc/" + name,  // takes none from anybody
#endif
        };
        for (const std::wstring& place : places) {
            SCOPED_TRACE(std::string(layout->consoleName) + " " + ToUtf8(place));
            const Outcome outcome = Export(*layout, place);
            EXPECT_EQ(outcome.reason, Reason::CannotWrite);
            EXPECT_EQ(outcome.file, FilesFor(*layout, place).front());
            EXPECT_TRUE(outcome.infoLog.empty());
            // The page and its companions are written whatever becomes of the picture.
            if (layout->kind == LayoutKind::Page) EmptyOutput();
            EXPECT_EQ(FindFiles(out).size(), 1u);
            EXPECT_EQ(folder.Read(L"file.txt"), "a file");
        }
        ASSERT_TRUE(RemoveEmptyFolder(taken));
    }
}

TEST_F(LayoutFaults, NamesOfEveryKindAreWrittenAndReadAgain) {
    std::wstring deep = out;
    while (deep.size() < 400) deep = JoinPath(deep, std::wstring(60, L'd'));
    ASSERT_TRUE(CreateFolder(deep));
    const std::wstring names[] = {
        JoinPath(out, L"\U0001F30D\u200D\U0001F525 \u05E9\u0301"),
        JoinPath(out, L"%s%n 100% 'a' ;rm -- -x"),
        JoinPath(out, L"two.dots..and more"),
        JoinPath(out, std::wstring(120, L'n')),
        JoinPath(deep, L"p"),
    };
    for (const LayoutRow* const layout : WrittenLayouts()) {
        for (const std::wstring& name : names) {
            const std::wstring path = WithExportPrefix(*layout, name + Extension(*layout));
            SCOPED_TRACE(std::string(layout->consoleName) + " " + ToUtf8(path));
            EXPECT_TRUE(Export(*layout, path).IsDone());
            if (layout->import == nullptr) continue;
            Panorama again;
            const std::vector<std::wstring> files = FilesFor(*layout, path);
            EXPECT_TRUE(ImportPanorama(*layout, files, t.settings, t.feedback, again).IsDone());
            EXPECT_FALSE(again.IsEmpty());
        }
    }
}

TEST_F(LayoutFaults, WhatCannotBeReadIsNamed) {
    const std::wstring paths[] = {folder / L"none.png", folder / L"none/none.mov", out, L"",
                                  folder.Write(L"empty.png", ""), folder.Write(L"text.dds", "DDS, a text"),
                                  folder.Write(L"text.mov", "no movie"), JoinPath(out, L"NUL"),
                                  // Devices.
                                  L"NUL", L"CON.tga", L"NUL.png", L"con.dds", L"/dev/zero", L"/dev/stdin"};
    const DebugLineCapture quiet;
    for (const LayoutRow& layout : Layouts()) {
        // Generators do without their picture.
        if (layout.import == nullptr || layout.kind == LayoutKind::Generator) continue;
        for (const std::wstring& path : paths) {
            SCOPED_TRACE(std::string(layout.consoleName) + " " + ToUtf8(path));
            Panorama panorama;
            const std::vector<std::wstring> files(static_cast<std::size_t>(layout.sources), path);
            const Outcome outcome = ImportPanorama(layout, files, t.settings, t.feedback, panorama);
            EXPECT_EQ(outcome.file, path);
            EXPECT_TRUE(outcome.reason == Reason::CannotOpen || outcome.reason == Reason::NotACubicMovie);
            EXPECT_TRUE(panorama.IsEmpty());
        }
    }
#ifdef _WIN32
    for (const wchar_t* const name : {L"NUL.png", L"CON.png", L"com1.png"}) {
        Image read;
        const bool done = Export(*FindLayout(PanoramaFormat::Equirectangular), JoinPath(out, name)).IsDone();
        EXPECT_EQ(done, FileExists(JoinPath(out, name)) && LoadPicture(JoinPath(out, name), read).IsDone())
            << ToUtf8(name) << ": what is told is what is there";
    }
#endif
    EXPECT_TRUE(temporary.Empty());
}

using Ints = std::numeric_limits<std::int32_t>;

/// The hostile values of each type of field.
std::vector<std::int32_t> Hostile(std::int32_t) {
    return {Ints::min(), -1, 7, 1000, Ints::max()};
}
std::vector<float> Hostile(float) {
    using Limits = std::numeric_limits<float>;
    const float infinity = Limits::infinity();
    return {Limits::quiet_NaN(), infinity, -infinity, Limits::max(), Limits::denorm_min(), -1e10f, -1, 0};
}
std::vector<bool> Hostile(bool) {
    return {false, true};
}
std::vector<std::wstring> Hostile(const std::wstring&) {
    using namespace std::string_literals;
    return {L""s,          std::wstring(5000, L'x'), L"\0.png"s, L"\U0001F30D\xd83c?*|<>\".png"s, L"CON.png"s,
            L"/dev/zero"s, L"///\\\\\t\r\n\t"s};
}
std::vector<Color8> Hostile(const Color8&) {
    return {Color8(0, 0, 0, 0), Color8(255, 255, 255, 17)};
}
std::vector<ScreenRect> Hostile(const ScreenRect&) {
    return {{0, 0, 0, 0},
            {Ints::max(), Ints::max(), Ints::min(), Ints::min()},
            {Ints::min(), Ints::min(), Ints::max(), Ints::max()}};
}

/// Calls tryOut(key, settings, field) for each of the values of each key.
template <typename Try>
void ForHostileValues(const AppState& plain, Try tryOut) {
    for (const Setting& setting : SettingsTable()) {
        SCOPED_TRACE(ToUtf8(setting.key));
        const auto tryValues = [&](auto field) {
            for (const auto& value : Hostile(plain.*field)) {
                AppState settings = plain;
                settings.*field = value;
                tryOut(std::wstring_view(setting.key), settings, &(settings.*field));
            }
        };
        std::visit(tryValues, setting.field);
    }
}

TEST_F(LayoutFaults, HostileSettingsOfGeneratorsFillTheirFaces) {
    using enum PanoramaFormat;
    const std::pair<const wchar_t*, PanoramaFormat> readers[] = {
        {L"Voronoi", Voronoi},       {L"Blobs", Blobs},        {L"Blobs", Rectangles},
        {L"Fractal", FractalPlanet}, {L"Lights", DotsOfLight}, {L"Polyhedra", Hexahedron},
        {L"Polyhedra", Football},    {L"Resolution0", Voronoi}};
    const std::vector<std::wstring> sources = Sources(*FindLayout(Voronoi));
    t.settings.transparency = true;
    ForHostileValues(t.settings, [&](std::wstring_view key, const AppState& settings, const void*) {
        for (const auto& [start, format] : readers) {
            if (!key.starts_with(start)) continue;
            Panorama panorama;
            EXPECT_TRUE(
                ImportPanorama(*FindLayout(format), sources, settings, t.feedback, panorama).IsDone());
            for (const Image& face : panorama.faces) EXPECT_TRUE(face.width == 256 && face.height == 256);
        }
    });
}

TEST_F(LayoutFaults, HostileSettingsMakeNoDifferenceToSizes) {
    t.SetEquirectangular(RandomImage(16, 9, PixelFormat::Rgba8));
    t.panorama.modifications.logoSize = 0.5f;
    t.settings.transparency = true;
    ForHostileValues(t.settings, [&](std::wstring_view, AppState& settings, const void* field) {
        const ExportSettings* const read = &settings;
        for (const LayoutRow* const layout : WrittenLayouts()) {
            if (field < read || field >= read + 1) break;
            SCOPED_TRACE(layout->consoleName);
            EmptyOutput();
            const std::wstring extension = layout->ownExtension ? Extension(*layout) : L".bmp";
            t.panorama.logoPicture.Clear();
            static_cast<void>(LoadLogo(t.panorama, settings));
            const std::wstring path = JoinPath(out, L"a" + extension);
            EXPECT_TRUE(ExportPanorama(*layout, path, {}, settings, t.feedback, t.panorama).IsDone());
            if (layout->kind != LayoutKind::Page) {
                EXPECT_EQ(Written().size(), static_cast<std::size_t>(layout->sources));
            }
            EXPECT_LE(t.panorama.resultPicture.width, 1280u);
            if (layout->render == nullptr) continue;
            EXPECT_TRUE(RenderView(*layout, {90, 60}, {}, settings, t.feedback, t.panorama).IsDone());
            const Image& view = t.panorama.resultPicture;
            EXPECT_TRUE(view.IsValid() && view.width <= 90 && view.height <= 60);
        }
    });
}

TEST_F(LayoutFaults, HostileModificationsAndCamerasAreDrawn) {
    std::vector<float> values = Hostile(float{});
    values.push_back(1e10f);
    for (const float value : values) {
        for (int way = 0; way < 8; ++way) {
            SCOPED_TRACE(std::to_string(way) + ": " + std::to_string(value));
            TestPanorama own;
            Modifications& m = own.panorama.modifications;
            if (way % 4 == 0) m.horizonPower = value;
            if (way % 4 == 1) m.logoSize = value;
            if (way % 4 == 2) RotatePanorama(m, value, 0, value);
            const Camera camera = way % 4 == 3 ? Camera{value, value, value} : Camera();
            own.SetFaces(8, PixelFormat::Rgb8);
            if (way >= 4) own.SetEquirectangular(RandomImage(32, 16, PixelFormat::Rgba16));
            for (const LayoutRow* const layout : WrittenLayouts()) {
                EXPECT_TRUE(
                    !layout->render ||
                    RenderView(*layout, {9, 60}, camera, t.settings, t.feedback, own.panorama).IsDone());
            }
        }
    }
}

}  // namespace
}  // namespace skyvault::test
