#include "session/batch.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <iterator>
#include <map>
#include <new>
#include <set>

#include "codecs/picture_codec.h"
#include "platform/feedback.h"
#include "platform/files.h"
#include "platform/output_file.h"
#include "platform/path_text.h"
#include "platform/system_text.h"
#include "projection/single_files.h"

namespace skyvault {
namespace {

/// The types with a layout of their own come first, then the picture types.
constexpr std::array kExtensions = {L"dds", L"mov", L"bmp", L"jpg", L"gif", L"tif", L"png", L"exr", L"hdr"};
constexpr int kFirstPicture = 2, kPng = 6;

int IndexOfExtension(std::wstring_view extension) {
    return static_cast<int>(std::find(kExtensions.begin(), kExtensions.end(), extension) -
                            kExtensions.begin());
}

/// Upper-case extensions of the files a layout is read from.
std::set<std::wstring> SourceExtensions(const LayoutRow& layout) {
    if (layout.ownExtension != nullptr) return {UpperCase(layout.ownExtension)};
    // These are read without a codec.
    std::vector<std::wstring> codecs = ReadableExtensions();
    std::set<std::wstring> extensions(codecs.begin(), codecs.end());
    extensions.insert({L"DDS", L"EXR", L"HDR", L"TGA"});
    return extensions;
}

/// Where the front face's name part stands in the path: where a naming system puts it, else where it comes
/// last. The path must contain it.
std::size_t FindFrontPart(const std::wstring& path, int namingSystem) {
    const std::wstring part = FaceAffix(namingSystem, 0);
    const std::size_t nameStart = path.size() - FileNamePart(path).size();
    const std::wstring stem = WithoutExtension(FileNamePart(path));
    if (!part.starts_with(L"_") && part.size() > 1 && stem.starts_with(part)) return nameStart;
    if (stem.ends_with(part)) return nameStart + stem.size() - part.size();
    return path.rfind(part);
}

/// The six paths of the panorama whose front face this is.
std::vector<std::wstring> FacePaths(const std::wstring& front, int namingSystem) {
    const std::size_t place = FindFrontPart(front, namingSystem);
    const std::size_t length = std::wstring_view(FaceAffix(namingSystem, 0)).size();
    std::vector<std::wstring> paths(kFaceCount, front);
    for (int f = 1; f < kFaceCount; ++f) {
        paths[static_cast<std::size_t>(f)].replace(place, length, FaceAffix(namingSystem, f));
    }
    return paths;
}

/// The panoramas among the files: those whose path contains the front face's part, and that are not
/// themselves another's face ("pano101" is one of the faces of "pano100").
std::vector<std::vector<std::wstring>> GroupFaces(const std::vector<std::wstring>& files, int namingSystem) {
    const std::wstring part = FaceAffix(namingSystem, 0);
    std::vector<std::vector<std::wstring>> panoramas;
    if (part.empty()) return panoramas;
    for (const std::wstring& file : files) {
        if (file.find(part) != std::wstring::npos) panoramas.push_back(FacePaths(file, namingSystem));
    }
    std::set<std::wstring> otherFaces;
    for (const auto& faces : panoramas) otherFaces.insert(faces.begin() + 1, faces.end());
    std::erase_if(panoramas, [&](const auto& faces) { return otherFaces.contains(faces.front()); });
    return panoramas;
}

std::vector<std::vector<std::wstring>> FindSources(const BatchJob& job, int namingSystem) {
    const std::set<std::wstring> extensions = SourceExtensions(*job.from);
    std::vector<std::wstring> files;
    for (const std::wstring& name : FindFiles(job.sourceFolder)) {
        if (name.find(L'.') == std::wstring::npos || !extensions.contains(UpperExtension(name))) continue;
        std::wstring path = JoinPath(job.sourceFolder, name);
        if (FileExists(path)) files.push_back(std::move(path));
    }
    if (job.from->sources > 1) return GroupFaces(files, namingSystem);
    std::vector<std::vector<std::wstring>> sources;
    sources.reserve(files.size());
    for (std::wstring& file : files) sources.push_back({std::move(file)});
    return sources;
}

bool WritesSixFiles(const BatchJob& job) {
    return job.to->sources > 1;
}

/// A layout's own type, whatever was chosen: a settings file may hold both. A type that only another layout
/// has and that is no picture becomes png.
std::wstring ExtensionOf(const BatchJob& job) {
    if (job.to->ownExtension != nullptr) return job.to->ownExtension;
    const bool movie = job.extension == FindLayout(PanoramaFormat::QuickTimeVr)->ownExtension;
    return movie ? kExtensions[kPng] : job.extension;
}

std::wstring OutputOf(const BatchJob& job, const std::wstring& source) {
    const std::wstring stem = WithoutExtension(FileNamePart(source));
    std::wstring folder = job.destinationFolder;
    if (WritesSixFiles(job) && job.subfolders) folder = JoinPath(folder, stem);
    const std::wstring prefix = job.to->exportPrefix != nullptr ? LowerCase(job.to->exportPrefix) : L"";
    return JoinPath(folder, prefix + stem + L"." + ExtensionOf(job));
}

void SortBySource(std::vector<BatchItem>& items) {
    std::sort(items.begin(), items.end(),
              [](const BatchItem& a, const BatchItem& b) { return a.sources.front() < b.sources.front(); });
}

/// Of the items that have a result in common all but the one whose source's name comes first.
void RefuseSharedResults(std::vector<BatchItem>& items) {
    // On Windows names that differ in case only are one name.
    const auto key = [](const std::wstring& path) {
        return kPathSeparator == L'\\' ? LowerCase(path) : path;
    };
    std::map<std::wstring, const BatchItem*> first;
    for (BatchItem& item : items) {
        for (const std::wstring& result : item.results) {
            const BatchItem*& owner = first.emplace(key(result), &item).first->second;
            if (item.sources.front() < owner->sources.front()) owner = &item;
        }
    }
    for (BatchItem& item : items) {
        for (const std::wstring& result : item.results) {
            const BatchItem* const owner = first.at(key(result));
            if (owner == &item || !item.obstacle.IsDone()) continue;
            item.obstacle = {.reason = Reason::SharesResult,
                             .file = item.sources.front(),
                             .infoLog = {},
                             .otherFile = owner->sources.front()};
        }
    }
}

/// A source is never replaced: one folder can have two names.
void RefuseReplacedSources(const BatchJob& job, std::vector<BatchItem>& items) {
    if (!SameFolder(job.sourceFolder, job.destinationFolder)) return;
    if (WritesSixFiles(job) && job.subfolders) return;
    const auto key = [](const std::wstring& path) { return LowerCase(std::wstring(FileNamePart(path))); };
    std::set<std::wstring> sources;
    for (const BatchItem& item : items) {
        for (const std::wstring& source : item.sources) sources.insert(key(source));
    }
    for (BatchItem& item : items) {
        for (const std::wstring& result : item.results) {
            if (item.obstacle.IsDone() && sources.contains(key(result))) {
                item.obstacle = Failure(Reason::ReplacesSource, result);
            }
        }
    }
}

/// The file type that only this layout of the list has; null also for an index that is none, which a settings
/// file may hold.
const wchar_t* OwnExtension(int layout) {
    const std::span<const LayoutRow> rows = BatchLayouts();
    const bool listed = layout >= 0 && layout < static_cast<int>(rows.size());
    return listed ? rows[static_cast<std::size_t>(layout)].ownExtension : nullptr;
}

bool HasResults(const BatchItem& item) {
    return std::all_of(item.results.begin(), item.results.end(), FileExists);
}

ConversionResult ConvertItem(const BatchJob& job, const BatchItem& item, const AppState& settings) {
    ConversionResult result{item.obstacle, {}};
    if (!result.outcome.IsDone()) return result;
    const std::wstring folder(FolderPart(item.output));
    const bool isNew = !FolderExists(folder);
    if (!isNew && folder != job.destinationFolder) RemoveAbandonedOutputs(folder);
    if (isNew && !MakeOneFolder(folder)) {
        result.outcome = Failure(Reason::CannotCreateFolder, folder);
        return result;
    }
    // Nothing that happens to one panorama is shown: the run goes on, and the observer hears the outcome.
    SilentFeedback silence;
    try {
        result = ConvertPanorama(
            {job.from, item.sources, job.to, item.output, job.modifications, {}, job.stripMetadata}, settings,
            silence);
    } catch (const std::bad_alloc&) {
        // Memory that is lacking for one panorama may be there for the next.
        result.outcome = Failure(Reason::NoMemory, item.sources.front());
    }
    if (!result.outcome.IsDone() && isNew) RemoveEmptyFolder(folder);
    return result;
}

}  // namespace

std::span<const LayoutRow> BatchLayouts() {
    const std::span<const LayoutRow> rows = Layouts();
    const auto end = std::find_if(rows.begin(), rows.end(),
                                  [](const LayoutRow& row) { return row.kind != LayoutKind::Panorama; });
    return rows.first(static_cast<std::size_t>(end - rows.begin()));
}

std::span<const wchar_t* const> BatchExtensions() {
    return kExtensions;
}

int BatchExtensionForLayout(int layout, int extension) {
    const wchar_t* const own = OwnExtension(layout);
    if (own != nullptr) return IndexOfExtension(own);
    const bool picture = extension >= kFirstPicture && extension < static_cast<int>(kExtensions.size());
    return picture ? extension : kPng;
}

int BatchLayoutForExtension(int extension, int layout) {
    const int layouts = static_cast<int>(BatchLayouts().size());
    for (int i = 0; i < layouts; ++i) {
        const wchar_t* const own = OwnExtension(i);
        if (own != nullptr && IndexOfExtension(own) == extension) return i;
    }
    return OwnExtension(layout) != nullptr ? static_cast<int>(PanoramaFormat::Equirectangular) : layout;
}

BatchPlan PlanBatch(const BatchJob& job, const ExportSettings& settings) {
    if (job.destinationFolder == job.sourceFolder)
        return {Failure(Reason::SameFolders, job.sourceFolder), {}};
    if (!FolderExists(job.sourceFolder)) return {Failure(Reason::NoSourceFolder, job.sourceFolder), {}};
    if (!FolderExists(job.destinationFolder)) {
        return {Failure(Reason::NoDestinationFolder, job.destinationFolder), {}};
    }
    const int namingSystem = NamingSystemOf(settings);
    BatchPlan plan;
    for (std::vector<std::wstring>& sources : FindSources(job, namingSystem)) {
        std::wstring output = OutputOf(job, sources.front());
        std::vector<std::wstring> results = FilesOfExport(*job.to, output, settings);
        plan.items.push_back({std::move(sources), std::move(output), std::move(results)});
    }
    if (plan.items.empty()) plan.obstacle = Failure(Reason::NoSourceFiles, job.sourceFolder);
    RefuseReplacedSources(job, plan.items);
    RefuseSharedResults(plan.items);
    return plan;
}

std::wstring TextOfCounts(const BatchCounts& counts) {
    return std::to_wstring(counts.converted) + L" converted, " + std::to_wstring(counts.failed) +
           L" failed, " + std::to_wstring(counts.skipped) + L" skipped";
}

BatchCounts RunBatch(const BatchJob& job, const std::vector<BatchItem>& items, bool skipExisting,
                     const AppState& settings, BatchObserver& observer) {
    BatchCounts counts;
    RemoveAbandonedOutputs(job.destinationFolder);
    for (std::size_t i = 0; i < items.size(); ++i) {
        const BatchItem& item = items[i];
        if (!observer.OnBegin(item, i, items.size())) break;
        if (skipExisting && item.obstacle.IsDone() && HasResults(item)) {
            ++counts.skipped;
            observer.OnEnd(item, BatchEnd::Skipped, {});
            continue;
        }
        const ConversionResult result = ConvertItem(job, item, settings);
        const bool done = result.outcome.IsDone();
        ++(done ? counts.converted : counts.failed);
        observer.OnEnd(item, done ? BatchEnd::Converted : BatchEnd::Failed, result);
    }
    return counts;
}

std::vector<BatchItem> ShardOfBatch(std::vector<BatchItem> items, int shard, int shards) {
    assert(shard >= 1 && shard <= shards);
    SortBySource(items);
    const std::size_t k = static_cast<std::size_t>(shard), n = static_cast<std::size_t>(shards);
    const auto first = items.begin() + static_cast<std::ptrdiff_t>(items.size() * (k - 1) / n);
    const auto last = items.begin() + static_cast<std::ptrdiff_t>(items.size() * k / n);
    return {std::make_move_iterator(first), std::make_move_iterator(last)};
}

}  // namespace skyvault
