// Starts a program of ours and looks at what it did, as a shell would.
#pragma once

#include <memory>
#include <string>
#include <vector>

namespace skyvault::test {

struct ProgramResult {
    int exitStatus = -1;   ///< −1 when it could not be started or did not end by itself
    std::string out, err;  ///< without carriage returns
};

/// A started program. Its output goes to files, so that it never waits for its reader.
class ChildProcess {
  public:
    /// interruptible: Interrupt will be called.
    ChildProcess(const std::wstring& program, const std::vector<std::wstring>& arguments,
                 bool interruptible = false);
    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    bool HasEnded();
    /// As Ctrl+C does (Ctrl+Break on Windows); false when the system has no way to.
    bool Interrupt();
    ProgramResult Wait();

  private:
    struct State;
    std::unique_ptr<State> state_;
};

/// The console program beside this test program, run to its end.
ProgramResult RunConsole(const std::vector<std::wstring>& arguments);
std::wstring ConsoleProgramPath();

}  // namespace skyvault::test
