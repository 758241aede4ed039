#include "cli/batch.h"

#include "cli/console_feedback.h"
#include "cli/convert.h"
#include "cli/terminal.h"
#include "cli/work_settings.h"
#include "platform/parallel_rows.h"
#include "platform/path_text.h"
#include "session/progress_scope.h"

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

    void OnEnd(const BatchItem& item, BatchOutcome outcome, const ConversionResult& result) override {
        const std::wstring& source = item.sources.front();
        if (outcome == BatchOutcome::Failed) {
            const bool named = result.reason.find(source) != std::wstring::npos;
            feedback_.Error(named ? result.reason : Quoted(source) + L": " + result.reason);
            return;
        }
        feedback_.HideBar();
        TellOfMissingFaces(result, item.sources);
        if (quiet_) return;
        const wchar_t* const word = outcome == BatchOutcome::Skipped ? L"skipped" : L"converted";
        WriteText(OutputStream::Standard, std::wstring(word) + L"\t" + source + L"\t" + item.output + L"\n");
    }

  private:
    ConsoleFeedback& feedback_;
    const bool quiet_;
};

}  // namespace

ExitStatus RunBatchCommand(const BatchOptions& options) {
    AppState settings;
    if (!LoadWorkSettings(options, settings)) {
        WriteMessage(L"Could not open \"" + options.settingsFile + L"\"");
        return kFailed;
    }
    BatchJob job = options.job;
    job.modifications = ModificationsOf(options);
    const bool namesFaces = job.from == PanoramaFormat::SingleFiles || job.to == PanoramaFormat::SingleFiles;
    if (namesFaces && *FaceAffix(settings.fileNamingSystem, 0) == L'\0') {
        WriteMessage(L"FileNamingSystem goes from 0 to 5, not " + std::to_wstring(settings.fileNamingSystem));
        return kFailed;
    }
    BatchPlan plan = PlanBatch(job, settings.fileNamingSystem);
    if (!plan.obstacle.empty()) {
        const bool aboutDestination = plan.obstacle.starts_with(L"Destination");
        const std::wstring& folder = aboutDestination ? job.destinationFolder : job.sourceFolder;
        WriteMessage(plan.obstacle + L": " + Quoted(folder));
        return kFailed;
    }
    RefuseSharedResults(plan.items);
    const std::vector<BatchItem> items = ShardOfBatch(std::move(plan.items), options.shard, options.shards);
    SetThreadCount(options.threads);

    ConsoleFeedback feedback(options.quiet);
    BatchCounts counts;
    {
        const ProgressScope progress(feedback);
        Reporter reporter(feedback, options.quiet);
        counts = RunBatch(job, items, options.skipExisting, settings, reporter);
    }
    if (!options.quiet) {
        WriteText(OutputStream::Standard, std::to_wstring(counts.converted) + L" converted, " +
                                              std::to_wstring(counts.failed) + L" failed, " +
                                              std::to_wstring(counts.skipped) + L" skipped\n");
    }
    return counts.failed == 0 ? kDone : kFailed;
}

}  // namespace skyvault
