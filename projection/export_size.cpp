#include "projection/export_size.h"

#include <string>

#include "image/numeric.h"

namespace skyvault {

namespace {

std::wstring SizeLabel(SizeKind kind, std::int32_t size) {
    std::wstring s = std::to_wstring(size);
    switch (kind) {
        case SizeKind::CubeMap:
        case SizeKind::Generator:
            return L"6 x " + s + L" x " + s;
        case SizeKind::Equirectangular:
            return s + L" x " + std::to_wstring(size / 2);
        case SizeKind::Square:
            return s + L" x " + s;
    }
    return s;
}

std::int32_t ChosenIndex(const AppState& settings, SizeKind kind) {
    switch (kind) {
        case SizeKind::CubeMap:
        case SizeKind::Generator:
            return settings.resolution0;
        case SizeKind::Equirectangular:
            return settings.resolution1;
        case SizeKind::Square:
            return settings.resolution2;
    }
    return 0;
}

}  // namespace

std::int32_t ResolutionOfIndex(std::int32_t index) {
    return index >= 0 && index <= 6 ? 256 << index : 256;
}

std::int32_t ChooseExportSize(const Panorama& panorama, SizeKind kind, std::int32_t sourceSize,
                              bool powerOfTwo, bool showMessages) {
    std::int32_t size = ResolutionOfIndex(ChosenIndex(panorama.settings, kind));
    if (sourceSize >= 1 && size > sourceSize) {
        if (showMessages) {
            panorama.feedback.Information(
                L"The resolution of the source 360° photo is too low to export as " + SizeLabel(kind, size) +
                L"\n\nThe photo will be exported as " + SizeLabel(kind, sourceSize));
        }
        size = sourceSize;
    }
    if (powerOfTwo) {
        const std::int32_t power = NextPowerOfTwo(size);
        if (power != size && showMessages) {
            panorama.feedback.Information(L"The resolution has been changed from " + std::to_wstring(size) +
                                          L" to " + std::to_wstring(power) + L" to make it a power of 2");
        }
        size = power;
    }
    return size;
}

}  // namespace skyvault
