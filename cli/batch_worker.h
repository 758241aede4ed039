// A batch in a process of its own, so that a picture that brings a picture library down ends that process and
// not the run.
#pragma once

#include <vector>

#include "session/batch.h"

namespace skyvault {

struct GuardedRun {
    BatchCounts counts;
    bool wholeOutput = true;  ///< what the observer wrote to the standard output arrived
};

/// From now on batches have workers. For a program that has started no threads before; others, tests for one,
/// run them as RunBatch does. (So does Windows.)
void UseBatchWorkers();

/// As RunBatch, but in worker processes: one works until it breaks down, the panorama it was at has failed
/// (LibraryFailed), and the next worker goes on behind it. The observer is called in the workers, and here
/// for what broke down.
GuardedRun RunGuardedBatch(const BatchJob& job, const std::vector<BatchItem>& items, bool skipExisting,
                           const AppState& settings, BatchObserver& observer);

/// For a program that is asked to end: asks its worker to, and waits for it. True when there was one: it has
/// said what is to be said.
bool EndBatchWorker();

}  // namespace skyvault
