#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <optional>

#include "cli/batch_worker.h"
#include "cli/console_program.h"
#include "cli/options.h"
#include "cli/terminal.h"

namespace skyvault {
namespace {

bool useWorkers = false;
std::atomic<pid_t> runningWorker{0};
std::atomic<bool> asked{false};  ///< to end

/// What a worker tells of a panorama: that it begins, or how it ended.
struct Report {
    std::size_t item = 0;
    std::optional<BatchEnd> end;
};

/// Passes everything on, and reports it through a pipe.
class ReportingObserver final : public BatchObserver {
  public:
    ReportingObserver(BatchObserver& inner, int pipe, std::size_t first, std::size_t count)
        : inner_(inner), pipe_(pipe), first_(first), count_(count) {}

    bool OnBegin(const BatchItem& item, std::size_t index, std::size_t) override {
        current_ = first_ + index;
        Send({current_, std::nullopt});
        return inner_.OnBegin(item, current_, count_);
    }
    void OnEnd(const BatchItem& item, BatchEnd end, const ConversionResult& result) override {
        inner_.OnEnd(item, end, result);
        Send({current_, end});
    }

  private:
    /// Shorter than what a pipe takes in one piece.
    void Send(const Report& report) const {
        while (write(pipe_, &report, sizeof report) < 0 && errno == EINTR) {
        }
    }

    BatchObserver& inner_;
    const int pipe_;
    const std::size_t first_, count_;
    std::size_t current_ = 0;
};

bool Receive(int pipe, Report& report) {
    ssize_t count = 0;
    do {
        count = read(pipe, &report, sizeof report);
    } while (count < 0 && errno == EINTR);
    return count == static_cast<ssize_t>(sizeof report);
}

/// The exit status, or -1 for a process that a signal ended.
int WaitFor(pid_t process) {
    int status = 0;
    while (waitpid(process, &status, 0) < 0 && errno == EINTR) {
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

void Count(BatchEnd end, BatchCounts& counts) {
    ++(end == BatchEnd::Converted ? counts.converted
       : end == BatchEnd::Failed  ? counts.failed
                                  : counts.skipped);
}

}  // namespace

void UseBatchWorkers() {
    useWorkers = true;
}

GuardedRun RunGuardedBatch(const BatchJob& job, const std::vector<BatchItem>& items, bool skipExisting,
                           const AppState& settings, BatchObserver& observer) {
    GuardedRun run;
    for (std::size_t next = 0; next < items.size();) {
        int ends[2];
        const pid_t self = getpid();
        const pid_t worker = useWorkers && pipe(ends) == 0 ? fork() : -1;
        if (worker < 0) {
            // Nor without a process to spare.
            const std::vector<BatchItem> rest(items.begin() + static_cast<std::ptrdiff_t>(next), items.end());
            const BatchCounts more = RunBatch(job, rest, skipExisting, settings, observer);
            run.counts.converted += more.converted;
            run.counts.failed += more.failed;
            run.counts.skipped += more.skipped;
            return run;
        }
        if (worker == 0) {
            close(ends[0]);
            // Not to outlive the program, even when that is killed.
            prctl(PR_SET_PDEATHSIG, SIGKILL);
            if (getppid() != self) std::_Exit(kFailed);
            WatchForInterrupts();
            ReportingObserver reporting(observer, ends[1], next, items.size());
            const std::vector<BatchItem> rest(items.begin() + static_cast<std::ptrdiff_t>(next), items.end());
            RunBatch(job, rest, skipExisting, settings, reporting);
            std::_Exit(IsWholeSoFar(OutputStream::Standard) ? kDone : kFailed);
        }
        runningWorker = worker;
        close(ends[1]);
        std::size_t ended = next;
        bool within = false;  // a panorama that has begun and not ended
        for (Report report; Receive(ends[0], report);) {
            within = !report.end;
            if (within) continue;
            Count(*report.end, run.counts);
            ended = report.item + 1;
        }
        close(ends[0]);
        const int status = WaitFor(worker);
        // Whoever answers that ends the program.
        while (asked) pause();
        runningWorker = 0;
        if (status == kInterrupted) std::_Exit(kInterrupted);
        if (status == kFailed) run.wholeOutput = run.wholeOutput && ended < items.size();
        const bool idle = ended == next;
        next = ended;
        if (ended == items.size()) break;
        // Between two of them it was no panorama's fault; one that cannot even begin is not begun for ever.
        if (!within && !idle) continue;
        const BatchItem& broken = items[ended];
        observer.OnEnd(broken, BatchEnd::Failed,
                       {Failure(Reason::LibraryFailed, broken.sources.front()), {}});
        Count(BatchEnd::Failed, run.counts);
        next = ended + 1;
    }
    return run;
}

bool EndBatchWorker() {
    const pid_t worker = runningWorker;
    if (worker == 0) return false;
    asked = true;
    kill(worker, SIGTERM);
    // Whoever else waits for it may be quicker.
    waitpid(worker, nullptr, 0);
    return true;
}

}  // namespace skyvault
