#include "projection/export_size.h"

#include <algorithm>
#include <limits>
#include <string>

#include "platform/numeric.h"

namespace skyvault {

namespace {

std::wstring SizeLabel(SizeKind kind, std::int32_t size) {
    const std::wstring edge = std::to_wstring(size);
    switch (kind) {
        case SizeKind::CubeMap:
            return L"6 x " + edge + L" x " + edge;
        case SizeKind::Equirectangular:
            return edge + L" x " + std::to_wstring(size / 2);
        case SizeKind::Square:
            break;
    }
    return edge + L" x " + edge;
}

std::int32_t ChosenIndex(const ExportSettings& settings, SizeKind kind) {
    switch (kind) {
        case SizeKind::CubeMap:
            return settings.resolution0;
        case SizeKind::Equirectangular:
            return settings.resolution1;
        case SizeKind::Square:
            break;
    }
    return settings.resolution2;
}

}  // namespace

std::int32_t ResolutionOfIndex(std::int32_t index) {
    return index >= 0 && index <= 6 ? 256 << index : 256;
}

std::int32_t SourceFaceSize(const Panorama& panorama) {
    constexpr std::uint32_t kLargest = std::numeric_limits<std::int32_t>::max();
    return static_cast<std::int32_t>(std::min(panorama.faceSize, kLargest));
}

std::int32_t ChooseExportSize(const ExportRequest& request, SizeKind kind, std::int32_t sourceSize,
                              Feedback& feedback, bool powerOfTwo) {
    std::int32_t size = ResolutionOfIndex(ChosenIndex(request.settings, kind));
    if (sourceSize >= 1 && size > sourceSize) {
        if (!request.IsView()) {
            feedback.Information(L"The resolution of the source 360° photo is too low to export as " +
                                 SizeLabel(kind, size) + L"\n\nThe photo will be exported as " +
                                 SizeLabel(kind, sourceSize));
        }
        size = sourceSize;
    }
    if (powerOfTwo) {
        const std::int32_t power = NextPowerOfTwo(size);
        if (power != size && !request.IsView()) {
            feedback.Information(L"The resolution has been changed from " + std::to_wstring(size) + L" to " +
                                 std::to_wstring(power) + L" to make it a power of 2");
        }
        size = power;
    }
    return size;
}

}  // namespace skyvault
