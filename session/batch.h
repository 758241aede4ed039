// Batch processing: every panorama of a folder from one layout into another.
//
// The window's dialog and the console run the same: plan, look at what stands in the way, run.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "projection/modifications.h"
#include "session/conversion.h"
#include "session/layouts.h"
#include "settings/app_state.h"

namespace skyvault {

/// Layouts 0 .. 12 can be read and written by a batch; both layout lists show them in this order.
inline constexpr int kBatchLayoutCount = 13;

/// The list of extensions, in order.
std::span<const wchar_t* const> BatchExtensions();

/// The index of the extension list after the layout has been chosen: a layout with a file type of its own
/// brings it; any other keeps a picture type, and else takes png.
int BatchExtensionForLayout(int layout, int extension);
/// The index of the layout list after the extension has been chosen: dds and mov belong to a layout each; a
/// picture type takes those two to Equirectangular and leaves any other.
int BatchLayoutForExtension(int extension, int layout);

struct BatchJob {
    PanoramaFormat from = PanoramaFormat::Equirectangular;
    PanoramaFormat to = PanoramaFormat::Equirectangular;
    std::wstring sourceFolder, destinationFolder;
    std::wstring extension = L"png";  ///< of BatchExtensions(); QuickTime VR always gets mov
    bool subfolders = false;          ///< single files get a folder for each panorama
    Modifications modifications;      ///< made to every panorama
};

/// One panorama of a batch.
struct BatchItem {
    std::vector<std::wstring> sources;  ///< six for single files, else one
    std::wstring output;                ///< single files make their six names of it
    std::wstring obstacle = {};         ///< why it is not converted; empty when it is to be
};

struct BatchPlan {
    std::wstring obstacle;         ///< why nothing can be converted; empty when it can
    std::vector<BatchItem> items;  ///< in the order the system names the files
};

/// Looks into the source folder; nothing is written. namingSystem: how the six single files are told apart.
BatchPlan PlanBatch(const BatchJob& job, int namingSystem);

enum class BatchOutcome { Converted, Failed, Skipped };

/// Hears of every panorama.
class BatchObserver {
  public:
    virtual ~BatchObserver() = default;
    /// Before a panorama, index 0 .. count − 1; false ends the run.
    virtual bool OnBegin(const BatchItem& item, std::size_t index, std::size_t count) = 0;
    /// result: of a failure the reason, in one message that names a file.
    virtual void OnEnd(const BatchItem& item, BatchOutcome outcome, const ConversionResult& result) = 0;
};

struct BatchCounts {
    std::size_t converted = 0, failed = 0, skipped = 0;
};

/// Converts one after the other; what fails is told to the observer and the run goes on. A source is never
/// replaced by a result. skipExisting: what has all its results already counts as skipped.
BatchCounts RunBatch(const BatchJob& job, const std::vector<BatchItem>& items, bool skipExisting,
                     const AppState& settings, BatchObserver& observer);

/// Where several panoramas have one result, all but the one whose source's name comes first get an obstacle.
void RefuseSharedResults(std::vector<BatchItem>& items);

/// The K-th of N equal parts of the items sorted by their sources' names, the same on every machine that
/// sees the same files and reads the same types of them. 1 ≤ shard ≤ shards.
std::vector<BatchItem> ShardOfBatch(std::vector<BatchItem> items, int shard, int shards);

}  // namespace skyvault
