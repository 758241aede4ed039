// The desktop program's entry point.

#include <windows.h>
// After windows.h:
#include <shellapi.h>

#include <filesystem>

#include "app/program.h"

namespace {

/// The files that the program was started with, by their whole paths.
std::vector<std::wstring> FilesOfCommandLine() {
    int count = 0;
    wchar_t** const words = CommandLineToArgvW(GetCommandLineW(), &count);
    std::vector<std::wstring> files;
    for (int i = 1; words != nullptr && i < count; ++i) {
        std::error_code unknown;
        const std::filesystem::path whole = std::filesystem::absolute(words[i], unknown);
        files.push_back(unknown ? words[i] : whole.wstring());
    }
    LocalFree(words);
    return files;
}

}  // namespace

int WINAPI wWinMain(HINSTANCE instance, HINSTANCE, PWSTR, int showCommand) {
    return skyvault::RunSkyvault(instance, showCommand, FilesOfCommandLine());
}
