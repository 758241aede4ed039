// Batch processing: every panorama of a folder from one layout into another.
//
// The window's dialog and the console run the same: plan, look at what stands in the way, run.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "session/conversion.h"
#include "session/layouts.h"
#include "settings/app_state.h"

namespace skyvault {

/// The layouts a batch reads and writes, in the order of both lists: those of kind Panorama, whose formats
/// count from 0.
std::span<const LayoutRow> BatchLayouts();

/// The list of extensions, in order.
std::span<const wchar_t* const> BatchExtensions();

/// The index of the extension list after the layout has been chosen: a layout with a file type of its own
/// brings it; any other keeps a picture type, and else takes png.
int BatchExtensionForLayout(int layout, int extension);
/// The index of the layout list after the extension has been chosen: dds and mov belong to a layout each; a
/// picture type takes those two to Equirectangular and leaves any other.
int BatchLayoutForExtension(int extension, int layout);

struct BatchJob {
    const LayoutRow* from = nullptr;
    const LayoutRow* to = nullptr;
    std::wstring sourceFolder, destinationFolder;
    std::wstring extension = L"png";  ///< of BatchExtensions(); QuickTime VR always gets mov
    bool subfolders = false;          ///< single files get a folder for each panorama
    Modifications modifications;      ///< made to every panorama
    bool stripMetadata = false;       ///< as of Conversion
};

/// One panorama of a batch.
struct BatchItem {
    std::vector<std::wstring> sources;  ///< six for single files, else one
    std::wstring output;                ///< single files make their six names of it
    std::vector<std::wstring> results;  ///< the files that will be there
    Outcome obstacle = {};              ///< why it is not converted; Done when it is to be
};

struct BatchPlan {
    Outcome obstacle;              ///< why nothing can be converted; Done when something can
    std::vector<BatchItem> items;  ///< in the order the system names the files
};

/// Looks into the source folder; nothing is written. Where several panoramas have one result, all but the one
/// whose source's name comes first get an obstacle, and so does one whose result would replace a source.
BatchPlan PlanBatch(const BatchJob& job, const ExportSettings& settings);

enum class BatchEnd { Converted, Failed, Skipped };

/// Hears of every panorama.
class BatchObserver {
  public:
    virtual ~BatchObserver() = default;
    /// Before a panorama, index 0 .. count − 1; false ends the run.
    virtual bool OnBegin(const BatchItem& item, std::size_t index, std::size_t count) = 0;
    /// result: of a failure the reason.
    virtual void OnEnd(const BatchItem& item, BatchEnd end, const ConversionResult& result) = 0;
};

struct BatchCounts {
    std::size_t converted = 0, failed = 0, skipped = 0;
};

/// "3 converted, 1 failed, 0 skipped"
std::wstring TextOfCounts(const BatchCounts& counts);

/// Converts one after the other; what fails is told to the observer and the run goes on. skipExisting: what
/// has all its results already counts as skipped.
BatchCounts RunBatch(const BatchJob& job, const std::vector<BatchItem>& items, bool skipExisting,
                     const AppState& settings, BatchObserver& observer);

/// The K-th of N equal parts of the items sorted by their sources' names, the same on every machine that
/// sees the same files and reads the same types of them. 1 ≤ shard ≤ shards.
std::vector<BatchItem> ShardOfBatch(std::vector<BatchItem> items, int shard, int shards);

}  // namespace skyvault
