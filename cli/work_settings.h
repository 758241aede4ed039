// The settings and modifications a command line asks for.
#pragma once

#include "cli/options.h"
#include "projection/modifications.h"

namespace skyvault {

/// The program's defaults, over them the settings file if one is named, over that the single settings. False
/// when the file cannot be read. Unlike the window's, these defaults name no folders of the user, and make
/// none.
bool LoadWorkSettings(const WorkOptions& options, AppState& settings);

/// Says so on stderr, unless quiet, when a quality is asked for that this system's encoder does not know.
void WarnOfQuality(const WorkOptions& options);

Modifications ModificationsOf(const WorkOptions& options);

float Radians(float degrees);

}  // namespace skyvault
