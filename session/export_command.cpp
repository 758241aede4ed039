#include "platform/path_text.h"
#include "session/commands.h"
#include "session/layouts.h"
#include "session/progress_scope.h"

namespace skyvault {

void ExportCommand(Session& session, PanoramaFormat format) {
    const LayoutRow* layout = FindLayout(format);
    if (layout == nullptr || layout->exportCommand == 0 || session.panorama == nullptr) return;

    const std::wstring chosen =
        session.host.AskForFile(layout->saveDialog, session.settings.exportPath, L"Export Panorama");
    if (chosen.empty()) return;
    session.settings.exportPath = FolderPart(chosen);

    const std::wstring path = WithExportPrefix(*layout, chosen);
    std::wstring infoLog;
    bool written = false;
    {
        const ProgressScope progress(session.host);
        session.feedback.Forget();
        written = layout->exportTo(*session.panorama, path, session.previewCamera, infoLog);
    }
    if (!session.feedback.Any()) {
        if (written) {
            session.host.Information(L"360° photo successfully exported!\n\n" + infoLog);
        } else {
            // Nobody may believe that the file is there.
            session.host.Error(L"Could not write \"" + path + L"\"");
        }
    }

    // The window shows what was built for the file, also when it could not be written.
    if (layout->viewCommand != 0) session.settings.view = static_cast<std::int32_t>(layout->format);
    session.host.UpdateMenuChecks();
    if (session.host.CanShow()) ShowResult(*session.panorama);
}

}  // namespace skyvault
