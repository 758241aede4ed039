#include "session/conversion.h"

#include "platform/feedback_relay.h"
#include "platform/path_text.h"
#include "session/import_panorama.h"

namespace skyvault {
namespace {

/// Passes everything on but errors, and keeps their first: it is the cause of those after it.
class FirstError final : public FeedbackRelay {
  public:
    using FeedbackRelay::FeedbackRelay;
    const std::wstring& Text() const { return text_; }

    void Error(const std::wstring& text) override {
        if (text_.empty()) text_ = text;
    }

  private:
    std::wstring text_;
};

/// The engine's own words when it said any, with the file they are about.
std::wstring ReasonAbout(const std::wstring& path, const std::wstring& told, const std::wstring& otherwise) {
    if (told.empty()) return otherwise + L" " + Quoted(path);
    return told.find(path) != std::wstring::npos ? told : told + L": " + Quoted(path);
}

}  // namespace

ConversionResult ConvertPanorama(const Conversion& conversion, const AppState& settings, Feedback& feedback) {
    ConversionResult result;
    FirstError errors(feedback);
    Panorama panorama(errors, settings, nullptr);
    const std::wstring first = conversion.sources.empty() ? std::wstring() : conversion.sources.front();
    ImportPanorama(panorama, conversion.sources, conversion.from->format);
    if (panorama.IsEmpty() || panorama.paletteMissing || !errors.Text().empty()) {
        result.reason = ReasonAbout(first, errors.Text(), L"Could not open");
        return result;
    }
    for (std::size_t f = 0;
         conversion.from->format == PanoramaFormat::SingleFiles && f < panorama.faces.size(); ++f) {
        if (!panorama.faces[f].IsValid()) result.missingFaces.push_back(static_cast<CubeFace>(f));
    }
    panorama.modifications = conversion.modifications;
    result.done = conversion.to->exportTo(panorama, conversion.output, conversion.camera, result.infoLog);
    if (!errors.Text().empty()) result.done = false;
    if (result.done) return result;
    result.infoLog.clear();
    if (errors.Text().empty() && ExportPixelFormat(panorama, false) == PixelFormat::None) {
        result.reason = L"Could not write " + Quoted(conversion.output) +
                        L": there is no front face, which decides the pixel format";
    } else {
        result.reason = ReasonAbout(conversion.output, errors.Text(), L"Could not write");
    }
    return result;
}

}  // namespace skyvault
