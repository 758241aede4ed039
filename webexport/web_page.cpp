#include "webexport/web_page.h"

#include "codecs/picture_files.h"
#include "platform/files.h"
#include "platform/path_text.h"
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

void WriteCompanion(const std::wstring& path, const std::wstring& text) {
    if (!text.empty()) WriteTextFile(path, text, TextEncoding::System);
}

std::wstring Replaced(std::wstring text, std::wstring_view what, std::wstring_view by) {
    for (std::size_t at = text.find(what); at != std::wstring::npos; at = text.find(what, at + by.size())) {
        text.replace(at, what.size(), by);
    }
    return text;
}

}  // namespace

WebPageFiles CompanionFiles(const std::wstring& picturePath) {
    const std::wstring_view folder = FolderPart(picturePath);
    return {std::wstring(WithoutExtension(picturePath)) + L".html", JoinPath(folder, L"skyvault.css"),
            JoinPath(folder, L"skyvault.js")};
}

Outcome ExportWebPage(const Panorama& panorama, const ExportRequest& request, Feedback& feedback,
                      Image& result) {
    if (request.path.empty()) return Failure(Reason::CannotWrite);
    const WebPageFiles files = CompanionFiles(request.path);
    WriteCompanion(files.script, MediaText(L"skyvault.js"));
    WriteCompanion(files.styleSheet, MediaText(L"skyvault.css"));
    WriteCompanion(files.page, Replaced(MediaText(L"skyvault.html"), L"[URL]", FileNamePart(request.path)));
    Outcome outcome = RenderEquirectangular(panorama, request, feedback, result);
    if (outcome.IsDone()) outcome = SavePicture(result, request.path, PixelFormat::None, true);
    if (outcome.IsDone()) {
        outcome.infoLog = request.path + L"\n\nThe following files have also been generated:\n" + files.page +
                          L"\n" + files.styleSheet + L"\n" + files.script;
    }
    return outcome;
}

}  // namespace skyvault
