#include "cli/console_program.h"

#include <cstdlib>
#include <new>

#include "cli/console_feedback.h"
#include "cli/convert.h"
#include "cli/options.h"
#include "cli/terminal.h"
#include "platform/clock.h"
#include "platform/output_file.h"

namespace skyvault {

namespace {

struct Runner {
    ExitStatus operator()(const Announcement& announcement) const {
        const bool good = announcement.status == kDone;
        WriteText(good ? OutputStream::Standard : OutputStream::Messages, announcement.text);
        return announcement.status;
    }
    ExitStatus operator()(const ConvertOptions& options) const { return RunConvert(options); }
    ExitStatus operator()(const InfoOptions& options) const { return RunInfo(options); }
};

/// An export cannot be stopped midway, but the program can, once nothing half-written is left. A file that
/// is still open is waited for.
void EndInterrupted() {
    while (!AbandonPendingOutputs()) SleepMilliseconds(20);
    if (IsTerminal(OutputStream::Messages)) WriteText(OutputStream::Messages, L"\n");
    WriteMessage(L"interrupted");
    std::_Exit(kInterrupted);
}

}  // namespace

int RunConsoleProgram(const std::vector<std::wstring>& arguments) {
    OnInterrupt(EndInterrupted);
    try {
        return std::visit(Runner{}, ParseArguments(arguments));
    } catch (const std::bad_alloc&) {
        WriteMessage(L"Out of memory");
        return kFailed;
    }
}

}  // namespace skyvault
