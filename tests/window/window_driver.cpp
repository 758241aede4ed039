#include "tests/window/window_driver.h"

#include <gtest/gtest.h>
#include <objbase.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "app/message_box.h"
#include "app/program.h"
#include "image/picture_files.h"
#include "platform/files.h"
#include "platform/silent_feedback.h"
#include "platform/utf8.h"
#include "session/commands.h"
#include "settings/settings_file.h"

namespace skyvault::test {
namespace {

/// The tests read and write pictures themselves; their thread pumps no messages.
class ComForTests final : public testing::Environment {
    void SetUp() override { CoInitializeEx(nullptr, COINIT_MULTITHREADED); }
    void TearDown() override { CoUninitialize(); }
};
const testing::Environment* const comForTests = testing::AddGlobalTestEnvironment(new ComForTests);

const ScreenRect kAnyScreen{-100000, -100000, 100000, 100000};

std::wstring SettingsFile() {
    return SettingsPath(ProgramFolder());
}

/// The picture of a device context's rectangle, opaque.
Image ReadPixels(HDC source, int left, int top, int width, int height) {
    BITMAPINFO info{};
    info.bmiHeader.biSize = sizeof info.bmiHeader;
    info.bmiHeader.biWidth = width;
    info.bmiHeader.biHeight = -height;
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = 32;
    void* bits = nullptr;
    const HDC memory = CreateCompatibleDC(source);
    const HBITMAP bitmap = CreateDIBSection(memory, &info, DIB_RGB_COLORS, &bits, nullptr, 0);
    Image image(static_cast<std::uint32_t>(std::max(width, 0)),
                static_cast<std::uint32_t>(std::max(height, 0)), PixelFormat::Rgba8);
    if (bitmap != nullptr && image.IsValid()) {
        const HGDIOBJ before = SelectObject(memory, bitmap);
        BitBlt(memory, 0, 0, width, height, source, left, top, SRCCOPY);
        GdiFlush();
        const auto* from = static_cast<const std::byte*>(bits);
        std::copy(from, from + image.ByteCount(), image.pixels.get());
        for (std::size_t i = 3; i < image.ByteCount(); i += 4) image.pixels[i] = std::byte{255};
        SelectObject(memory, before);
    }
    DeleteObject(bitmap);
    DeleteDC(memory);
    return image;
}

/// Lets the windows finish their painting, if pictures are wanted at all.
bool WaitForShot() {
    if (std::getenv("SKYVAULT_SHOTS") == nullptr) return false;
    Sleep(500);
    return true;
}

void SaveShot(Image image, const char* name) {
    const char* folder = std::getenv("SKYVAULT_SHOTS");
    if (folder == nullptr || !image.IsValid()) return;
    const std::wstring path = FromUtf8(folder) + L"/" + FromUtf8(name) + L".png";
    SavePicture(image, path, PixelFormat::Rgb8);
}

constexpr const wchar_t* kDialogClass = L"#32770";
constexpr int kTextOfMessageBox = 0xffff;

struct WindowSearch {
    const wchar_t* windowClass;
    const std::wstring& title;
    DWORD process;
    int control;  ///< that it has; 0: any
    HWND found = nullptr;
};

BOOL CALLBACK Matches(HWND window, LPARAM parameter) {
    auto& search = *reinterpret_cast<WindowSearch*>(parameter);
    DWORD process = 0;
    GetWindowThreadProcessId(window, &process);
    wchar_t name[64] = L"";
    GetClassNameW(window, name, 64);
    if (process != search.process || !IsWindowVisible(window) || std::wstring(name) != search.windowClass ||
        (search.control != 0 && GetDlgItem(window, search.control) == nullptr) ||
        (!search.title.empty() && TextOf(window) != search.title)) {
        return TRUE;
    }
    search.found = window;
    return FALSE;
}

HWND FindProcessWindow(const wchar_t* windowClass, const std::wstring& title, DWORD process,
                       int control = 0) {
    WindowSearch search{windowClass, title, process, control};
    EnumWindows(Matches, reinterpret_cast<LPARAM>(&search));
    return search.found;
}

BOOL CALLBACK PrintIfOf(HWND window, LPARAM wanted) {
    DWORD process = 0;
    const DWORD thread = GetWindowThreadProcessId(window, &process);
    if (process != static_cast<DWORD>(wanted)) return TRUE;
    wchar_t name[64] = L"", title[128] = L"";
    GetClassNameW(window, name, 64);
    // Not by a message: that would wait for a thread that stands still.
    InternalGetWindowText(window, title, 128);
    DWORD_PTR answer = 0;
    const bool answers = SendMessageTimeoutW(window, WM_NULL, 0, 0, SMTO_ABORTIFHUNG, 500, &answer) != 0;
    std::printf("  %s \"%s\" of thread %04lx:%s%s%s\n", ToUtf8(name).c_str(), ToUtf8(title).c_str(), thread,
                IsWindowVisible(window) ? " visible" : " hidden", IsWindowEnabled(window) ? "" : " disabled",
                answers ? "" : ", no answer");
    return TRUE;
}

/// What the process has on the screen, for whoever waits in vain: a window that answers is in some message
/// loop (a disabled one below a modal box), one that does not is in a call that does not return.
void PrintWindows(DWORD process) {
    std::printf("waited in vain; the windows of the process, topmost first:\n");
    EnumWindows(PrintIfOf, static_cast<LPARAM>(process));
    std::fflush(stdout);
}

void SendKey(WORD key, DWORD flags) {
    INPUT input{};
    input.type = INPUT_KEYBOARD;
    input.ki.wVk = key;
    input.ki.wScan = static_cast<WORD>(MapVirtualKeyW(key, MAPVK_VK_TO_VSC));
    // The arrow block's keys; without the mark they would be the number pad's.
    const bool extended = (key >= VK_PRIOR && key <= VK_DOWN) || key == VK_INSERT || key == VK_DELETE;
    input.ki.dwFlags = flags | (extended ? KEYEVENTF_EXTENDEDKEY : 0);
    SendInput(1, &input, sizeof input);
}

}  // namespace

bool Eventually(const std::function<bool()>& condition, DWORD milliseconds) {
    const ULONGLONG end = GetTickCount64() + milliseconds;
    while (!condition()) {
        if (GetTickCount64() > end) return false;
        Sleep(10);
    }
    return true;
}

AppState TestSettings(const std::wstring& folder) {
    AppState settings = DefaultAppState();
    settings.importPath = settings.exportPath = folder;
    settings.logo.clear();
    settings.antialiasing = false;
    settings.resolution1 = 2;  // 1024 × 512
    settings.backgroundColour = kBackground;
    RECT frame{0, 0, kClientWidth, kClientHeight};
    AdjustWindowRect(&frame, WS_OVERLAPPEDWINDOW, TRUE);
    settings.windowRect = {40, 50, 40 + frame.right - frame.left, 50 + frame.bottom - frame.top};
    return settings;
}

void PutSettings(const AppState* settings) {
    RemoveFile(SettingsFile());
    SilentFeedback silent;
    if (settings != nullptr) SaveSettings(*settings, SettingsFile(), silent);
}

AppState ReadSettings() {
    AppState settings = DefaultAppState();
    LoadSettings(settings, SettingsFile(), kAnyScreen);
    return settings;
}

Image WindowPixels(HWND window, bool withFrame) {
    RECT rect{};
    if (withFrame) {
        GetWindowRect(window, &rect);
    } else {
        GetClientRect(window, &rect);
    }
    const HDC source = withFrame ? GetWindowDC(window) : GetDC(window);
    Image image = ReadPixels(source, 0, 0, rect.right - rect.left, rect.bottom - rect.top);
    ReleaseDC(window, source);
    return image;
}

void Shot(HWND window, const char* name) {
    if (!WaitForShot()) return;
    SaveShot(WindowPixels(window, true), name);
}

void ScreenShot(const char* name) {
    if (!WaitForShot()) return;
    const HDC screen = GetDC(nullptr);
    SaveShot(ReadPixels(screen, 0, 0, GetSystemMetrics(SM_CXSCREEN), GetSystemMetrics(SM_CYSCREEN)), name);
    ReleaseDC(nullptr, screen);
}

HeldKeys::HeldKeys(std::initializer_list<WORD> keys) : keys_(keys) {
    for (const WORD key : keys_) SendKey(key, 0);
}

HeldKeys::~HeldKeys() {
    for (auto key = keys_.rbegin(); key != keys_.rend(); ++key) SendKey(*key, KEYEVENTF_KEYUP);
}

void Press(WORD key) {
    const HeldKeys held({key});
}

void Type(const std::wstring& text) {
    for (const wchar_t c : text) {
        for (const DWORD flags : {DWORD{0}, DWORD{KEYEVENTF_KEYUP}}) {
            INPUT input{};
            input.type = INPUT_KEYBOARD;
            input.ki.wScan = static_cast<WORD>(c);
            input.ki.dwFlags = KEYEVENTF_UNICODE | flags;
            SendInput(1, &input, sizeof input);
        }
    }
}

HWND WaitForWindow(const wchar_t* windowClass, const std::wstring& title, DWORD process) {
    HWND window = nullptr;
    if (!Eventually([&] { return (window = FindProcessWindow(windowClass, title, process)) != nullptr; }))
        PrintWindows(process);
    return window;
}

HWND WaitForDialog(const std::wstring& title, DWORD process) {
    return WaitForWindow(kDialogClass, title, process);
}

bool DialogIsOpen(const std::wstring& title) {
    return FindProcessWindow(kDialogClass, title, GetCurrentProcessId()) != nullptr;
}

bool WaitUntilClosed(HWND dialog) {
    if (Eventually([&] { return !IsWindow(dialog); })) return true;
    PrintWindows(GetCurrentProcessId());
    return false;
}

std::wstring TextOf(HWND window) {
    std::wstring text(1024, L'\0');
    DWORD_PTR length = 0;
    SendMessageTimeoutW(window, WM_GETTEXT, text.size(), reinterpret_cast<LPARAM>(text.data()), SMTO_NORMAL,
                        kPatience, &length);
    text.resize(length);
    return text;
}

HWND WaitForMessage(DWORD process) {
    HWND box = nullptr;
    if (!Eventually([&] {
            return (box = FindProcessWindow(kDialogClass, kProgramName, process, kTextOfMessageBox)) !=
                   nullptr;
        })) {
        PrintWindows(process);
    }
    return box;
}

std::wstring MessageText(HWND box) {
    return TextOf(GetDlgItem(box, kTextOfMessageBox));
}

bool PressButton(HWND dialog, int id) {
    PostMessageW(dialog, WM_COMMAND, static_cast<WPARAM>(id), 0);
    return WaitUntilClosed(dialog);
}

namespace {

bool AnswerDialog(HWND dialog, int nameBox, const std::wstring& path, int button) {
    HWND name = nullptr;
    if (!Eventually([&] { return (name = GetDlgItem(dialog, nameBox)) != nullptr; })) return false;
    SendMessageW(name, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(path.c_str()));
    return PressButton(dialog, button);
}

}  // namespace

bool AnswerFileDialog(HWND dialog, const std::wstring& path) {
    return AnswerDialog(dialog, 1148, path, IDOK);
}

bool AnswerFolderPicker(HWND dialog, const std::wstring& path, int button) {
    return AnswerDialog(dialog, 1152, path, button);
}

void ChooseFilter(HWND dialog, int index) {
    constexpr int kTypes = 1136;
    const HWND types = GetDlgItem(dialog, kTypes);
    SendMessageW(types, CB_SETCURSEL, static_cast<WPARAM>(index - 1), 0);
    for (const int notice : {CBN_SELENDOK, CBN_SELCHANGE}) {
        SendMessageW(dialog, WM_COMMAND, MAKEWPARAM(kTypes, notice), reinterpret_cast<LPARAM>(types));
        SendMessageW(GetParent(types), WM_COMMAND, MAKEWPARAM(kTypes, notice),
                     reinterpret_cast<LPARAM>(types));
    }
}

int ChosenFilter(HWND dialog) {
    constexpr int kTypes = 1136;
    return static_cast<int>(SendMessageW(GetDlgItem(dialog, kTypes), CB_GETCURSEL, 0, 0)) + 1;
}

bool IsChecked(HWND window, UINT command) {
    return (GetMenuState(GetMenu(window), command, MF_BYCOMMAND) & MF_CHECKED) != 0;
}

RunningProgram::RunningProgram(int show) {
    thread_ = std::thread([this, show] {
        result_ = RunSkyvault(GetModuleHandleW(nullptr), show);
        ended_ = true;
    });
    window_ = WaitForWindow(L"Skyvault", L"", GetCurrentProcessId());
    // The first message answered by the loop says that start-up is over.
    DWORD_PTR answer = 0;
    if (window_ != nullptr) SendMessageTimeoutW(window_, WM_NULL, 0, 0, SMTO_NORMAL, kPatience, &answer);
}

RunningProgram::~RunningProgram() {
    Close();
}

void RunningProgram::Command(UINT id) const {
    DWORD_PTR answer = 0;
    SendMessageTimeoutW(window_, WM_COMMAND, id, 0, SMTO_NORMAL, kPatience, &answer);
}

void RunningProgram::StartCommand(UINT id) const {
    PostMessageW(window_, WM_COMMAND, id, 0);
}

bool RunningProgram::Import(UINT command, const std::wstring& dialogTitle, const std::wstring& path,
                            const std::wstring& newTitle) const {
    StartCommand(command);
    const HWND dialog = WaitForDialog(dialogTitle);
    return dialog != nullptr && AnswerFileDialog(dialog, path) &&
           Eventually([&] { return Title() == newTitle; });
}

bool RunningProgram::Focus() const {
    return Eventually([&] {
        SetForegroundWindow(window_);
        GUITHREADINFO info{};
        info.cbSize = sizeof info;
        return GetForegroundWindow() == window_ &&
               GetGUIThreadInfo(GetWindowThreadProcessId(window_, nullptr), &info) &&
               info.hwndFocus == window_;
    });
}

Color8 RunningProgram::PixelAt(int x, int y) const {
    const HDC context = GetDC(window_);
    const COLORREF colour = GetPixel(context, x, y);
    ReleaseDC(window_, context);
    return {GetRValue(colour), GetGValue(colour), GetBValue(colour), 255};
}

int RunningProgram::Close() {
    if (thread_.joinable()) {
        if (window_ != nullptr) StartCommand(kCommandExit);
        if (!Eventually([&] { return ended_.load(); })) {
            std::printf("the program does not end\n");
            PrintWindows(GetCurrentProcessId());
            TerminateProcess(GetCurrentProcess(), 71);
        }
        thread_.join();
    }
    return result_;
}

}  // namespace skyvault::test
