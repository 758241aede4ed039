#include "cli/batch_worker.h"

namespace skyvault {

void UseBatchWorkers() {}

GuardedRun RunGuardedBatch(const BatchJob& job, const std::vector<BatchItem>& items, bool skipExisting,
                           const AppState& settings, BatchObserver& observer) {
    return {RunBatch(job, items, skipExisting, settings, observer)};
}

bool EndBatchWorker() {
    return false;
}

}  // namespace skyvault
