#include "tests/window/window_driver.h"

#include <gtest/gtest.h>
#include <objbase.h>

#include <cstdio>

#include "app/program.h"
#include "app/window_helpers.h"
#include "platform/feedback.h"
#include "platform/files.h"
#include "platform/utf8.h"
#include "resources/resource_ids.h"
#include "settings/settings_file.h"

namespace skyvault::test {
namespace {

constexpr const wchar_t* kDialogClass = L"#32770";
constexpr int kTextOfMessageBox = 0xffff;

std::wstring SettingsFile() {
    return SettingsPath(ProgramFolder());
}

HWND WaitFor(DWORD process, const wchar_t* windowClass, const std::wstring& title, int control = 0) {
    HWND found = nullptr;
    EXPECT_TRUE(Eventually([&] {
        for (const HWND window : WindowsOf(process, windowClass)) {
            const bool has = control == 0 || GetDlgItem(window, control) != nullptr;
            if (has && TextOf(window) == title) found = window;
        }
        return found != nullptr;
    })) << "no window came: "
        << ToUtf8(title);
    return found;
}

void SendKey(WORD key, DWORD flags) {
    // The arrow block's keys; without the mark they would be the number pad's.
    const bool extended = (key >= VK_PRIOR && key <= VK_DOWN) || key == VK_INSERT || key == VK_DELETE;
    INPUT input{};
    input.type = INPUT_KEYBOARD;
    input.ki = {key, static_cast<WORD>(MapVirtualKeyW(key, MAPVK_VK_TO_VSC)),
                flags | (extended ? KEYEVENTF_EXTENDEDKEY : 0), 0, 0};
    SendInput(1, &input, sizeof input);
}

}  // namespace

bool Eventually(const std::function<bool()>& condition) {
    // A test that has failed already is not waited for that long again.
    const ULONGLONG end = GetTickCount64() + (testing::Test::HasFailure() ? 2000 : kPatience);
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
    if (settings == nullptr) return;
    EXPECT_TRUE(SaveSettings(*settings, SettingsFile()).IsDone());
}

AppState ReadSettings() {
    AppState settings = DefaultAppState();
    LoadSettings(settings, SettingsFile(), {-100000, -100000, 100000, 100000});
    return settings;
}

Color8 PixelAt(HWND window, int x, int y) {
    const HDC context = GetDC(window);
    const COLORREF colour = GetPixel(context, x, y);
    ReleaseDC(window, context);
    return {GetRValue(colour), GetGValue(colour), GetBValue(colour), 255};
}

HeldKeys::HeldKeys(std::initializer_list<WORD> keys) : keys_(keys) {
    // Wine answers GetAsyncKeyState for 50 ms out of what a thread last saw: a window that answers faster
    // would still see the keys up.
    Sleep(60);
    for (const WORD key : keys_) SendKey(key, 0);
}

HeldKeys::~HeldKeys() {
    for (auto key = keys_.rbegin(); key != keys_.rend(); ++key) SendKey(*key, KEYEVENTF_KEYUP);
}

void Press(WORD key) {
    const HeldKeys held({key});
}

bool Activate(HWND window) {
    return Eventually([&] {
        SetForegroundWindow(window);
        return GetForegroundWindow() == window && FocusOf(window) != nullptr;
    });
}

GUITHREADINFO ThreadOf(HWND window) {
    GUITHREADINFO info{};
    info.cbSize = sizeof info;
    GetGUIThreadInfo(GetWindowThreadProcessId(window, nullptr), &info);
    return info;
}

HWND FocusOf(HWND window) {
    return ThreadOf(window).hwndFocus;
}

std::vector<HWND> WindowsOf(DWORD process, const wchar_t* windowClass) {
    std::vector<HWND> found;
    for (HWND window = nullptr; (window = FindWindowExW(nullptr, window, windowClass, nullptr)) != nullptr;) {
        DWORD owner = 0;
        GetWindowThreadProcessId(window, &owner);
        if (owner == process && IsWindowVisible(window)) found.push_back(window);
    }
    return found;
}

HWND WaitForWindow(const wchar_t* windowClass, DWORD process) {
    return WaitFor(process, windowClass, kProgramName);
}

HWND WaitForDialog(const std::wstring& title, DWORD process) {
    return WaitFor(process, kDialogClass, title);
}

HWND WaitForMessage() {
    return WaitFor(GetCurrentProcessId(), kDialogClass, kProgramName, kTextOfMessageBox);
}

std::wstring MessageText(HWND box) {
    return TextOf(box, kTextOfMessageBox);
}

bool WaitUntilClosed(HWND dialog) {
    return Eventually([&] { return !IsWindow(dialog); });
}

std::wstring TextOf(HWND window) {
    std::wstring text(1024, L'\0');
    DWORD_PTR length = 0;
    SendMessageTimeoutW(window, WM_GETTEXT, text.size(), reinterpret_cast<LPARAM>(text.data()), SMTO_NORMAL,
                        kPatience, &length);
    text.resize(length);
    return text;
}

std::wstring TextOf(HWND dialog, int control) {
    return TextOf(GetDlgItem(dialog, control));
}

bool PressButton(HWND dialog, int id) {
    PostMessageW(dialog, WM_COMMAND, static_cast<WPARAM>(id), 0);
    return WaitUntilClosed(dialog);
}

std::wstring AnswerMessage() {
    const HWND box = WaitForMessage();
    if (box == nullptr) return L"(no message)";
    std::wstring text = MessageText(box);
    return PressButton(box, IDOK) ? text : L"(does not close)";
}

bool AnswerFileDialog(HWND dialog, const std::wstring& path, int button) {
    constexpr int kFileDialog = 1148, kFolderPicker = 1152;
    HWND name = nullptr;
    EXPECT_TRUE(Eventually([&] {
        name = GetDlgItem(dialog, kFileDialog);
        if (name == nullptr) name = GetDlgItem(dialog, kFolderPicker);
        return name != nullptr;
    }));
    SendMessageW(name, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(path.c_str()));
    return PressButton(dialog, button);
}

void ChooseFilter(HWND dialog, int index) {
    constexpr int kFileTypes = 1136;
    SendDlgItemMessageW(dialog, kFileTypes, CB_SETCURSEL, static_cast<WPARAM>(index - 1), 0);
    for (const int notice : {CBN_SELENDOK, CBN_SELCHANGE}) {
        SendMessageW(dialog, WM_COMMAND, MAKEWPARAM(kFileTypes, notice),
                     reinterpret_cast<LPARAM>(GetDlgItem(dialog, kFileTypes)));
    }
}

std::jthread InBackground(std::function<void()> what) {
    return std::jthread([what = std::move(what)] {
        CoInitialize(nullptr);
        what();
        CoUninitialize();
    });
}

RunningProgram::RunningProgram(int show, std::vector<std::wstring> files) {
    thread_ = std::thread([this, show, files = std::move(files)] {
        result_ = RunSkyvault(GetModuleHandleW(nullptr), show, files);
        ended_ = true;
    });
    window_ = WaitForWindow(kProgramName);
    // The first message answered by the loop tells that start-up is over.
    Command(0);
}

RunningProgram::~RunningProgram() {
    Close();
}

void RunningProgram::Command(UINT id) const {
    DWORD_PTR answer = 0;
    SendMessageTimeoutW(window_, WM_COMMAND, id, 0, SMTO_NORMAL, kPatience, &answer);
}

HWND RunningProgram::Open(UINT id, const std::wstring& dialogTitle) const {
    PostMessageW(window_, WM_COMMAND, id, 0);
    return WaitForDialog(dialogTitle);
}

bool RunningProgram::IsChecked(UINT command) const {
    return (GetMenuState(GetMenu(window_), command, MF_BYCOMMAND) & MF_CHECKED) != 0;
}

int RunningProgram::Close() {
    if (thread_.joinable()) {
        PostMessageW(window_, WM_COMMAND, IDM_EXIT, 0);
        if (!Eventually([&] { return ended_.load(); })) {
            std::printf("the program does not end\n");
            TerminateProcess(GetCurrentProcess(), 71);
        }
        thread_.join();
    }
    return result_;
}

}  // namespace skyvault::test
