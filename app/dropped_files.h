// What a WM_DROPFILES message carries.
#pragma once

#include <windows.h>

#include <string>
#include <vector>

namespace skyvault {

/// The paths of the files; the drop is finished, whatever becomes of them.
std::vector<std::wstring> TakeDroppedFiles(WPARAM drop);

}  // namespace skyvault
