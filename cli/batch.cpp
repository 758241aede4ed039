#include "cli/batch.h"

#include <map>

#include "cli/console_feedback.h"
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

    void OnEnd(const BatchItem& item, BatchOutcome outcome, const std::wstring& reason) override {
        if (outcome == BatchOutcome::Failed) {
            const std::wstring& source = item.sources.front();
            const bool named = reason.find(source) != std::wstring::npos;
            feedback_.Error(named ? reason : L"\"" + source + L"\": " + reason);
        } else if (!quiet_) {
            feedback_.HideBar();
            const wchar_t* const word = outcome == BatchOutcome::Skipped ? L"skipped" : L"converted";
            WriteText(OutputStream::Standard,
                      std::wstring(word) + L"\t" + item.sources.front() + L"\t" + item.output + L"\n");
        }
    }

  private:
    ConsoleFeedback& feedback_;
    const bool quiet_;
};

/// Two sources that differ in their extension only become one file.
void TellOfSharedResults(const std::vector<BatchItem>& items) {
    std::map<std::wstring, const BatchItem*> byResult;
    for (const BatchItem& item : items) {
        const auto [earlier, isNew] = byResult.emplace(item.output, &item);
        if (isNew) continue;
        WriteMessage(L"\"" + earlier->second->sources.front() + L"\" and \"" + item.sources.front() +
                     L"\" have the same result; only one of them stays");
    }
}

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
        WriteMessage(plan.obstacle + L": \"" + folder + L"\"");
        return kFailed;
    }
    const std::vector<BatchItem> items = ShardOfBatch(std::move(plan.items), options.shard, options.shards);
    if (!options.quiet) TellOfSharedResults(items);
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
