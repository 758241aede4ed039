#include <cstdio>

#include "cli/console_program.h"
#include "platform/debug_line.h"
#include "platform/utf8.h"

int main(int argc, char** argv) {
    // The debugger channel is stderr here, which belongs to the user: what developers read is kept away.
    const skyvault::DebugLineCapture capture;
    // So is what the picture libraries print about files they cannot read; WriteText does not use stdio.
    if (std::FILE* nowhere = std::fopen("/dev/null", "w")) stderr = nowhere;
    std::vector<std::wstring> arguments;
    for (int i = 1; i < argc; ++i) arguments.push_back(skyvault::FromUtf8(argv[i]));
    return skyvault::RunConsoleProgram(arguments);
}
