// Memory that runs out for a moment, for tests.
#pragma once

namespace skyvault {

/// As FailAllocationsAfter (image/memory.h), but only the one allocation fails and those after it succeed.
void FailOneAllocationAfter(int count);

}  // namespace skyvault
