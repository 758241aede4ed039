#include "cli/batch.h"

#include "cli/batch_worker.h"
#include "cli/console_feedback.h"
#include "cli/convert.h"
#include "cli/terminal.h"
#include "cli/work_settings.h"
#include "platform/feedback.h"
#include "platform/memory_budget.h"
#include "platform/parallel_rows.h"
#include "platform/path_text.h"
#include "projection/single_files.h"
#include "session/messages.h"

namespace skyvault {
namespace {

/// One line on stdout for each panorama, one on stderr for each that failed, a bar for the whole folder.
class Reporter final : public BatchObserver {
  public:
    Reporter(ConsoleFeedback& feedback, bool quiet) : feedback_(feedback), quiet_(quiet) {}

    bool OnBegin(const BatchItem& item, std::size_t index, std::size_t count) override {
        const float fraction = static_cast<float>(index) / static_cast<float>(count);
        feedback_.SetProgress(fraction, FileNamePart(item.sources.front()));
        return true;
    }

    void OnEnd(const BatchItem& item, BatchEnd end, const ConversionResult& result) override {
        const std::wstring& source = item.sources.front();
        if (end == BatchEnd::Failed) {
            const std::wstring reason = ConsoleLineOf(result.outcome);
            const bool named = reason.find(Printable(source)) != std::wstring::npos;
            feedback_.Error(named ? reason : Quoted(source) + L": " + reason);
            return;
        }
        feedback_.HideBar();
        for (const std::wstring& trouble : result.troubles) WriteMessage(trouble);
        if (quiet_) return;
        const wchar_t* const word = end == BatchEnd::Skipped ? L"skipped" : L"converted";
        WriteText(OutputStream::Standard,
                  std::wstring(word) + L"\t" + Printable(source) + L"\t" + Printable(item.output) + L"\n");
    }

  private:
    ConsoleFeedback& feedback_;
    const bool quiet_;
};

}  // namespace

ExitStatus RunBatchCommand(const BatchOptions& options) {
    AppState settings;
    if (!LoadWorkSettings(options, settings)) {
        WriteMessage(L"Could not open " + Quoted(options.settingsFile));
        return kFailed;
    }
    BatchJob job = options.job;
    job.modifications = ModificationsOf(options);
    job.stripMetadata = options.stripMetadata;
    const bool namesFaces = job.from->sources > 1 || job.to->sources > 1;
    if (namesFaces && NamingSystemOf(settings) != settings.fileNamingSystem) {
        WriteMessage(L"FileNamingSystem goes from 0 to 5, not " + std::to_wstring(settings.fileNamingSystem));
        return kFailed;
    }
    BatchPlan plan = PlanBatch(job, settings);
    if (!plan.obstacle.IsDone()) {
        WriteMessage(LineOf(plan.obstacle));
        return kFailed;
    }
    const std::vector<BatchItem> items = ShardOfBatch(std::move(plan.items), options.shard, options.shards);
    SetThreadCount(options.threads);
    SetMemoryBudget(options.memory);
    WarnOfQuality(options);

    ConsoleFeedback feedback(options.quiet);
    GuardedRun run;
    {
        const ProgressScope progress(feedback);
        Reporter reporter(feedback, options.quiet);
        run = RunGuardedBatch(job, items, options.skipExisting, settings, reporter);
    }
    const BatchCounts& counts = run.counts;
    if (!options.quiet) {
        WriteText(OutputStream::Standard, TextOfCounts(counts) + L"\n");
    }
    if (!run.wholeOutput) WriteMessage(L"Could not write to the standard output");
    return counts.failed == 0 && run.wholeOutput ? kDone : kFailed;
}

}  // namespace skyvault
