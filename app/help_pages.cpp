#include "app/help_pages.h"

#include <shellapi.h>

#include "app/message_box.h"
#include "platform/files.h"

namespace skyvault {
namespace {

constexpr const wchar_t* kGuideFile = L"\\Media\\Guide\\index.html";
constexpr const wchar_t* kGuideAddress = L"https://skyvault.example/guide";
constexpr const wchar_t* kCommunityAddress = L"https://skyvault.example/community";

/// Results of ShellExecute up to this one are errors.
constexpr INT_PTR kLastError = 32;

}  // namespace

std::wstring AddressOf(HelpPage page, const std::wstring& programFolder) {
    if (page == HelpPage::Community) return kCommunityAddress;
    std::wstring file = programFolder + kGuideFile;
    return FileExists(file) ? file : kGuideAddress;
}

void OpenAddress(HWND owner, const std::wstring& address) {
    const HINSTANCE result = ShellExecuteW(owner, L"open", address.c_str(), nullptr, nullptr, SW_SHOWNORMAL);
    if (reinterpret_cast<INT_PTR>(result) <= kLastError) {
        ShowMessage(L"Could not open \"" + address + L"\"", true);
    }
}

void OpenHelpPage(HWND owner, HelpPage page) {
    OpenAddress(owner, AddressOf(page, ProgramFolder()));
}

}  // namespace skyvault
