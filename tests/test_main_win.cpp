#include <windows.h>

#include <cstdio>

#include "tests/test_main.h"

namespace skyvault::test {

namespace {

LONG WINAPI PrintAndEnd(EXCEPTION_POINTERS* exception) {
    std::fprintf(stderr, "crashed with exception %08lx\n", exception->ExceptionRecord->ExceptionCode);
    std::fflush(stderr);
    TerminateProcess(GetCurrentProcess(), 70);
    return EXCEPTION_EXECUTE_HANDLER;
}

}  // namespace

void ReportCrashes() {
    SetUnhandledExceptionFilter(PrintAndEnd);
}

}  // namespace skyvault::test
