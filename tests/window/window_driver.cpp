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

/// The tests read and write pictures themselves; their thread pumps no messages.
class ComForTests final : public testing::Environment {
    void SetUp() override { CoInitializeEx(nullptr, COINIT_MULTITHREADED); }
    void TearDown() override { CoUninitialize(); }
};
const testing::Environment* const comForTests = testing::AddGlobalTestEnvironment(new ComForTests);

constexpr const wchar_t* kDialogClass = L"#32770";
constexpr int kTextOfMessageBox = 0xffff;

std::wstring SettingsFile() {
    return SettingsPath(ProgramFolder());
}

/// For whoever waits in vain. A disabled window has a modal box above it.
void PrintWindows(DWORD process) {
    std::printf("waited in vain; the windows of the process, topmost first:\n");
    for (const HWND window : WindowsOf(process, nullptr)) {
        wchar_t title[128] = L"";
        InternalGetWindowText(window, title, 128);  // not by a message, which might wait
        std::printf("  \"%s\"%s\n", ToUtf8(title).c_str(), IsWindowEnabled(window) ? "" : " disabled");
    }
    std::fflush(stdout);
}

HWND WaitFor(DWORD process, const wchar_t* windowClass, const std::function<bool(HWND)>& wanted) {
    HWND found = nullptr;
    const bool came = Eventually([&] {
        for (const HWND window : WindowsOf(process, windowClass)) found = wanted(window) ? window : found;
        return found != nullptr;
    });
    if (!came) PrintWindows(process);
    return found;
}

void SendInputOf(WORD key, WORD scan, DWORD flags) {
    INPUT input{};
    input.type = INPUT_KEYBOARD;
    input.ki = {key, scan, flags, 0, 0};
    SendInput(1, &input, sizeof input);
}

void SendKey(WORD key, DWORD flags) {
    // The arrow block's keys; without the mark they would be the number pad's.
    const bool extended = (key >= VK_PRIOR && key <= VK_DOWN) || key == VK_INSERT || key == VK_DELETE;
    SendInputOf(key, static_cast<WORD>(MapVirtualKeyW(key, MAPVK_VK_TO_VSC)),
                flags | (extended ? KEYEVENTF_EXTENDEDKEY : 0));
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

void Type(const std::wstring& text) {
    for (const wchar_t c : text) {
        SendInputOf(0, c, KEYEVENTF_UNICODE);
        SendInputOf(0, c, KEYEVENTF_UNICODE | KEYEVENTF_KEYUP);
    }
}

bool Activate(HWND window) {
    return Eventually([&] {
        SetForegroundWindow(window);
        return GetForegroundWindow() == window && FocusOf(window) != nullptr;
    });
}

HWND FocusOf(HWND window) {
    GUITHREADINFO info{};
    info.cbSize = sizeof info;
    return GetGUIThreadInfo(GetWindowThreadProcessId(window, nullptr), &info) ? info.hwndFocus : nullptr;
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
    return WaitFor(process, windowClass, [](HWND) { return true; });
}

HWND WaitForDialog(const std::wstring& title, DWORD process) {
    return WaitFor(process, kDialogClass, [&](HWND window) { return TextOf(window) == title; });
}

HWND WaitForMessage() {
    return WaitFor(GetCurrentProcessId(), kDialogClass, [](HWND window) {
        return GetDlgItem(window, kTextOfMessageBox) != nullptr && TextOf(window) == kProgramName;
    });
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

HWND NameBox(HWND dialog) {
    constexpr int kFileDialog = 1148, kFolderPicker = 1152;
    HWND name = nullptr;
    Eventually([&] {
        name = GetDlgItem(dialog, kFileDialog);
        if (name == nullptr) name = GetDlgItem(dialog, kFolderPicker);
        return name != nullptr;
    });
    return name;
}

bool AnswerFileDialog(HWND dialog, const std::wstring& path, int button) {
    SendMessageW(NameBox(dialog), WM_SETTEXT, 0, reinterpret_cast<LPARAM>(path.c_str()));
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

RunningProgram::RunningProgram(int show) {
    thread_ = std::thread([this, show] {
        result_ = RunSkyvault(GetModuleHandleW(nullptr), show);
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
            PrintWindows(GetCurrentProcessId());
            TerminateProcess(GetCurrentProcess(), 71);
        }
        thread_.join();
    }
    return result_;
}

}  // namespace skyvault::test
