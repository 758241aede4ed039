#include <array>

#include "platform/feedback.h"
#include "platform/files.h"
#include "platform/path_text.h"
#include "session/commands.h"
#include "session/conversion.h"
#include "session/messages.h"

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
    if (layout.sources > 1) return AskForFaces(session, layout.openDialog);
    return {session.host.AskForFile(layout.openDialog, session.settings.importPath, layout.importTitle)};
}

}  // namespace

void ImportFiles(Session& session, const std::vector<std::wstring>& paths, const LayoutRow& layout) {
    if (FileExists(paths.front())) session.settings.importPath = FolderPart(paths.front());

    // The old panorama first: two large ones may not fit into memory.
    session.panorama.reset();
    session.panorama = std::make_unique<Panorama>();
    session.history = {};
    Outcome imported;
    {
        const ProgressScope progress(session.host);
        imported = ImportPanorama(layout, paths, session.settings, session.host, *session.panorama);
    }
    // A new panorama starts without mirrors.
    session.host.UpdateMenuChecks();
    Refresh(session);
    std::wstring message = MessageOf(imported);
    if (imported.IsDone()) {
        for (const std::wstring& trouble : ImportTroubles(*session.panorama, layout, paths)) {
            message += (message.empty() ? L"" : L"\n") + trouble;
        }
    }
    if (!message.empty()) session.host.Error(message);
}

void ImportCommand(Session& session, const LayoutRow& layout) {
    const std::vector<std::wstring> paths = AskForSources(session, layout);
    if (!paths.front().empty()) ImportFiles(session, paths, layout);
}

}  // namespace skyvault
