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

}  // namespace

void ExportCommand(Session& session, const LayoutRow& layout) {
    if (session.panorama == nullptr) return;
    const std::wstring chosen =
        session.host.AskForFile(layout.saveDialog, session.settings.exportPath, L"Export Panorama");
    if (chosen.empty()) return;
    session.settings.exportPath = FolderPart(chosen);

    Outcome exported;
    {
        const ProgressScope progress(session.host);
        exported = ExportPanorama(layout, WithExportPrefix(layout, chosen), session.previewCamera,
                                  session.settings, session.host, *session.panorama);
    }
    if (exported.IsDone()) {
        session.host.Information(L"360° photo successfully exported!\n\n" + exported.infoLog);
    } else {
        // Nobody may believe that the file is there.
        session.host.Error(MessageOf(exported));
    }

    if (layout.viewCommand != 0) session.settings.view = static_cast<std::int32_t>(layout.format);
    session.host.UpdateMenuChecks();
    ShowExported(session, layout);
}

}  // namespace skyvault
