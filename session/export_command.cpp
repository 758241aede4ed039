#include "platform/files.h"
#include "platform/output_file.h"
#include "platform/path_text.h"
#include "session/commands.h"
#include "session/conversion.h"
#include "session/messages.h"

namespace skyvault {
namespace {

/// Shows what was built for the file, also when it could not be written; for layouts whose files are not what
/// the view shows, their view.
void ShowExported(Session& session, const LayoutRow& layout) {
    if (!session.host.CanShow()) return;
    Panorama& panorama = *session.panorama;
    if (layout.write != nullptr && layout.viewCommand != 0) {
        static_cast<void>(RenderView(layout, session.host.Size(), session.previewCamera, session.settings,
                                     session.host, panorama));
    }
    session.host.Show(panorama.resultPicture);
}

/// What the export would replace and the user may want to keep, for the question about it; empty when
/// nothing.
std::wstring ReplacedFiles(const LayoutRow& layout, const std::wstring& path, const AppState& settings) {
    std::vector<std::wstring> files = FilesOfExport(layout, path, settings);
    std::erase_if(files, [](const std::wstring& file) { return !FileExists(file); });
    if (files.empty()) return {};
    if (files.size() == 1) {
        return std::wstring(FileNamePart(files.front())) + L" already exists.\nDo you want to replace it?";
    }
    std::wstring question = L"These files already exist:\n";
    for (const std::wstring& file : files) question.append(L"\n").append(FileNamePart(file));
    return question + L"\n\nDo you want to replace them?";
}

/// The destination, with the layout's prefix; empty when cancelled.
std::wstring AskForDestination(Session& session, const LayoutRow& layout) {
    const auto mayWrite = [&](const std::wstring& chosen) {
        const std::wstring question =
            ReplacedFiles(layout, WithExportPrefix(layout, chosen), session.settings);
        return question.empty() || session.host.Confirm(question);
    };
    const std::wstring chosen =
        session.host.AskForFile(layout.saveDialog, session.settings.exportPath, L"Export Panorama", mayWrite);
    return chosen.empty() ? chosen : WithExportPrefix(layout, chosen);
}

}  // namespace

void ExportCommand(Session& session, const LayoutRow& layout) {
    if (session.panorama == nullptr) return;
    const std::wstring path = AskForDestination(session, layout);
    if (path.empty()) return;
    session.lastExport = layout.format;
    session.settings.exportPath = FolderPart(path);
    RemoveAbandonedOutputs(session.settings.exportPath);

    Outcome exported;
    {
        const ProgressScope progress(session.host);
        exported = ExportPanorama(layout, path, session.previewCamera, session.settings, session.host,
                                  *session.panorama);
    }
    if (exported.IsDone() || exported.reason == Reason::PageIncomplete) {
        std::wstring text = L"360° photo successfully exported!\n\n" + exported.infoLog;
        for (const std::wstring& trouble : MetadataTroubles(session.panorama->path, exported.lost)) {
            text += L"\n" + trouble;
        }
        session.host.Information(text);
    }
    // Nobody may believe that a file is there when it is not.
    if (!exported.IsDone()) session.host.Error(MessageOf(exported));

    if (layout.viewCommand != 0) session.settings.view = static_cast<std::int32_t>(layout.format);
    session.host.UpdateMenuChecks();
    ShowExported(session, layout);
}

}  // namespace skyvault
