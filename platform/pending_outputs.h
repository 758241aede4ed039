// What an interrupted program must not leave behind: the list AbandonPendingOutputs goes through.
#pragma once

#include <string>

namespace skyvault {

/// From now on the file, or the folder with the files in it, is removed by AbandonPendingOutputs. It need not
/// exist yet.
void AddPendingOutput(const std::wstring& path);

void ForgetPendingOutput(const std::wstring& path);

}  // namespace skyvault
