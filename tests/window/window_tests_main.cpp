// The window tests' entry point: a crash or a program that hangs ends the run with a status of its own.

#include <gtest/gtest.h>
#include <windows.h>

#include <cstdio>
#include <thread>

namespace {

LONG WINAPI OnCrash(EXCEPTION_POINTERS* exception) {
    std::printf("crashed with exception %08lx\n", exception->ExceptionRecord->ExceptionCode);
    std::fflush(stdout);
    TerminateProcess(GetCurrentProcess(), 70);
    return EXCEPTION_EXECUTE_HANDLER;
}

}  // namespace

int main(int argc, char** argv) {
    SetUnhandledExceptionFilter(OnCrash);
    std::setvbuf(stdout, nullptr, _IONBF, 0);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
