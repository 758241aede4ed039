#include "session/batch.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <iterator>
#include <map>
#include <new>
#include <set>

#include "image/picture_codec.h"
#include "platform/files.h"
#include "platform/path_text.h"
#include "platform/silent_feedback.h"
#include "platform/text_case.h"
#include "projection/single_files.h"

namespace skyvault {
namespace {

constexpr int kDds = 0, kMov = 1, kPng = 6;
constexpr std::array kExtensions = {L"dds", L"mov", L"bmp", L"jpg", L"gif", L"tif", L"png"};
constexpr int kDdsLayout = static_cast<int>(PanoramaFormat::DirectXDds);
constexpr int kQtvrLayout = static_cast<int>(PanoramaFormat::QuickTimeVr);

bool IsPicture(int extension) {
    return extension > kMov && extension < static_cast<int>(kExtensions.size());
}

/// Upper-case extensions of the files a layout is read from.
std::set<std::wstring> SourceExtensions(PanoramaFormat layout) {
    if (layout == PanoramaFormat::DirectXDds) return {L"DDS"};
    if (layout == PanoramaFormat::QuickTimeVr) return {L"MOV"};
    // The last two are read without a codec.
    std::vector<std::wstring> codecs = ReadableExtensions();
    std::set<std::wstring> extensions(codecs.begin(), codecs.end());
    extensions.insert({L"DDS", L"TGA"});
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
    const std::set<std::wstring> extensions = SourceExtensions(job.from);
    std::vector<std::wstring> files;
    for (const std::wstring& name : FindFiles(job.sourceFolder)) {
        if (name.find(L'.') == std::wstring::npos || !extensions.contains(UpperExtension(name))) continue;
        std::wstring path = JoinPath(job.sourceFolder, name);
        if (FileExists(path)) files.push_back(std::move(path));
    }
    if (job.from == PanoramaFormat::SingleFiles) return GroupFaces(files, namingSystem);
    std::vector<std::vector<std::wstring>> sources;
    sources.reserve(files.size());
    for (std::wstring& file : files) sources.push_back({std::move(file)});
    return sources;
}

std::wstring OutputOf(const BatchJob& job, const std::wstring& source) {
    const std::wstring stem = WithoutExtension(FileNamePart(source));
    std::wstring folder = job.destinationFolder, prefix;
    std::wstring extension = job.extension;
    if (job.to == PanoramaFormat::DirectXDds) prefix = L"cubemap_";
    if (job.to == PanoramaFormat::SphereMap) prefix = L"spheremap_";
    if (job.to == PanoramaFormat::QuickTimeVr) extension = kExtensions[kMov];
    if (job.to == PanoramaFormat::SingleFiles && job.subfolders) folder = JoinPath(folder, stem);
    return JoinPath(folder, prefix + stem + L"." + extension);
}

/// The files that will be there when the panorama has been written.
std::vector<std::wstring> ResultsOf(const BatchJob& job, const std::wstring& output, int namingSystem) {
    if (job.to != PanoramaFormat::SingleFiles) return {output};
    std::vector<std::wstring> files;
    files.reserve(kFaceCount);
    for (int f = 0; f < kFaceCount; ++f) {
        files.push_back(SingleFilePath(output, namingSystem, static_cast<CubeFace>(f)));
    }
    return files;
}

void SortBySource(std::vector<BatchItem>& items) {
    std::sort(items.begin(), items.end(),
              [](const BatchItem& a, const BatchItem& b) { return a.sources.front() < b.sources.front(); });
}

class Run {
  public:
    Run(const BatchJob& job, const AppState& settings)
        : job_(job), settings_(settings), from_(FindLayout(job.from)), to_(FindLayout(job.to)) {
        // One folder can have two names.
        if (!SameFolder(job.sourceFolder, job.destinationFolder)) return;
        for (const std::vector<std::wstring>& sources : FindSources(job, NamingSystemOf(settings))) {
            for (const std::wstring& source : sources) sourceNames_.insert(NameKey(source));
        }
    }

    bool HasResults(const BatchItem& item) const {
        const std::vector<std::wstring> results = Results(item);
        return std::all_of(results.begin(), results.end(), FileExists);
    }

    ConversionResult Convert(const BatchItem& item) {
        if (!item.obstacle.empty()) return Failure(item.obstacle);
        for (const std::wstring& result : Results(item)) {
            if (ReplacesSource(result)) {
                return Failure(L"Could not write " + Quoted(result) + L": it is one of the source files");
            }
        }
        const std::wstring folder(FolderPart(item.output));
        const bool isNew = !FolderExists(folder);
        if (isNew && !CreateFolder(folder)) return Failure(L"Could not create the folder " + Quoted(folder));
        ConversionResult result = ConvertOrRunOut(item);
        if (!result.done && isNew) RemoveEmptyFolder(folder);
        return result;
    }

  private:
    static ConversionResult Failure(const std::wstring& reason) {
        ConversionResult result;
        result.reason = reason;
        return result;
    }
    /// Memory that is lacking for one panorama may be there for the next.
    ConversionResult ConvertOrRunOut(const BatchItem& item) {
        try {
            return ConvertPanorama({from_, item.sources, to_, item.output, job_.modifications, {}}, settings_,
                                   silence_);
        } catch (const std::bad_alloc&) {
            return Failure(L"Out of memory: " + Quoted(item.sources.front()));
        }
    }
    static std::wstring NameKey(const std::wstring& path) {
        return LowerCase(std::wstring(FileNamePart(path)));
    }
    std::vector<std::wstring> Results(const BatchItem& item) const {
        return ResultsOf(job_, item.output, NamingSystemOf(settings_));
    }
    bool ReplacesSource(const std::wstring& result) const {
        const bool inSubfolder = job_.to == PanoramaFormat::SingleFiles && job_.subfolders;
        return !inSubfolder && sourceNames_.contains(NameKey(result));
    }

    const BatchJob& job_;
    const AppState& settings_;
    const LayoutRow *const from_, *const to_;
    std::set<std::wstring> sourceNames_;  ///< empty unless the results go where the sources are
    /// Nothing that happens to one panorama is shown: the run goes on, and the observer hears the outcome.
    SilentFeedback silence_;
};

}  // namespace

std::span<const wchar_t* const> BatchExtensions() {
    return kExtensions;
}

int BatchExtensionForLayout(int layout, int extension) {
    if (layout == kDdsLayout) return kDds;
    if (layout == kQtvrLayout) return kMov;
    return IsPicture(extension) ? extension : kPng;
}

int BatchLayoutForExtension(int extension, int layout) {
    if (extension == kDds) return kDdsLayout;
    if (extension == kMov) return kQtvrLayout;
    const bool ownType = layout == kDdsLayout || layout == kQtvrLayout;
    return ownType ? static_cast<int>(PanoramaFormat::Equirectangular) : layout;
}

BatchPlan PlanBatch(const BatchJob& job, int namingSystem) {
    if (job.destinationFolder == job.sourceFolder) {
        return {L"Destination folder must be different from the source folder", {}};
    }
    if (!FolderExists(job.sourceFolder)) return {L"Source folder does not exist", {}};
    if (!FolderExists(job.destinationFolder)) return {L"Destination folder does not exist", {}};
    BatchPlan plan;
    for (std::vector<std::wstring>& sources : FindSources(job, namingSystem)) {
        const std::wstring output = OutputOf(job, sources.front());
        plan.items.push_back({std::move(sources), output});
    }
    if (plan.items.empty()) plan.obstacle = L"No files found in source folder";
    return plan;
}

BatchCounts RunBatch(const BatchJob& job, const std::vector<BatchItem>& items, bool skipExisting,
                     const AppState& settings, BatchObserver& observer) {
    BatchCounts counts;
    Run run(job, settings);
    for (std::size_t i = 0; i < items.size(); ++i) {
        const BatchItem& item = items[i];
        if (!observer.OnBegin(item, i, items.size())) break;
        if (skipExisting && run.HasResults(item)) {
            ++counts.skipped;
            observer.OnEnd(item, BatchOutcome::Skipped, {});
            continue;
        }
        const ConversionResult result = run.Convert(item);
        ++(result.done ? counts.converted : counts.failed);
        observer.OnEnd(item, result.done ? BatchOutcome::Converted : BatchOutcome::Failed, result);
    }
    return counts;
}

void RefuseSharedResults(std::vector<BatchItem>& items) {
    SortBySource(items);
    std::map<std::wstring, const BatchItem*> byResult;
    for (BatchItem& item : items) {
        // On Windows names that differ in case only are one name.
        const bool anyCase = kPathSeparator == L'\\';
        const auto [first, isNew] = byResult.emplace(anyCase ? LowerCase(item.output) : item.output, &item);
        if (isNew) continue;
        item.obstacle = Quoted(item.sources.front()) + L" has the same result as " +
                        Quoted(first->second->sources.front());
    }
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
