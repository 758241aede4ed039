#include "cli/convert.h"

#include "cli/console_feedback.h"
#include "cli/help.h"
#include "cli/terminal.h"
#include "cli/work_settings.h"
#include "codecs/dds_cube_map.h"
#include "codecs/exif_block.h"
#include "codecs/icc_profile.h"
#include "codecs/picture_codec.h"
#include "codecs/picture_files.h"
#include "generators/random.h"
#include "platform/feedback.h"
#include "platform/files.h"
#include "platform/memory_budget.h"
#include "platform/output_file.h"
#include "platform/parallel_rows.h"
#include "platform/path_text.h"
#include "projection/single_files.h"
#include "session/conversion.h"
#include "session/messages.h"
#include "session/sphere_tags.h"

namespace skyvault {

namespace {

ExitStatus Fail(const std::wstring& reason) {
    WriteMessage(reason);
    return kFailed;
}

/// Why nothing can be written there, found out before the work; empty when nothing speaks against it.
std::wstring FileObstacle(const std::wstring& path, const ConvertOptions& options) {
    const std::wstring start = L"Could not write " + Quoted(path) + L": ";
    if (FolderExists(path)) return start + L"it is a folder";
    const std::wstring folder(FolderPart(path));
    if (!folder.empty() && !FolderExists(folder)) return start + L"there is no folder " + Quoted(folder);
    const std::wstring extension = UpperExtension(FileNamePart(path));
    const bool dds = extension == L"DDS";
    if (options.to->format == PanoramaFormat::DirectXDds && !dds) return start + L"its extension is not dds";
    const bool picture = options.to->ownExtension == nullptr;
    if (picture && !dds && ContainerOfExtension(extension) == PictureContainer::None) {
        return start + L"its extension is none of bmp dds exr gif hdr heic jpg png tif";
    }
    return {};
}

/// What a picture tells about itself; a failure also for one that could not be read with the memory allowed.
Outcome ReadableFacts(const std::wstring& path, PictureFacts& facts) {
    Outcome told = ReadPictureFacts(path, facts);
    return told.IsDone() ? WithinMemoryBudget(path, facts.memory) : told;
}

/// What the photo carries, a line for each that there is.
std::wstring DescribeMetadata(const std::wstring& path) {
    const PhotoMetadata metadata = ReadPhotoMetadata(path);
    const ExifFacts facts = FactsOfExif(metadata.exif);
    const std::wstring name = NameOfProfile(metadata.icc);
    const std::pair<const wchar_t*, std::wstring> lines[] = {
        {L"Profile\t\t", metadata.icc.empty() ? L""
                         : name.empty()       ? L"without a name"
                                              : name},
        {L"Camera\t\t", facts.camera},
        {L"Taken\t\t", facts.taken},
        {L"Position\t", metadata.exif.empty() ? L""
                        : facts.position      ? L"yes"
                                              : L"no"},
        {L"Sphere\t\t", DescriptionOfSphere(ReadSphereTags(metadata.xmp))},
    };
    std::wstring text;
    for (const auto& [title, value] : lines) {
        if (!value.empty()) text += title + Printable(value) + L"\n";
    }
    return text;
}

/// A file's description, with what a panorama made of a picture would have.
std::wstring Describe(const std::wstring& path, const PictureFacts& facts) {
    const auto& [width, height] = facts.size;
    const bool cubeMap = UpperExtension(path) == L"DDS" && GetDdsKind(path) == DdsKind::CubeMap;
    if (cubeMap) return CubeMapInfo(path, width, facts.format);
    const std::wstring faceSize = std::to_wstring(width / 4);
    return PictureInfo(path, width, height, facts.format) + L"Frames\t\t" +
           std::to_wstring(facts.frameCount) + L"\nPanorama\tfaces " + faceSize + L" x " + faceSize + L"\n" +
           DescribeMetadata(path);
}

std::wstring OutputObstacle(const ConvertOptions& options, const AppState& settings) {
    if (options.to->sources == 1 || FolderExists(options.output)) {
        return FileObstacle(options.output, options);
    }
    const int system = settings.fileNamingSystem;
    if (NamingSystemOf(settings) != system) {
        return L"Could not write " + Quoted(options.output) + L": FileNamingSystem goes from 0 to 5, not " +
               std::to_wstring(system);
    }
    for (const std::wstring& file : FilesOfExport(*options.to, options.output, settings)) {
        std::wstring obstacle = FileObstacle(file, options);
        if (!obstacle.empty()) return obstacle;
    }
    return {};
}

/// A source that the output would replace, or a web page that somebody else wrote; done when there is none.
Outcome LostFile(const ConvertOptions& options, const AppState& settings) {
    for (const std::wstring& file : FilesOfExport(*options.to, options.output, settings)) {
        for (const std::wstring& input : options.inputs) {
            if (!input.empty() && SamePlace(input, file)) return Failure(Reason::ReplacesSource, file);
        }
        const bool stamped = options.logoSize.value_or(0.0f) > 0.0f && !settings.logo.empty();
        if (stamped && SamePlace(settings.logo, file)) return Failure(Reason::ReplacesSource, file);
        // Only the page has another name than was asked for.
        const bool page = options.to->kind == LayoutKind::Page && file != options.output;
        if (page && FileExists(file)) return Failure(Reason::ReplacesOtherFile, file);
    }
    return {};
}

}  // namespace

std::wstring ConsoleLineOf(const Outcome& outcome) {
    const std::wstring line = LineOf(outcome);
    return outcome.reason == Reason::NeedsMemory ? line + L" (--memory)" : line;
}

ExitStatus RunConvert(const ConvertOptions& options) {
    AppState settings;
    if (!LoadWorkSettings(options, settings)) return Fail(L"Could not open " + Quoted(options.settingsFile));
    const std::wstring obstacle = OutputObstacle(options, settings);
    if (!obstacle.empty()) return Fail(obstacle);
    const Outcome lost = LostFile(options, settings);
    if (!lost.IsDone()) return Fail(LineOf(lost));
    RemoveAbandonedOutputs(std::wstring(FolderPart(options.output)));
    SetMemoryBudget(options.memory);
    if (IsGenerator(*options.from)) {
        PictureFacts facts;
        const Outcome readable = ReadableFacts(options.inputs.front(), facts);
        if (!readable.IsDone()) return Fail(ConsoleLineOf(readable));
    }
    if (options.seed) SetFixedSeed(*options.seed);
    SetThreadCount(options.threads);
    WarnOfQuality(options);

    ConsoleFeedback feedback(options.quiet);
    ConversionResult result;
    {
        const ProgressScope progress(feedback);
        const HeadingPitchRoll& camera = options.camera;
        result = ConvertPanorama(
            {options.from, options.inputs, options.to, options.output, ModificationsOf(options),
             Camera{Radians(camera.heading), Radians(camera.pitch), Radians(camera.roll)},
             options.stripMetadata},
            settings, feedback);
    }
    for (const std::wstring& trouble : result.troubles) WriteMessage(trouble);
    const std::wstring& infoLog = result.outcome.infoLog;
    // What was written is told also when something beside it was not.
    if (!options.quiet && !infoLog.empty()) {
        WriteText(OutputStream::Standard, infoLog + (infoLog.back() == L'\n' ? L"" : L"\n"));
    }
    return result.outcome.IsDone() ? kDone : Fail(ConsoleLineOf(result.outcome));
}

ExitStatus RunInfo(const InfoOptions& options) {
    SetMemoryBudget(options.memory);
    PictureFacts facts;
    const Outcome told = ReadableFacts(options.path, facts);
    if (!told.IsDone()) return Fail(ConsoleLineOf(told));
    WriteText(OutputStream::Standard, Describe(options.path, facts));
    for (const std::wstring& trouble : MetadataTroubles(options.path, ReadPhotoMetadata(options.path).lost)) {
        WriteMessage(trouble);
    }
    return kDone;
}

}  // namespace skyvault
