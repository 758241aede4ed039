// What a fuzz target says about its parser.
#pragma once

#include <cstdlib>

namespace skyvault {

/// Ends the program, which the fuzzer and the replay take for a finding.
inline void Require(bool ok) {
    if (!ok) std::abort();
}

}  // namespace skyvault
