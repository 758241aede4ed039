#include "webexport/web_page.h"

#include "codecs/picture_files.h"
#include "platform/files.h"
#include "platform/path_text.h"
#include "platform/utf8.h"
#include "projection/equirectangular.h"
#include "settings/text_file.h"

namespace skyvault {

namespace {

/// A text of Media/www, empty when there is none.
std::wstring MediaText(const wchar_t* name) {
    const std::wstring folder = JoinPath(JoinPath(ProgramFolder(), L"Media"), L"www");
    std::wstring text;
    TextEncoding encoding{};
    return ReadTextFile(JoinPath(folder, name), text, encoding) ? text : std::wstring();
}

/// A text that is missing is not written.
Outcome WriteCompanion(const std::wstring& path, const std::wstring& text) {
    Outcome written = text.empty() ? Failure(Reason::PageIncomplete, path)
                                   : WriteTextFile(path, text, TextEncoding::System);
    if (!written.IsDone()) written.reason = Reason::PageIncomplete;
    return written;
}

/// Pages of ours say so in their head.
bool IsOwnPage(const std::wstring& path) {
    std::wstring text;
    TextEncoding encoding{};
    return FileExists(path) && ReadTextFile(path, text, encoding) &&
           text.find(L"<meta name=\"generator\" content=\"Skyvault\">") != std::wstring::npos;
}

std::wstring Replaced(std::wstring text, std::wstring_view what, std::wstring_view by) {
    for (std::size_t at = text.find(what); at != std::wstring::npos; at = text.find(what, at + by.size())) {
        text.replace(at, what.size(), by);
    }
    return text;
}

/// Where the viewer starts, as its address tells it too, for a photo that says where; else empty.
std::wstring StartOf(const Panorama& panorama, const ExportRequest& request) {
    const SphereTags photo = ReadSphereTags(panorama.metadata.xmp);
    const bool says =
        photo.contains("InitialViewHeadingDegrees") || photo.contains("InitialViewPitchDegrees");
    if (!says || request.sphere == nullptr) return {};
    const auto value = [&](const char* name) {
        const auto tag = request.sphere->find(name);
        return tag == request.sphere->end() ? std::wstring() : FromUtf8(tag->second);
    };
    // The viewer counts downwards.
    const std::wstring pitch = value("InitialViewPitchDegrees");
    return L"heading=" + value("InitialViewHeadingDegrees") + L"&amp;pitch=" +
           (pitch.starts_with(L'-') ? pitch.substr(1) : L"-" + pitch) + L"&amp;fov=" +
           value("InitialHorizontalFOVDegrees");
}

}  // namespace

WebPageFiles CompanionFiles(const std::wstring& picturePath) {
    const std::wstring_view folder = FolderPart(picturePath);
    return {std::wstring(WithoutExtension(picturePath)) + L".html", JoinPath(folder, L"skyvault.css"),
            JoinPath(folder, L"skyvault.js")};
}

std::vector<std::wstring> WebPagePaths(const std::wstring& picturePath, const ExportSettings&) {
    std::wstring page = CompanionFiles(picturePath).page;
    if (IsOwnPage(page)) return {picturePath};
    return {picturePath, std::move(page)};
}

Outcome ExportWebPage(const Panorama& panorama, const ExportRequest& request, Feedback& feedback,
                      Image& result) {
    if (request.path.empty()) return Failure(Reason::CannotWrite);
    const WebPageFiles files = CompanionFiles(request.path);
    // The name last: it may hold anything.
    const std::wstring page = Replaced(Replaced(MediaText(L"skyvault.html"), L"data-start=\"\"",
                                                L"data-start=\"" + StartOf(panorama, request) + L"\""),
                                       L"[URL]", FileNamePart(request.path));
    const std::pair<const std::wstring&, std::wstring> companions[] = {
        {files.page, page},
        {files.styleSheet, MediaText(L"skyvault.css")},
        {files.script, MediaText(L"skyvault.js")}};
    Outcome complete;
    std::wstring generated;
    for (const auto& [path, text] : companions) {
        Outcome written = WriteCompanion(path, text);
        if (written.IsDone()) generated += L"\n" + path;
        complete = FirstFailure(std::move(complete), std::move(written));
    }
    Outcome outcome = RenderEquirectangular(panorama, request, feedback, result);
    if (outcome.IsDone()) {
        outcome = SavePicture(result, request.path,
                              {.bleed = true,
                               .quality = request.settings.jpegQuality,
                               .metadata = &panorama.metadata,
                               .sphere = request.sphere});
    }
    if (!outcome.IsDone()) return outcome;
    complete.lost = std::move(outcome.lost);
    complete.infoLog = request.path;
    if (!generated.empty()) {
        complete.infoLog += L"\n\nThe following files have also been generated:" + generated;
    }
    return complete;
}

}  // namespace skyvault
