// The batch command: a whole folder.
#pragma once

#include "cli/options.h"

namespace skyvault {

/// Converts the folder. Says on stdout what became of each panorama and in the last line how many were
/// converted, failed and were skipped; on stderr why one failed. Failed when any did.
ExitStatus RunBatchCommand(const BatchOptions& options);

}  // namespace skyvault
