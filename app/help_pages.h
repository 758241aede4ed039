// The pages the HELP menu and the about box lead to.
#pragma once

#include <windows.h>

#include <string>

namespace skyvault {

enum class HelpPage { UserGuide, Community };

/// Where the page is: the guide in the program's own folder when it is there, else its address on the web.
std::wstring AddressOf(HelpPage page, const std::wstring& programFolder);

/// Opens an address or a file with the program the system has for it, and tells the user when it has none.
void OpenAddress(HWND owner, const std::wstring& address);

/// Opens the page of this program.
void OpenHelpPage(HWND owner, HelpPage page);

}  // namespace skyvault
