#include <windows.h>

#include <cstdio>

namespace skyvault::test {

namespace {

LONG WINAPI PrintAndEnd(EXCEPTION_POINTERS* exception) {
    std::fprintf(stderr, "crashed with exception %08lx\n", exception->ExceptionRecord->ExceptionCode);
    std::fflush(stderr);
    TerminateProcess(GetCurrentProcess(), 70);
    return EXCEPTION_EXECUTE_HANDLER;
}

}  // namespace

/// A crash prints what it was and ends the process with a failure, instead of a box nobody answers.
void ReportCrashes() {
    SetUnhandledExceptionFilter(PrintAndEnd);
}

}  // namespace skyvault::test
