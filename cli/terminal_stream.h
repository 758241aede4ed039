// The part of WriteText that differs between systems.
#pragma once

#include "cli/terminal.h"

namespace skyvault {

void WriteToStream(OutputStream stream, std::wstring_view text);

}  // namespace skyvault
