// skyvault-cli convert and info: what they do once the command line is understood.
#pragma once

#include "cli/options.h"
#include "session/conversion.h"

namespace skyvault {

/// Reads, modifies and writes a panorama. The description of the written file goes to stdout, everything
/// else to stderr.
ExitStatus RunConvert(const ConvertOptions& options);

/// LineOf, with the option that could help.
std::wstring ConsoleLineOf(const Outcome& outcome);

/// Describes a picture on stdout.
ExitStatus RunInfo(const InfoOptions& options);

}  // namespace skyvault
