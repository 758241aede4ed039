// The part of WriteText that differs between systems.
#pragma once

#include "cli/terminal.h"

namespace skyvault {

/// False when not all was written.
bool WriteToStream(OutputStream stream, std::wstring_view text);

}  // namespace skyvault
