#include <array>
#include <new>

#include "platform/files.h"
#include "platform/path_text.h"
#include "session/commands.h"
#include "session/import_panorama.h"
#include "session/layouts.h"
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

/// An import that failed without a word. A generator reads its picture or does without it: all that it can
/// lack is memory.
std::wstring FailureText(const LayoutRow& layout, const std::wstring& path) {
    const bool generator = layout.exportCommand == 0;
    return generator ? L"Out of memory" : L"Could not open \"" + path + L"\"";
}

}  // namespace

void ImportFiles(Session& session, const std::vector<std::wstring>& paths, PanoramaFormat format) {
    const LayoutRow* layout = FindLayout(format);
    if (layout == nullptr || layout->importCommand == 0) return;
    if (FileExists(paths.front())) session.settings.importPath = FolderPart(paths.front());

    // The old panorama first: two large ones may not fit into memory.
    session.panorama.reset();
    session.feedback.Forget();
    {
        const ProgressScope progress(session.host);
        session.panorama.reset(new (std::nothrow)
                                   Panorama(session.feedback, session.settings, &session.host));
        if (session.panorama != nullptr) ImportPanorama(*session.panorama, paths, format);
    }
    // Not every import says itself that it failed.
    if (session.panorama != nullptr && session.panorama->IsEmpty() && !session.feedback.Any()) {
        session.host.Error(FailureText(*layout, paths.front()));
    }
    // A new panorama starts without mirrors.
    session.host.UpdateMenuChecks();
    Refresh(session);
}

void ImportCommand(Session& session, PanoramaFormat format) {
    const LayoutRow* layout = FindLayout(format);
    if (layout == nullptr || layout->importCommand == 0) return;
    const std::vector<std::wstring> paths = AskForSources(session, *layout);
    if (!paths.front().empty()) ImportFiles(session, paths, format);
}

}  // namespace skyvault
