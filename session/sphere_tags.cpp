#include "session/sphere_tags.h"

#include <charconv>
#include <cmath>
#include <numbers>
#include <optional>

#include "platform/path_text.h"
#include "platform/utf8.h"

namespace skyvault {
namespace {

constexpr double kDegree = std::numbers::pi / 180;

std::optional<double> NumberOf(const SphereTags& tags, std::string_view name) {
    const auto tag = tags.find(name);
    if (tag == tags.end()) return {};
    const std::string& text = tag->second;
    double number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    const bool whole = error == std::errc() && end == text.data() + text.size();
    if (!whole || !(std::abs(number) < 1e9)) return {};
    return number;
}

/// With at most two decimals.
std::string TextOf(double number) {
    char text[32];
    const double rounded = std::round(number * 100) / 100 + 0.0;
    const auto [end, error] = std::to_chars(text, text + sizeof text, rounded);
    return error == std::errc() ? std::string(text, end) : "0";
}

/// 0 ≤ the angle < 360, after rounding to the steps.
double Heading(double degrees, double step) {
    const double rounded = std::round(degrees / step) * step;
    const double turn = std::fmod(rounded, 360);
    return turn < 0 ? turn + 360 : turn;
}

/// Degrees to the right of the front, and above the horizon.
double HeadingOf(const Direction& d) {
    return std::atan2(static_cast<double>(d.x), static_cast<double>(d.z)) / kDegree;
}
double PitchOf(const Direction& d) {
    return std::atan2(static_cast<double>(d.y),
                      std::hypot(static_cast<double>(d.x), static_cast<double>(d.z))) /
           kDegree;
}

/// Where a viewer starts, in degrees: to the right, up, clockwise.
struct InitialView {
    double heading = 0, pitch = 0, roll = 0;
    std::optional<double> fieldOfView;
};

std::optional<double> FieldOfView(const ExportSettings& settings) {
    // The focal length is told in picture widths.
    const double focal = static_cast<double>(settings.previewFov);
    if (!(focal > 0.01) || focal > 100) return {};
    return 2 * std::atan(0.5 / focal) / kDegree;
}

InitialView ViewOfCamera(const Camera& camera, const ExportSettings& settings) {
    const Matrix4 turn = YawPitchRollMatrix(camera.heading, camera.pitch, camera.roll);
    const Direction front = Transform({0, 0, 1}, turn), right = Transform({1, 0, 0}, turn),
                    up = Transform({0, 1, 0}, turn);
    return {HeadingOf(front), PitchOf(front),
            std::atan2(static_cast<double>(-right.y), static_cast<double>(up.y)) / kDegree,
            FieldOfView(settings)};
}

bool IsMirrored(const Modifications& modifications) {
    return modifications.flipHorizontal || modifications.mirrorFrontToBack || modifications.mirrorTopToBottom;
}

/// The photo's own start, in the panorama as it is turned; nothing when the photo has none.
std::optional<InitialView> ViewOfPhoto(const SphereTags& photo, const Modifications& modifications) {
    const auto heading = NumberOf(photo, "InitialViewHeadingDegrees");
    const auto pitch = NumberOf(photo, "InitialViewPitchDegrees");
    if ((!heading && !pitch) || IsMirrored(modifications)) return {};
    const double h = heading.value_or(0) * kDegree, p = pitch.value_or(0) * kDegree;
    const Direction told{static_cast<float>(std::cos(p) * std::sin(h)), static_cast<float>(std::sin(p)),
                         static_cast<float>(std::cos(p) * std::cos(h))};
    const Matrix4& turn = modifications.inverseOrientation;
    const Direction seen = turn.isIdentity ? told : Transform(told, turn);
    return InitialView{HeadingOf(seen), PitchOf(seen), NumberOf(photo, "InitialViewRollDegrees").value_or(0),
                       NumberOf(photo, "InitialHorizontalFOVDegrees")};
}

/// What of the photo's properties is about how it came to be.
void KeepOrigin(const SphereTags& photo, SphereTags& tags) {
    for (const char* const name : {"CaptureSoftware", "StitchingSoftware", "FirstPhotoDate", "LastPhotoDate",
                                   "SourcePhotosCount", "ExposureLockUsed"}) {
        const auto told = photo.find(name);
        if (told != photo.end()) tags.insert(*told);
    }
}

}  // namespace

SphereTags SphereTagsOfExport(const Panorama& panorama, const Camera& camera,
                              const ExportSettings& settings) {
    const SphereTags photo = ReadSphereTags(panorama.metadata.xmp);
    const Modifications& modifications = panorama.modifications;
    SphereTags tags;
    KeepOrigin(photo, tags);
    const auto heading = NumberOf(photo, "PoseHeadingDegrees");
    if (heading && !modifications.flipHorizontal && !modifications.mirrorFrontToBack) {
        const Matrix4& turn = modifications.orientation;
        const double turned = turn.isIdentity ? 0 : HeadingOf(Transform({0, 0, 1}, turn));
        tags["PoseHeadingDegrees"] = TextOf(Heading(*heading + turned, 0.01));
    }
    tags.insert({{"PosePitchDegrees", "0"}, {"PoseRollDegrees", "0"}});

    InitialView view = ViewOfCamera(camera, settings);
    const bool moved = camera.heading != 0 || camera.pitch != 0 || camera.roll != 0;
    if (const auto own = ViewOfPhoto(photo, modifications); own && !moved) view = *own;
    tags["InitialViewHeadingDegrees"] = TextOf(Heading(view.heading, 1));
    tags["InitialViewPitchDegrees"] = TextOf(std::round(view.pitch));
    tags["InitialViewRollDegrees"] = TextOf(std::round(view.roll));
    if (view.fieldOfView) tags["InitialHorizontalFOVDegrees"] = TextOf(*view.fieldOfView);
    return tags;
}

std::wstring CropTrouble(const std::wstring& path, const SphereTags& sphere) {
    const auto size = [&](const char* width, const char* height) {
        const auto w = sphere.find(width), h = sphere.find(height);
        return w == sphere.end() || h == sphere.end() ? std::string() : w->second + " x " + h->second;
    };
    const std::string part = size("CroppedAreaImageWidthPixels", "CroppedAreaImageHeightPixels");
    const std::string whole = size("FullPanoWidthPixels", "FullPanoHeightPixels");
    if (part.empty() || whole.empty() || part == whole) return {};
    return Quoted(path) + L" is a part of a panorama (" + Printable(FromUtf8(part)) + L" of " +
           Printable(FromUtf8(whole)) + L" pixels) and was taken for a whole one";
}

std::wstring DescriptionOfSphere(const SphereTags& sphere) {
    const auto projection = sphere.find("ProjectionType");
    if (sphere.empty()) return {};
    std::string text = projection == sphere.end() ? "no projection" : projection->second;
    const auto value = [&](const char* name) {
        const auto found = sphere.find(name);
        return found == sphere.end() ? std::string("?") : found->second;
    };
    if (sphere.contains("FullPanoWidthPixels")) {
        text += ", " + value("CroppedAreaImageWidthPixels") + " x " + value("CroppedAreaImageHeightPixels") +
                " of " + value("FullPanoWidthPixels") + " x " + value("FullPanoHeightPixels");
    }
    if (sphere.contains("PoseHeadingDegrees")) text += ", heading " + value("PoseHeadingDegrees");
    return Printable(FromUtf8(text));
}

}  // namespace skyvault
