#include <array>
#include <new>

#include "platform/files.h"
#include "platform/path_text.h"
#include "session/commands.h"
#include "session/import_panorama.h"
#include "session/layouts.h"
#include "session/not_available.h"
#include "session/progress_scope.h"

namespace skyvault {
namespace {

/// Six paths, in the order of the faces; the first cancelled dialog ends the asking and leaves the rest
/// empty.
std::vector<std::wstring> AskForFaces(Session& session, FileDialogKind dialog) {
    constexpr std::array kTitles = {
        L"Select front face", L"Select right face",    L"Select back face",
        L"Select left face",  L"Select top (up) face", L"Select bottom (down) face",
    };
    std::vector<std::wstring> paths(kTitles.size());
    std::wstring folder = session.settings.importPath;
    for (std::size_t i = 0; i < paths.size(); ++i) {
        paths[i] = session.host.AskForFile(dialog, folder, kTitles[i]);
        if (paths[i].empty()) break;
        folder = FolderPart(paths[i]);
    }
    return paths;
}

std::vector<std::wstring> AskForSources(Session& session, const LayoutRow& layout) {
    if (layout.format == PanoramaFormat::SingleFiles) return AskForFaces(session, layout.openDialog);
    return {session.host.AskForFile(layout.openDialog, session.settings.importPath, layout.importTitle)};
}

}  // namespace

void ImportCommand(Session& session, PanoramaFormat format) {
    const LayoutRow* layout = FindLayout(format);
    if (layout == nullptr || layout->importCommand == 0) return;

    const std::vector<std::wstring> paths = AskForSources(session, *layout);
    if (paths.front().empty()) return;
    if (FileExists(paths.front())) session.settings.importPath = FolderPart(paths.front());

    if (!layout->ImportReady()) {
        TellNotAvailable(session.host, layout->name);
        return;
    }
    // The old panorama first: two large ones may not fit into memory.
    session.panorama.reset();
    {
        const ProgressScope progress(session.host);
        session.panorama.reset(new (std::nothrow) Panorama(session.host, session.settings, &session.host));
        if (session.panorama != nullptr) ImportPanorama(*session.panorama, paths, format);
    }
    // The imports that read pictures of a layout leave it to their caller to say so.
    const bool silent = format >= PanoramaFormat::HorizontalCross && format <= PanoramaFormat::InteriorSquare;
    if (silent && session.panorama != nullptr && session.panorama->IsEmpty()) {
        session.host.Error(L"Could not open \"" + paths.front() + L"\"");
    }
    // A new panorama starts without mirrors.
    session.host.UpdateMenuChecks();
    Refresh(session);
}

}  // namespace skyvault
