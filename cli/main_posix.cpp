#include <cstdio>

#include "cli/batch_worker.h"
#include "cli/console_program.h"
#include "cli/terminal.h"
#include "platform/debug_line.h"
#include "platform/utf8.h"

int main(int argc, char** argv) {
    skyvault::PrepareStreams();
    skyvault::UseBatchWorkers();
    // The debugger channel is stderr here, which belongs to the user: what developers read is kept away.
    const skyvault::DebugLineCapture capture;
    // So is what the picture libraries print about files they cannot read; WriteText does not use stdio.
    if (std::FILE* nowhere = std::fopen("/dev/null", "w")) stderr = nowhere;
    std::vector<std::wstring> arguments;
    for (int i = 1; i < argc; ++i) arguments.push_back(skyvault::FromSystemBytes(argv[i]));
    return skyvault::RunConsoleProgram(arguments);
}
