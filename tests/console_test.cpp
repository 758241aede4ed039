// The console program as its user meets it: started with arguments, looked at from outside.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "image/dds_cube_map.h"
#include "image/picture_files.h"
#include "platform/files.h"
#include "platform/utf8.h"
#include "session/import_panorama.h"
#include "session/layouts.h"
#include "settings/settings_file.h"
#include "tests/child_process.h"
#include "tests/temporary_folder.h"
#include "tests/test_panorama.h"

namespace skyvault::test {
namespace {

using Arguments = std::vector<std::wstring>;

/// "convert --from equirectangular --to LAYOUT ..."
Arguments Convert(const std::wstring& to, const Arguments& more) {
    Arguments all = {L"convert", L"--from", L"equirectangular", L"--to", to};
    all.insert(all.end(), more.begin(), more.end());
    return all;
}

ProgramResult RunConvert(const std::wstring& to, const Arguments& more) {
    return RunConsole(Convert(to, more));
}

/// Random pixels, none of them fully transparent: those lose their colour when they are written.
Image VisiblePicture(std::uint32_t width, std::uint32_t height, PixelFormat format) {
    Image image = RandomImage(width, height, format);
    const std::size_t size = BytesPerPixel(format);
    if (!HasAlpha(format)) return image;
    for (std::size_t i = size - 1; i < image.ByteCount(); i += size) image.pixels[i] |= std::byte{1};
    return image;
}

std::wstring Save(Image image, const std::wstring& path) {
    EXPECT_TRUE(SavePicture(image, path)) << ToUtf8(path);
    return path;
}

std::vector<std::wstring> Names(const TemporaryFolder& folder) {
    std::vector<std::wstring> names = FindFiles(folder.Path());
    std::sort(names.begin(), names.end());
    return names;
}

std::ptrdiff_t Lines(const std::string& text) {
    return std::count(text.begin(), text.end(), '\n');
}

/// An equirectangular export without any modification: every row but the nadir's reads the source's row
/// below it, for the exported grid begins one step from the zenith.
bool IsUnmodifiedExport(const Image& output, const Image& source) {
    if (output.width != source.width || output.height != source.height || output.format != source.format)
        return false;
    return std::memcmp(output.Row(0), source.Row(1), std::size_t{source.stride} * (source.height - 1)) == 0;
}

TEST(Console, ConvertingKeepsThePixelFormat) {
    const struct {
        PixelFormat format;
        const wchar_t* extension;
    } rows[] = {
        {PixelFormat::Grey8, L"png"},  {PixelFormat::Rgb8, L"png"},   {PixelFormat::Rgba8, L"png"},
        {PixelFormat::Grey16, L"png"}, {PixelFormat::Rgb16, L"png"},  {PixelFormat::Rgba16, L"png"},
        {PixelFormat::Grey8, L"tif"},  {PixelFormat::Rgb8, L"tif"},   {PixelFormat::Rgba8, L"tif"},
        {PixelFormat::Rgb16, L"tif"},  {PixelFormat::Rgba16, L"tif"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(ToUtf8(FormatName(row.format)) + " " + ToUtf8(row.extension));
        const TemporaryFolder folder;
        const Image drawn = VisiblePicture(64, 32, row.format);
        const std::wstring input = Save(drawn.CopyRect(), folder / (std::wstring(L"in.") + row.extension));
        const std::wstring output = folder / (std::wstring(L"out.") + row.extension);

        const Arguments flat = {L"--set", L"Transparency=Y", L"--set", L"Antialiasing=N", input, output};
        ProgramResult result = RunConvert(L"equirectangular", flat);
        EXPECT_EQ(result.exitStatus, 0) << result.err;
        EXPECT_TRUE(IsUnmodifiedExport(LoadPicture(output), drawn));

        result = RunConvert(L"preview", flat);
        EXPECT_EQ(result.exitStatus, 0) << result.err;
        const Image view = LoadPicture(output);
        ASSERT_TRUE(view.IsValid());
        EXPECT_EQ(view.width, 1280u);
        EXPECT_EQ(view.height, 720u);
        EXPECT_EQ(view.format, row.format);
        EXPECT_EQ(
            std::memcmp(view.PixelAddress(640, 360), drawn.PixelAddress(32, 16), BytesPerPixel(row.format)),
            0);
    }
}

TEST(Console, TheSameSeedGeneratesTheSamePicture) {
    const TemporaryFolder folder;
    const std::wstring palette = Save(RandomImage(16, 16, PixelFormat::Rgb8), folder / L"palette.png");
    const auto generate = [&](const wchar_t* kind, const std::wstring& from, const wchar_t* seed) {
        return RunConsole({L"generate", kind, L"--palette", from, L"--seed", seed, L"--to", L"strip",
                           L"--set", L"Resolution0=0", L"--set", L"Antialiasing=N", folder / L"out.png"});
    };
    std::vector<Image> made;
    for (const wchar_t* const seed : {L"7", L"7", L"8"}) {
        const ProgramResult result = generate(L"voronoi", palette, seed);
        EXPECT_EQ(result.exitStatus, 0) << result.err;
        made.push_back(LoadPicture(folder / L"out.png"));
        EXPECT_EQ(made.back().width, 6u * 256);
    }
    EXPECT_TRUE(SameBytes(made[0], made[1]));
    EXPECT_FALSE(SameBytes(made[0], made[2]));
    const ProgramResult result = generate(L"blobs", folder / L"none.png", L"7");
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_NE(result.err.find("none.png"), std::string::npos) << result.err;
}

TEST(Console, TheWrittenFileIsDescribedOnStdoutAndNothingElseIsSaid) {
    const TemporaryFolder folder;
    const std::wstring input = Save(RandomImage(2048, 1024, PixelFormat::Rgb8), folder / L"in.bmp");
    const std::wstring output = folder / L"\x4e2d\x00fc out.png";
    const Arguments arguments = {L"--set", L"Resolution1=0", input, output};
    ProgramResult result = RunConvert(L"equirectangular", arguments);
    EXPECT_EQ(result.exitStatus, 0);
    EXPECT_EQ(result.out, ToUtf8(PictureInfo(output, 256, 128, PixelFormat::Rgb8)));
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(Names(folder), (Arguments{L"in.bmp", L"\x4e2d\x00fc out.png"}));

    Arguments quiet = arguments;
    quiet.insert(quiet.begin(), L"--quiet");
    result = RunConvert(L"equirectangular", quiet);
    EXPECT_EQ(result.exitStatus, 0);
    EXPECT_EQ(result.out + result.err, "");
}

TEST(Console, ASmallerSourceIsToldOfInOneLine) {
    const TemporaryFolder folder;
    const std::wstring input = Save(RandomImage(64, 32, PixelFormat::Rgb8), folder / L"in.bmp");
    const ProgramResult result = RunConvert(L"equirectangular", {input, folder / L"out.png"});
    EXPECT_EQ(result.exitStatus, 0);
    EXPECT_EQ(Lines(result.err), 1) << result.err;
    EXPECT_NE(result.err.find("64 x 32"), std::string::npos) << result.err;
}

TEST(Console, EveryModificationReachesThePanorama) {
    const TemporaryFolder folder;
    const std::wstring input = Save(RandomImage(64, 32, PixelFormat::Rgb8), folder / L"in.bmp");
    const std::wstring logo = Save(RandomImage(16, 16, PixelFormat::Rgb8, 5), folder / L"logo.bmp");
    AppState settings;
    settings.antialiasing = false;
    settings.logo = logo;

    const struct {
        Arguments arguments;
        void (*modify)(Modifications&);
    } rows[] = {
        {{L"--turn", L"90,0,0"}, [](Modifications& m) { RotatePanorama(m, 90 * kPi / 180, 0, 0); }},
        {{L"--turn", L"-30,20,0", L"--turn", L"0,0,45"},
         [](Modifications& m) {
             RotatePanorama(m, -30 * kPi / 180, 20 * kPi / 180, 0);
             RotatePanorama(m, 0, 0, 45 * kPi / 180);
         }},
        {{L"--horizon", L"1.3"}, [](Modifications& m) { m.horizonPower = 1.3f; }},
        {{L"--logo-size", L"0.5"}, [](Modifications& m) { m.logoSize = 0.5f; }},
        {{L"--flip-horizontal"}, [](Modifications& m) { m.flipHorizontal = true; }},
        {{L"--mirror-top-to-bottom"}, [](Modifications& m) { m.mirrorTopToBottom = true; }},
        {{L"--mirror-front-to-back"}, [](Modifications& m) { m.mirrorFrontToBack = true; }},
        {{}, [](Modifications&) {}},
    };
    std::vector<Image> seen;
    for (const auto& row : rows) {
        SCOPED_TRACE(row.arguments.empty() ? "none" : ToUtf8(row.arguments.front()));
        const std::wstring output = folder / L"out.bmp";
        Arguments arguments = {L"--set", L"Antialiasing=N", L"--set", L"Logo=" + logo};
        arguments.insert(arguments.end(), row.arguments.begin(), row.arguments.end());
        arguments.insert(arguments.end(), {input, output});
        EXPECT_EQ(RunConvert(L"equirectangular", arguments).exitStatus, 0);

        RecordingFeedback feedback;
        Panorama panorama(feedback, settings, nullptr);
        ImportPanorama(panorama, {input}, PanoramaFormat::Equirectangular);
        row.modify(panorama.modifications);
        std::wstring infoLog;
        const std::wstring expected = folder / L"expected.bmp";
        ASSERT_TRUE(FindLayout(PanoramaFormat::Equirectangular)->exportTo(panorama, expected, {}, infoLog));
        seen.push_back(LoadPicture(output));
        EXPECT_TRUE(SameBytes(seen.back(), LoadPicture(expected)));
        for (std::size_t i = 0; i + 1 < seen.size(); ++i) EXPECT_FALSE(SameBytes(seen[i], seen.back())) << i;
    }
}

TEST(Console, SettingsComeFromDefaultsThenTheFileThenTheCommandLine) {
    const TemporaryFolder folder;
    const std::wstring input = Save(RandomImage(64, 32, PixelFormat::Rgb8), folder / L"in.bmp");
    const std::wstring output = folder / L"out.bmp";
    const std::wstring file = folder / L"my settings.txt";
    AppState settings;
    settings.resolution3 = 1;
    RecordingFeedback feedback;
    ASSERT_TRUE(SaveSettings(settings, file, feedback));

    const struct {
        Arguments arguments;
        std::uint32_t width;
    } rows[] = {
        {{}, 1280},
        {{L"--settings", file}, 1920},
        {{L"--set", L"Resolution3=2", L"--settings", file}, 3840},
        {{L"--set", L"Resolution3=2", L"--set", L"Resolution3=1"}, 1920},
    };
    for (const auto& row : rows) {
        Arguments arguments = row.arguments;
        arguments.insert(arguments.end(), {input, output});
        EXPECT_EQ(RunConvert(L"preview", arguments).exitStatus, 0);
        EXPECT_EQ(LoadPicture(output).width, row.width);
    }
}

TEST(Console, SettingsOfEveryTypeTakeEffect) {
    const TemporaryFolder folder;
    Image clear(64, 32, PixelFormat::Rgba8);
    clear.Fill(ReadPixel(PixelFormat::Rgba8, std::vector<std::byte>(4).data()));
    const std::wstring input = Save(std::move(clear), folder / L"in.png");
    const std::wstring output = folder / L"out.png";
    const auto middle = [&](const Arguments& more) {
        Arguments arguments = more;
        arguments.insert(arguments.end(), {input, output});
        EXPECT_EQ(RunConvert(L"preview", arguments).exitStatus, 0);
        return LoadPicture(output).GetPixel8(640, 360);
    };
    EXPECT_EQ(middle({}), Color8(255, 255, 255, 255));
    EXPECT_EQ(middle({L"--set", L"BackgroundColour=10,20,30"}), Color8(10, 20, 30, 255));
    EXPECT_EQ(middle({L"--set", L"Transparency=Y"}).alpha, 0);

    // The camera looks at the nadir: a long focal length sees nothing but the logo's colour.
    Image red(4, 4, PixelFormat::Rgb8);
    red.Fill(PixelValue{});
    for (int i = 0; i < 16; ++i) red.SetPixel(i % 4, i / 4, Color8(200, 0, 0, 255));
    const std::wstring logo = Save(std::move(red), folder / L"logo.bmp");
    middle({L"--camera", L"0,90,0", L"--logo-size", L"0.2", L"--set", L"Logo=" + logo});
    EXPECT_EQ(LoadPicture(output).GetPixel8(0, 0), Color8(255, 255, 255, 255));
    middle({L"--camera", L"0,90,0", L"--logo-size", L"0.2", L"--set", L"Logo=" + logo, L"--set",
            L"PreviewFOV=5"});
    EXPECT_EQ(LoadPicture(output).GetPixel8(0, 0), Color8(200, 0, 0, 255));
}

TEST(Console, FailuresSayWhyInOneLineAndLeaveNothingBehind) {
    const TemporaryFolder folder;
    const std::wstring input = Save(RandomImage(64, 32, PixelFormat::Rgb8), folder / L"in.png");
    const std::wstring older = Save(RandomImage(8, 4, PixelFormat::Rgb8), folder / L"older.png");
    const std::string olderBytes = folder.Read(L"older.png");
    const std::wstring cut = folder.Write(L"cut.png", folder.Read(L"in.png").substr(0, 700));
    const std::wstring text = folder.Write(L"text.jpg", "no picture");
    const std::wstring noCube = folder.Write(L"no.dds", "no cube map");
    ASSERT_TRUE(CreateFolder(folder / L"sub"));
    const std::wstring missing = folder / L"missing.png";
    const std::wstring longName = folder / (std::wstring(280, L'x') + L".png");

    struct Row {
        Arguments arguments;
        std::wstring named;
    };
    const std::vector<Row> rows = {
        {Convert(L"preview", {missing, older}), missing},
        {Convert(L"preview", {folder.Path(), older}), folder.Path()},
        {Convert(L"preview", {cut, older}), cut},
        {Convert(L"preview", {text, older}), text},
        {Convert(L"preview", {input, folder / L"sub"}), L"folder"},
        {Convert(L"preview", {input, folder / L"none" + std::wstring(1, kPathSeparator) + L"out.png"}),
         L"none"},
        {Convert(L"preview", {input, folder / L"out.webp"}), L"out.webp"},
        {Convert(L"preview", {input, folder / L"png"}), L"png"},
        {Convert(L"dds", {input, folder / L"out.png"}), L"out.png"},
        {Convert(L"preview", {noCube, older}), noCube},
        {{L"info", noCube}, noCube},
        {Convert(L"equirectangular", {L"--set", L"Antialiasing=N", input, longName}), longName},
        {Convert(L"preview", {L"--settings", missing, input, older}), missing},
        {{L"info", missing}, missing},
        {{L"info", text}, text},
    };
    const Arguments before = Names(folder);
    for (const Row& row : rows) {
        SCOPED_TRACE(ToUtf8(row.named));
        const ProgramResult result = RunConsole(row.arguments);
        EXPECT_EQ(result.exitStatus, 1);
        EXPECT_EQ(result.out, "");
        EXPECT_EQ(result.err.rfind("skyvault-cli: ", 0), 0u) << result.err;
        // A source too small for the chosen size is mentioned before the failure.
        const std::string last = result.err.substr(result.err.rfind("skyvault-cli: "));
        EXPECT_EQ(Lines(last), 1) << result.err;
        EXPECT_LE(Lines(result.err), 2) << result.err;
        EXPECT_NE(last.find(ToUtf8(row.named)), std::string::npos) << result.err;
        EXPECT_EQ(Names(folder), before);
        EXPECT_EQ(folder.Read(L"older.png"), olderBytes);
    }
}

/// "convert --from single-files --to LAYOUT ..."
Arguments ConvertSix(const std::wstring& to, const Arguments& files, const std::wstring& output) {
    Arguments all = {L"convert", L"--from", L"single-files", L"--to", to};
    all.insert(all.end(), files.begin(), files.end());
    all.push_back(output);
    return all;
}

TEST(Console, SingleFilesAreWrittenBesideTheOutputsNameAndReadAgain) {
    const TemporaryFolder folder;
    const std::wstring input = Save(RandomImage(64, 32, PixelFormat::Rgb16), folder / L"in.png");
    ProgramResult result =
        RunConvert(L"single-files", {L"--set", L"FileNamingSystem=5", input, folder / L"room.png"});
    EXPECT_EQ(result.exitStatus, 0) << result.err;
    std::string described;
    Arguments files, names = {L"in.png"};
    for (int f = 0; f < 6; ++f) {
        names.push_back(L"room" + std::to_wstring(f) + L".png");
        files.push_back(folder / names.back());
        described += ToUtf8(PictureInfo(files.back(), 16, 16, PixelFormat::Rgb16));
    }
    EXPECT_EQ(result.out, described);
    EXPECT_EQ(Names(folder), names);

    // What cannot be read is told of, and white.
    files[3] = folder / L"missing.png";
    result = RunConsole(ConvertSix(L"strip", files, folder / L"strip.png"));
    EXPECT_EQ(result.exitStatus, 0) << result.err;
    EXPECT_NE(result.err.find("missing.png\"; there is no left face\n"), std::string::npos) << result.err;
    const Image strip = LoadPicture(folder / L"strip.png");
    ASSERT_EQ(strip.width, 96u);
    EXPECT_EQ(strip.format, PixelFormat::Rgb16);
    EXPECT_EQ(strip.GetPixel16(3 * 16 + 8, 8), Color16(65535, 65535, 65535, 65535));
    EXPECT_EQ(strip.GetPixel16(16, 0), LoadPicture(files[1]).GetPixel16(0, 0));
}

TEST(Console, SingleFilesFailWithTheReason) {
    const TemporaryFolder folder;
    const std::wstring input = Save(RandomImage(64, 32, PixelFormat::Rgb8), folder / L"in.png");
    ASSERT_TRUE(CreateFolder(folder / L"room_left.png"));
    const std::wstring missing = folder / L"missing.png", separator(1, kPathSeparator);
    const Arguments noFront = {missing, input, input, input, input, input};
    const struct {
        Arguments arguments;
        const char* reason;
    } rows[] = {
        {ConvertSix(L"strip", noFront, folder / L"out.png"), "there is no front face"},
        {ConvertSix(L"single-files", noFront, folder / L"out.png"), "there is no front face"},
        {ConvertSix(L"strip", Arguments(6, missing), folder / L"out.png"), "Could not open"},
        {Convert(L"single-files", {input, folder / L"room.png"}), "room_left.png\": it is a folder"},
        {Convert(L"single-files", {input, folder / L"none" + separator + L"room.png"}), "no folder"},
        {Convert(L"single-files", {input, folder / L"room.xyz"}), "extension"},
        {Convert(L"single-files", {input, folder.Path()}), "it is a folder"},
        {Convert(L"single-files", {L"--set", L"FileNamingSystem=6", input, folder / L"x.png"}), "0 to 5"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.reason);
        const ProgramResult result = RunConsole(row.arguments);
        EXPECT_EQ(result.exitStatus, 1);
        EXPECT_EQ(result.out, "");
        const std::string last = result.err.substr(result.err.rfind("skyvault-cli: "));
        EXPECT_EQ(Lines(last), 1) << result.err;
        EXPECT_NE(last.find(row.reason), std::string::npos) << result.err;
        EXPECT_EQ(folder.FileCount(), 2u);
    }
}

TEST(Console, WrongUsageHelpAndVersionHaveTheirExitStatusAndStream) {
    const struct {
        Arguments arguments;
        int exitStatus;
        const char* out;
        const char* err;
    } rows[] = {
        {{L"--version"}, 0, "skyvault-cli ", ""},
        {{L"--help"}, 0, "convert", ""},
        {{L"convert", L"--help"}, 0, "--turn", ""},
        {{L"info", L"--help"}, 0, "FILE", ""},
        {{}, 2, "", "--help"},
        {{L"convert", L"a", L"b"}, 2, "", "--help"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.arguments.empty() ? "" : ToUtf8(row.arguments.front()));
        const ProgramResult result = RunConsole(row.arguments);
        EXPECT_EQ(result.exitStatus, row.exitStatus);
        EXPECT_EQ(result.out.empty(), row.exitStatus != 0) << result.out;
        EXPECT_EQ(result.err.empty(), row.exitStatus == 0) << result.err;
        EXPECT_NE(result.out.find(row.out), std::string::npos) << result.out;
        EXPECT_NE(result.err.find(row.err), std::string::npos) << result.err;
    }
}

TEST(Console, InfoDescribesThePictureAndItsPanorama) {
    const TemporaryFolder folder;
    const std::wstring path = Save(VisiblePicture(403, 10, PixelFormat::Rgba8), folder / L"\x00e4 b.png");
    const ProgramResult result = RunConsole({L"info", path});
    EXPECT_EQ(result.exitStatus, 0) << result.err;
    EXPECT_EQ(result.out, ToUtf8(PictureInfo(path, 403, 10, PixelFormat::Rgba8)) +
                              "Frames\t\t1\nPanorama\tfaces 100 x 100\n");
}

TEST(Console, DdsCubeMapsAreWrittenDescribedAndReadBack) {
    const TemporaryFolder folder;
    const std::wstring input = Save(RandomImage(1024, 512, PixelFormat::Rgb16), folder / L"in.png");
    const std::wstring cube = folder / L"out.DDS", flat = folder / L"flat.png";
    ProgramResult result = RunConvert(L"dds", {L"--set", L"Resolution0=0", input, cube});
    EXPECT_EQ(result.exitStatus, 0) << result.err;
    EXPECT_EQ(result.out, ToUtf8(CubeMapInfo(cube, 256, PixelFormat::Rgb16)));
    EXPECT_EQ(Names(folder), (Arguments{L"in.png", L"out.DDS"})) << "no prefix is added";

    // Every DDS cube map has four channels.
    result = RunConsole({L"info", cube});
    EXPECT_EQ(result.exitStatus, 0) << result.err;
    EXPECT_EQ(result.out, ToUtf8(CubeMapInfo(cube, 256, PixelFormat::Rgba16)));

    result = RunConvert(L"equirectangular", {L"--set", L"Resolution1=0", cube, flat});
    EXPECT_EQ(result.exitStatus, 0) << result.err;
    EXPECT_EQ(result.err, "skyvault-cli: \"out.DDS\" is a cubemap. Now switching to cubemap.\n");
    EXPECT_EQ(LoadPicture(flat).format, PixelFormat::Rgba16);
}

TEST(Console, AnyNumberOfThreadsWritesTheSameFile) {
    const TemporaryFolder folder;
    const std::wstring input = Save(RandomImage(2048, 1024, PixelFormat::Rgb8), folder / L"in.bmp");
    for (const wchar_t* count : {L"1", L"8"}) {
        const Arguments arguments = {
            L"--threads", count,       L"--set", L"Resolution1=3",
            L"--turn",    L"10,20,30", input,    folder / (std::wstring(count) + L".bmp")};
        EXPECT_EQ(RunConvert(L"equirectangular", arguments).exitStatus, 0);
    }
    EXPECT_FALSE(folder.Read(L"1.bmp").empty());
    EXPECT_TRUE(folder.Read(L"1.bmp") == folder.Read(L"8.bmp"));
}

TEST(Console, AnInterruptionLeavesNothingBehind) {
    const TemporaryFolder folder;
    // Random pixels take the encoder its time.
    const std::wstring input = Save(RandomImage(4096, 2048, PixelFormat::Rgb8), folder / L"in.bmp");
    ChildProcess process(ConsoleProgramPath(),
                         Convert(L"equirectangular", {L"--set", L"Resolution1=4", L"--set", L"Antialiasing=N",
                                                      input, folder / L"out.png"}),
                         true);
    while (folder.FileCount() < 2 && !process.HasEnded()) SleepMilliseconds(2);
    if (!process.Interrupt()) GTEST_SKIP() << "no console to interrupt from";
    const ProgramResult result = process.Wait();
    EXPECT_EQ(result.exitStatus, 130) << result.out << result.err;
    EXPECT_EQ(Lines(result.err), 1) << result.err;
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(Names(folder), Arguments{L"in.bmp"});
}

}  // namespace
}  // namespace skyvault::test
