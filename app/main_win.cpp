// The desktop program's entry point.

#include <windows.h>

#include "app/program.h"

int WINAPI wWinMain(HINSTANCE instance, HINSTANCE, PWSTR, int showCommand) {
    return skyvault::RunSkyvault(instance, showCommand);
}
