#include <windows.h>

#include <objbase.h>

#include "cli/console_program.h"

int wmain(int argc, wchar_t** argv) {
    // The picture codecs are COM objects.
    const bool com = SUCCEEDED(CoInitializeEx(nullptr, COINIT_MULTITHREADED));
    const int status = skyvault::RunConsoleProgram({argv + (argc > 0 ? 1 : 0), argv + argc});
    if (com) CoUninitialize();
    return status;
}
