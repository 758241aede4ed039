// Which font family a text is really set in.
#pragma once

#include <windows.h>
// After windows.h:
#include <dwrite.h>

#include <string>

namespace skyvault {

/// The family itself when the system's collection has it; else the one the system's own font substitution
/// gives ("MS Shell Dlg" is only such a name), else a common one that is there. DirectWrite draws nothing
/// for a family it cannot find.
std::wstring AvailableFamily(IDWriteFactory& factory, const std::wstring& family);

}  // namespace skyvault
