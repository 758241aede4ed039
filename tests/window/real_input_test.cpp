// Real key input, as from the keyboard: the program in this process, and once as the program it is.

#include <algorithm>
#include <memory>

#include "platform/files.h"
#include "tests/window/program_fixture.h"

namespace skyvault::test {
namespace {

class RealInput : public ProgramTest {};

TEST_F(RealInput, KeysDoWhatTheirMenuItemsDo) {
    ASSERT_TRUE(StartWithPlace());
    ASSERT_TRUE(Activate(Window()));
    struct Row {
        std::initializer_list<WORD> keys;
        Place place;  ///< ten pixels to a degree
    };
    // Ctrl goes before Shift.
    for (const Row& row : {Row{{VK_RIGHT}, {1810, 900}}, Row{{VK_SHIFT, VK_LEFT}, {1650, 900}},
                           Row{{VK_CONTROL, VK_RIGHT}, {1802, 900}}, Row{{VK_UP}, {1800, 890}},
                           Row{{VK_CONTROL, VK_SHIFT, VK_RIGHT}, {1802, 900}}}) {
        const HeldKeys held(row.keys);
        EXPECT_TRUE(Shows(kFront, row.place)) << std::hex << *(row.keys.end() - 1);
        Command(IDM_RESET_ALL);
        ASSERT_TRUE(Shows(kFront, kFrontPlace));
    }
    // A key's repetition counts while it is down, and is late once it is not.
    constexpr LPARAM kRepeated = 1 << 30;
    SendMessageW(Window(), WM_KEYDOWN, VK_RIGHT, kRepeated);
    EXPECT_TRUE(Shows(kFront, kFrontPlace));
    {
        const HeldKeys held({VK_RIGHT});
        EXPECT_TRUE(Shows(kFront, {1810, 900}));
        SendMessageW(Window(), WM_KEYDOWN, VK_RIGHT, kRepeated);
        EXPECT_TRUE(Shows(kFront, {1820, 900}));
    }
    Command(IDM_RESET_ALL);
    Press(VK_F11);
    ASSERT_TRUE(Shows(kBeside, kBesidePlace));
    Press(VK_ADD);
    EXPECT_TRUE(Shows(kBeside, {1800 + 528, 900}));
    // Typed characters, small and capital.
    for (const bool on : {true, false}) {
        const HeldKeys capital(on ? std::initializer_list<WORD>{'M'}
                                  : std::initializer_list<WORD>{VK_SHIFT, 'M'});
        EXPECT_TRUE(BecomesChecked(IDM_MAGNIFYING_GLASS, on));
    }
    Press(VK_TAB);
    EXPECT_TRUE(BecomesChecked(IDM_CROSSHAIR));
}

TEST_F(RealInput, FirstStartOpensTheExampleByTheKeyboardAlone) {
    PutSettings(nullptr);
    STARTUPINFOW start{};
    start.cb = sizeof start;
    PROCESS_INFORMATION process{};
    std::wstring path = ProgramFolder() + L"\\Skyvault.exe";
    ASSERT_TRUE(CreateProcessW(path.c_str(), path.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                               &start, &process));
    const std::shared_ptr<void> ended(process.hProcess,
                                      [](HANDLE program) { TerminateProcess(program, 72); });
    const HWND window = WaitForWindow(L"Skyvault", process.dwProcessId);
    ASSERT_NE(window, nullptr);
    EXPECT_EQ(TextOf(window), L"Skyvault");
    RECT rect{};
    GetWindowRect(window, &rect);
    const LONG height = GetSystemMetrics(SM_CYSCREEN) - 96;
    EXPECT_EQ(rect.left, 32);
    EXPECT_EQ(rect.bottom - rect.top, height);
    EXPECT_EQ(rect.right - rect.left, std::min<LONG>(height * 16 / 9, GetSystemMetrics(SM_CXSCREEN) - 64));
    ASSERT_TRUE(Activate(window));
    // Menu: FILE, "Import 360° photo", "Equirectangular...". Each Return opens one more popup.
    Press(VK_MENU);
    const auto inMenu = [&] {
        GUITHREADINFO info{};
        info.cbSize = sizeof info;
        return GetGUIThreadInfo(GetWindowThreadProcessId(window, nullptr), &info) &&
               (info.flags & GUI_INMENUMODE) != 0;
    };
    EXPECT_TRUE(Eventually(inMenu));
    for (const std::size_t popups : {1u, 2u}) {
        Press(VK_RETURN);
        ASSERT_TRUE(Eventually([&] { return WindowsOf(process.dwProcessId, L"#32768").size() == popups; }))
            << popups;
    }
    Press(VK_RETURN);
    const HWND dialog = WaitForDialog(L"Select equirectangular", process.dwProcessId);
    ASSERT_NE(dialog, nullptr);
    const HWND name = NameBox(dialog);
    ASSERT_TRUE(Eventually([&] { return FocusOf(dialog) == name || IsChild(name, FocusOf(dialog)); }));
    Type(L"Mountain lake.jpg");
    Press(VK_RETURN);
    ASSERT_TRUE(Eventually([&] {
        return TextOf(window) ==
               L"Skyvault - Mountain lake.jpg Equirectangular (4096 x 2048) LDR 24 bpp RGB int";
    })) << testing::PrintToString(TextOf(window));
    ASSERT_TRUE(Activate(window));
    // The preview is higher than the equirectangular view: it reaches into the bar above.
    RECT client{};
    GetClientRect(window, &client);
    const auto isWhite = [&](int height) {
        return PixelAt(window, client.right / 2, (client.bottom - height) / 2 + 3) == kOpaqueWhite;
    };
    const int equirectangular = client.right / 2, preview = client.right * 9 / 16;
    EXPECT_TRUE(Eventually([&] { return !isWhite(equirectangular); }));
    EXPECT_TRUE(isWhite(preview));
    Press(VK_SPACE);
    EXPECT_TRUE(Eventually([&] { return !isWhite(preview); }));
    {
        const HeldKeys held({VK_MENU, VK_F4});
        EXPECT_EQ(WaitForSingleObject(process.hProcess, kPatience), WAIT_OBJECT_0);
    }
    DWORD status = 1;
    EXPECT_TRUE(GetExitCodeProcess(process.hProcess, &status));
    EXPECT_EQ(status, 0u);
    EXPECT_EQ(ReadSettings().view, static_cast<std::int32_t>(PanoramaFormat::Preview));
}

}  // namespace
}  // namespace skyvault::test
