#include "app/help_menu.h"

// After windows.h:
#include <commctrl.h>
#include <shellapi.h>

#include <new>

#include "app/draw_canvas.h"
#include "app/window_helpers.h"
#include "codecs/picture_files.h"
#include "platform/files.h"
#include "resources/resource_ids.h"
#include "skyvault_version.h"

namespace skyvault {
namespace {

constexpr const wchar_t* kGuideFile = L"\\Media\\Guide\\index.html";
constexpr const wchar_t* kGuideAddress = L"https://skyvault.example/guide";
constexpr const wchar_t* kCommunityAddress = L"https://skyvault.example/community";

/// Results of ShellExecute up to this one are errors.
constexpr INT_PTR kLastError = 32;

#define SKYVAULT_WIDE_INNER(text) L##text
#define SKYVAULT_WIDE(text) SKYVAULT_WIDE_INNER(text)
constexpr const wchar_t* kVersion = SKYVAULT_WIDE(SKYVAULT_VERSION_TEXT);

constexpr Color8 kPaper{255, 255, 255, 255};
constexpr Color8 kInk{32, 40, 56, 255};
constexpr Color8 kFaintInk{96, 104, 120, 255};

/// The picture over the whole width, twice as wide as high, and the texts below it.
void Draw(HWND box, HDC context, const Image& picture) {
    RECT client{};
    GetClientRect(box, &client);
    DrawCanvas canvas(context, client);
    const float scale = ScaleOf(box);
    const auto width = static_cast<float>(client.right);
    const float pictureHeight = width / 2.0f;
    float top = pictureHeight + 6.0f * scale;
    const auto line = [&](const std::wstring& words, const wchar_t* family, float size, const Color8& ink) {
        TextFormat format;
        format.family = family;
        format.size = size * scale;
        const float bottom = top + size * 1.5f * scale;
        canvas.DrawString({12.0f * scale, top, width, bottom}, words, format, ink, true, true, true);
        top = bottom;
    };
    canvas.BeginDraw();
    canvas.Clear(kPaper);
    canvas.DrawPicture(picture, {0.0f, 0.0f, width, pictureHeight}, true);
    line(kProgramName, L"Segoe UI Light", 26.0f, kInk);
    line(std::wstring(L"Version ") + kVersion, L"Segoe UI", 13.0f, kInk);
    line(L"Brambleworks Studio", L"Segoe UI", 12.0f, kFaintInk);
    canvas.EndDraw();
}

void OnNotice(HWND box, const NMHDR& notice) {
    if (notice.code != NM_CLICK && notice.code != NM_RETURN) return;
    try {
        if (notice.idFrom == IDC_ABOUT_GUIDE) OpenHelpPage(box, HelpPage::UserGuide);
        if (notice.idFrom == IDC_ABOUT_COMMUNITY) OpenHelpPage(box, HelpPage::Community);
    } catch (const std::bad_alloc&) {
        // The page stays closed.
    }
}

INT_PTR CALLBACK Procedure(HWND box, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case WM_INITDIALOG:
            SetWindowLongPtrW(box, DWLP_USER, lParam);
            CentreOverOwner(box);
            return TRUE;
        case WM_ERASEBKGND:
            return TRUE;
        case WM_PAINT: {
            PAINTSTRUCT paint;
            const HDC context = BeginPaint(box, &paint);
            try {
                Draw(box, context, *reinterpret_cast<const Image*>(GetWindowLongPtrW(box, DWLP_USER)));
            } catch (const std::bad_alloc&) {
                // A box without its texts; no exception may pass through the system.
            }
            EndPaint(box, &paint);
            return TRUE;
        }
        case WM_CTLCOLORSTATIC:
            // The links stand on the paper, too.
            SetBkColor(reinterpret_cast<HDC>(wParam), RGB(kPaper.red, kPaper.green, kPaper.blue));
            return reinterpret_cast<INT_PTR>(GetStockObject(WHITE_BRUSH));
        case WM_NOTIFY:
            OnNotice(box, *reinterpret_cast<const NMHDR*>(lParam));
            return TRUE;
        case WM_COMMAND:
            if (LOWORD(wParam) == IDOK || LOWORD(wParam) == IDCANCEL) EndDialog(box, LOWORD(wParam));
            return TRUE;
        default:
            return FALSE;
    }
}

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

void ShowAboutBox(HINSTANCE instance, HWND owner) {
    const INITCOMMONCONTROLSEX links{sizeof links, ICC_LINK_CLASS};
    InitCommonControlsEx(&links);
    // Without its picture the box still tells the version.
    Image picture;
    static_cast<void>(LoadPicture(ProgramFolder() + L"\\media\\skins\\About.png", picture));
    DialogBoxParamW(instance, MAKEINTRESOURCEW(IDD_ABOUT), owner, Procedure,
                    reinterpret_cast<LPARAM>(&picture));
}

}  // namespace skyvault
