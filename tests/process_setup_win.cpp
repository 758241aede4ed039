// What every test program starts with: a handler of crashes, and COM as in the console program.
#include <windows.h>

#include <gtest/gtest.h>
#include <objbase.h>

#include <cstdio>

namespace skyvault {
namespace {

/// A crash prints what it was and ends the process with a failure, instead of a box nobody answers.
LONG WINAPI PrintAndEnd(EXCEPTION_POINTERS* exception) {
    std::fprintf(stderr, "crashed with exception %08lx\n", exception->ExceptionRecord->ExceptionCode);
    std::fflush(stderr);
    TerminateProcess(GetCurrentProcess(), 70);
    return EXCEPTION_EXECUTE_HANDLER;
}

class ProcessSetup : public testing::Environment {
    void SetUp() override {
        SetUnhandledExceptionFilter(PrintAndEnd);
        CoInitializeEx(nullptr, COINIT_MULTITHREADED);
    }
    void TearDown() override { CoUninitialize(); }
};

const testing::Environment* const setup = testing::AddGlobalTestEnvironment(new ProcessSetup);

}  // namespace
}  // namespace skyvault
