// The parts that are the same on every system.
#include "tests/child_process.h"

#include "platform/files.h"
#include "platform/path_text.h"

namespace skyvault::test {

std::wstring ConsoleProgramPath() {
#ifdef _WIN32
    return JoinPath(ProgramFolder(), L"skyvault-cli.exe");
#else
    return JoinPath(ProgramFolder(), L"skyvault-cli");
#endif
}

ProgramResult RunConsole(const std::vector<std::wstring>& arguments) {
    return ChildProcess(ConsoleProgramPath(), arguments).Wait();
}

}  // namespace skyvault::test
