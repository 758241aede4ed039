#include "projection/equirectangular.h"

#include <algorithm>
#include <array>

#include "platform/mvector.h"
#include "projection/export_size.h"
#include "projection/face_import.h"
#include "projection/fast_math.h"
#include "projection/render_layout.h"

namespace skyvault {

namespace {

/// Longitude of column x of a grid W pixels wide: 2x·π/W + π, from the back around to the back.
float LongitudeOf(float x, float width) {
    return 2.0f * x * kPi / width + kPi;
}

/// Latitude of a row counted from the bottom: y·π/H − π/2.
float LatitudeOf(float y, float height) {
    return static_cast<float>(static_cast<double>(y) * kPiWide / static_cast<double>(height) - kHalfPiWide);
}

/// Sines and cosines of the columns' longitudes and the rows' latitudes (row 0 at the top).
struct GridAngles {
    MVector<float> sinLongitude, cosLongitude, sinLatitude, cosLatitude;

    /// False without memory.
    bool Compute(std::int32_t width, std::int32_t height) {
        if (!sinLongitude.Resize(width, false) || !cosLongitude.Resize(width, false) ||
            !sinLatitude.Resize(height, false) || !cosLatitude.Resize(height, false)) {
            return false;
        }
        for (std::int32_t i = 0; i < width; ++i) {
            const float longitude = LongitudeOf(static_cast<float>(i), static_cast<float>(width));
            sinLongitude[i] = Sin(longitude);
            cosLongitude[i] = Cos(longitude);
        }
        for (std::int32_t row = 0; row < height; ++row) {
            const float latitude =
                LatitudeOf(static_cast<float>(height - 1 - row), static_cast<float>(height));
            sinLatitude[row] = Sin(latitude);
            cosLatitude[row] = Cos(latitude);
        }
        return true;
    }
};

/// The magnifying glass: around five points of the horizon the window's view shows its surroundings four
/// times as large.
struct MagnifyingGlass {
    std::array<float, 5> centres;
    float centreHeight;
    float radiusSquared;

    MagnifyingGlass(std::uint32_t width, std::uint32_t height)
        : centres{0.0f, static_cast<float>(width * 0.25), static_cast<float>(width * 0.5),
                  static_cast<float>(width * 0.75), static_cast<float>(width)},
          centreHeight(static_cast<float>(height * 0.5)) {
        const float radius = static_cast<float>(width * 0.1);
        radiusSquared = radius * radius;
    }

    bool Touches(float y) const {
        const float dy = y - centreHeight;
        return dy * dy < radiusSquared;
    }

    void Apply(float& x, float& y) const {
        for (const float centre : centres) {
            const float dx = x - centre;
            const float dy = y - centreHeight;
            if (dx * dx + dy * dy < radiusSquared) {
                x = dx * 0.25f + centre;
                y = dy * 0.25f + centreHeight;
                return;
            }
        }
    }
};

/// A row of the grid the magnifying glass reaches into: every pixel has angles of its own.
void MagnifiedRow(const MagnifyingGlass& glass, std::uint32_t width, std::uint32_t height, std::uint32_t row,
                  std::uint32_t first, int count, DirectionBlock& block) {
    float longitudes[kBlockSize], latitudes[kBlockSize];
    for (int i = 0; i < count; ++i) {
        float x = static_cast<float>(first + static_cast<std::uint32_t>(i));
        float y = static_cast<float>(height - 1 - row);
        glass.Apply(x, y);
        longitudes[i] = LongitudeOf(x, static_cast<float>(width));
        latitudes[i] = LatitudeOf(y, static_cast<float>(height));
    }
    Kernels().sphericalDirections(longitudes, latitudes, block.x, block.y, block.z, count);
}

}  // namespace

Outcome ImportEquirectangular(const ImportRequest& request, Feedback& feedback, Panorama& panorama) {
    Outcome loaded = LoadLayoutPicture(request, feedback, panorama.equirectSource);
    if (!loaded.IsDone()) return loaded;
    panorama.faceSize = static_cast<std::uint32_t>(static_cast<float>(panorama.equirectSource.width) * 0.25f);
    if (panorama.faceSize > 0) return {};
    panorama.equirectSource.Clear();
    return Failure(Reason::TooNarrow);
}

Outcome RenderEquirectangular(const Panorama& panorama, const ExportRequest& request, Feedback& feedback,
                              Image& result) {
    RenderOptions options;
    Outcome asked = FormatOfExport(panorama, request, options.format);
    if (!asked.IsDone()) return asked;
    const float sourceWidth = std::min(static_cast<float>(panorama.faceSize) * 4.0f, 2147483520.0f);
    const std::int32_t size = ChooseExportSize(request, SizeKind::Equirectangular,
                                               static_cast<std::int32_t>(sourceWidth), feedback);
    const bool doubled = request.settings.antialiasing;
    std::int32_t width = doubled ? 2 * size : size;
    std::int32_t height = doubled ? 2 * (size / 2) : size / 2;
    if (request.IsView()) {
        width = std::min(width, request.client->width);
        height = std::min(height, request.client->height);
        if (2 * height > width) {
            height = width / 2;
        } else {
            width = 2 * height;
        }
    }
    if (width < 1 || height < 1) return Failure(Reason::NothingToShow);

    const std::uint32_t columns = static_cast<std::uint32_t>(width);
    const std::uint32_t rows = static_cast<std::uint32_t>(height);
    GridAngles angles;
    if (!angles.Compute(width, height)) return Failure(Reason::NoMemory);
    const MagnifyingGlass glass(columns, rows);
    const bool magnify = request.IsView() && request.settings.magnifyingGlass;
    const RowKernels& kernels = Kernels();
    const LayoutGrid grid{
        columns, rows,
        [&](std::uint32_t row, std::uint32_t first, int count, DirectionBlock& block, std::uint8_t*) {
            if (magnify && glass.Touches(static_cast<float>(rows - 1 - row))) {
                MagnifiedRow(glass, columns, rows, row, first, count, block);
            } else {
                kernels.equirectDirections(angles.sinLongitude.Data() + first,
                                           angles.cosLongitude.Data() + first, angles.sinLatitude[row],
                                           angles.cosLatitude[row], block.x, block.y, block.z, count);
            }
            return Coverage::All;
        }};
    options.emptyColour = EmptyColour(request.settings);
    options.halve = doubled && !request.IsView();
    if (!request.IsView()) {
        options.feedback = &feedback;
        options.progressText = L"Exporting equirectangular...";
    }
    return RenderLayout(panorama, grid, options, result);
}

}  // namespace skyvault
