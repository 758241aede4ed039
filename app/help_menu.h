// The HELP menu: the pages it leads to, and the about box, which leads to them too.
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

/// The program's picture, name and version. Shows the box until it is closed.
void ShowAboutBox(HINSTANCE instance, HWND owner);

}  // namespace skyvault
