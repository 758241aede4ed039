// Runs programs of ours and looks at what they did, as a shell would.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tests/data_table.h"
#include "tests/temporary_folder.h"

namespace skyvault::test {

struct ProgramResult {
    int exitStatus = -1;   ///< −1 when it did not end by itself
    std::string out, err;  ///< without the carriage returns of Windows
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

    bool HasEnded() { return HasEnded(false); }
    /// As Ctrl+C does (Ctrl+Break on Windows); false when the system has no way to.
    bool Interrupt();
    ProgramResult Wait();

  private:
    bool HasEnded(bool wait);

    TemporaryFolder folder_;     ///< of its output
    std::intptr_t process_ = 0;  ///< what the system knows it by; 0 when it has ended
    int exitStatus_ = -1;
};

/// The console program beside this test program.
std::wstring ConsoleProgramPath();

/// The console program's work, in this process: what matters is what the arguments do.
ProgramResult RunConsole(const std::vector<std::wstring>& arguments);
/// The same: the line's words, and then the arguments as they are.
ProgramResult RunConsole(const std::string& line, const std::vector<std::wstring>& arguments);

/// The arguments of a table's row: its second cell's words, then every further cell as it is; one that starts
/// with @ is a file of the folder.
std::vector<std::wstring> ArgumentsOf(const DataRow& row, const std::wstring& folder = {});

}  // namespace skyvault::test
