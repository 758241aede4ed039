#include <algorithm>
#include <cmath>

#include "platform/path_text.h"
#include "resources/resource_ids.h"
#include "session/commands.h"
#include "session/conversion.h"
#include "session/messages.h"

namespace skyvault {
namespace {

/// The layout the window shows; null when the stored number is none that can be a view.
const LayoutRow* CurrentView(const Session& session) {
    const LayoutRow* layout = FindLayout(static_cast<PanoramaFormat>(session.settings.view));
    return layout != nullptr && layout->viewCommand != 0 ? layout : nullptr;
}

/// " Equirectangular (4096 x 2048) LDR 24 bpp RGB int"; empty for a panorama without pixels.
std::wstring SizeText(const Panorama& panorama) {
    if (panorama.equirectSource.IsValid()) {
        const Image& source = panorama.equirectSource;
        return L" Equirectangular (" + std::to_wstring(source.width) + L" x " +
               std::to_wstring(source.height) + L") " + FormatName(source.format);
    }
    const auto face = std::find_if(panorama.faces.begin(), panorama.faces.end(),
                                   [](const Image& candidate) { return candidate.IsValid(); });
    if (face == panorama.faces.end()) return {};
    const std::wstring edge = std::to_wstring(panorama.faceSize);
    return L" Cubemap (" + edge + L" x " + edge + L" x 6) " + FormatName(face->format);
}

void Toggle(Session& session, bool& flag) {
    flag = !flag;
    session.host.UpdateMenuChecks();
    Refresh(session);
}

}  // namespace

void SetView(Session& session, const LayoutRow& layout) {
    session.settings.view = static_cast<std::int32_t>(layout.format);
    session.host.UpdateMenuChecks();
    Refresh(session);
}

void ScalePreviewFov(Session& session, float factor) {
    // Infinity could not be scaled back.
    const float scaled = session.settings.previewFov * factor;
    if (std::isfinite(scaled)) session.settings.previewFov = scaled;
    Refresh(session);
}

void ToggleCrosshair(Session& session) {
    Toggle(session, session.settings.crosshair);
}

void ToggleMagnifyingGlass(Session& session) {
    Toggle(session, session.settings.magnifyingGlass);
}

void ApplyOptions(Session& session) {
    if (session.panorama == nullptr) return;
    session.panorama->logoPicture.Clear();
    session.panorama->missingLogo.clear();
    Refresh(session);
}

void Refresh(Session& session) {
    if (session.panorama == nullptr || !session.host.CanShow()) return;
    if (const LayoutRow* layout = CurrentView(session)) {
        Panorama& panorama = *session.panorama;
        const Outcome logo = LoadLogo(panorama, session.settings);
        const Outcome rendered = RenderView(*layout, session.host.Size(), session.previewCamera,
                                            session.settings, session.host, panorama);
        // An empty panorama is shown too: the picture before it is no longer there.
        if (rendered.IsDone() || panorama.IsEmpty()) session.host.Show(panorama.resultPicture);
        if (rendered.reason == Reason::NoMemory) session.host.Error(MessageOf(rendered));
        // The disc is there without its picture, so that the size can be seen.
        if (!logo.IsDone()) session.host.Error(MessageOf(logo));
    }
    std::wstring title = WindowTitle(session);
    if (title == session.title) return;
    session.host.SetTitle(title);
    session.title = std::move(title);
}

std::wstring WindowTitle(const Session& session) {
    if (session.panorama == nullptr) return L"Skyvault";
    const Panorama& panorama = *session.panorama;
    return L"Skyvault - " + std::wstring(FileNamePart(panorama.path)) + SizeText(panorama);
}

std::vector<MenuCheck> MenuChecks(const Session& session) {
    std::vector<MenuCheck> checks;
    const LayoutRow* current = CurrentView(session);
    for (const LayoutRow& layout : Layouts()) {
        if (layout.viewCommand != 0) checks.push_back({layout.viewCommand, &layout == current});
    }
    checks.push_back({IDM_CROSSHAIR, session.settings.crosshair});
    checks.push_back({IDM_MAGNIFYING_GLASS, session.settings.magnifyingGlass});
    const Modifications* modifications = session.panorama ? &session.panorama->modifications : nullptr;
    const auto isSet = [&](bool Modifications::*flag) {
        return modifications != nullptr && modifications->*flag;
    };
    checks.push_back({IDM_FLIP_HORIZONTAL, isSet(&Modifications::flipHorizontal)});
    checks.push_back({IDM_MIRROR_TOP_TO_BOTTOM, isSet(&Modifications::mirrorTopToBottom)});
    checks.push_back({IDM_MIRROR_FRONT_TO_BACK, isSet(&Modifications::mirrorFrontToBack)});
    return checks;
}

}  // namespace skyvault
