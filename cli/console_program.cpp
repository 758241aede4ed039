#include "cli/console_program.h"

#include <cstdlib>
#include <new>

#include "cli/batch.h"
#include "cli/batch_worker.h"
#include "cli/console_feedback.h"
#include "cli/convert.h"
#include "cli/options.h"
#include "cli/terminal.h"
#include "codecs/picture_codec.h"
#include "platform/clock.h"
#include "platform/output_file.h"
#include "platform/utf8.h"

namespace skyvault {

namespace {

struct Runner {
    ExitStatus operator()(const Announcement& announcement) const {
        const bool good = announcement.status == kDone;
        WriteText(good ? OutputStream::Standard : OutputStream::Messages, announcement.text);
        return announcement.status;
    }
    ExitStatus operator()(const ConvertOptions& options) const { return RunConvert(options); }
    ExitStatus operator()(const BatchOptions& options) const { return RunBatchCommand(options); }
    ExitStatus operator()(const InfoOptions& options) const { return RunInfo(options); }
};

/// An export cannot be stopped midway, but the program can, once nothing half-written is left. A file that
/// is still open is waited for.
void EndInterrupted() {
    if (SaysNoMore()) return;
    if (EndBatchWorker()) std::_Exit(kInterrupted);
    if (IsTerminal(OutputStream::Messages)) WriteText(OutputStream::Messages, L"\n");
    WriteMessage(L"interrupted");
    SayNoMore();
    while (!AbandonPendingOutputs()) SleepMilliseconds(20);
    std::_Exit(kInterrupted);
}

void EndAborted() {
    WriteMessage(L"A picture library gave up, most likely for lack of memory");
    SayNoMore();
    AbandonPendingOutputs();
    std::_Exit(kFailed);
}

ExitStatus Run(const std::vector<std::wstring>& arguments) {
    try {
        const ExitStatus status = std::visit(Runner{}, ParseArguments(arguments));
        const std::wstring trouble = status == kFailed ? CodecTrouble() : std::wstring();
        if (!trouble.empty()) WriteMessage(trouble);
        if (IsWholeSoFar(OutputStream::Standard)) return status;
        WriteMessage(L"Could not write to the standard output");
        return status == kDone ? kFailed : status;
    } catch (const std::bad_alloc&) {
        WriteMessage(L"Out of memory");
        return kFailed;
    } catch (const std::exception& trouble) {
        // Of the system, as a thread that cannot be started.
        WriteMessage(FromSystemBytes(trouble.what()));
        return kFailed;
    }
}

}  // namespace

void WatchForInterrupts() {
    OnInterrupt(EndInterrupted);
}

int RunConsoleProgram(const std::vector<std::wstring>& arguments) {
    WatchForInterrupts();
    OnAbort(EndAborted);
    const ExitStatus status = Run(arguments);
    // What was interrupted failed, but the interruption is what ends the program.
    while (SaysNoMore()) SleepMilliseconds(20);
    return status;
}

}  // namespace skyvault
