#include "generators/paint_faces.h"

#include <algorithm>

#include "image/pixel_convert.h"
#include "platform/parallel_rows.h"
#include "projection/build_faces.h"
#include "projection/export_size.h"
#include "projection/face_rows.h"

namespace skyvault {

namespace {

constexpr std::uint32_t kFaceBandRows = 16;

std::uint32_t BandsPerFace(std::uint32_t size) {
    return (size + kFaceBandRows - 1) / kFaceBandRows;
}

/// Runs work(run, directions, band) over all rows of all faces.
void WalkFaces(Panorama& panorama, std::uint32_t size, const wchar_t* text, ProgressShare share,
               const VisitRun& work) {
    const std::uint32_t bandsPerFace = BandsPerFace(size);
    const EdgeScale scale(static_cast<std::int32_t>(size));
    const auto walkBand = [&](int band) {
        FaceRun run;
        run.face = static_cast<CubeFace>(static_cast<std::uint32_t>(band) / bandsPerFace);
        const std::uint32_t firstRow = static_cast<std::uint32_t>(band) % bandsPerFace * kFaceBandRows;
        const std::uint32_t endRow = std::min(firstRow + kFaceBandRows, size);
        float across[kBlockSize];
        DirectionBlock block;
        for (run.first = 0; run.first < size; run.first += kBlockSize) {
            run.count = static_cast<int>(std::min<std::uint32_t>(kBlockSize, size - run.first));
            for (int i = 0; i < run.count; ++i) across[i] = scale(std::int64_t{run.first} + i);
            for (run.row = firstRow; run.row < endRow; ++run.row) {
                FaceRowDirections(run.face, across, scale(run.row), run.count, block.x, block.y, block.z);
                work(run, block, band);
            }
        }
    };
    const int bandCount = VisitBandCount(size);
    const auto report = [&](int finished) {
        const float done = static_cast<float>(finished) / static_cast<float>(bandCount);
        panorama.feedback.SetProgress(share.from + done * (share.to - share.from), text);
    };
    const bool reporting = panorama.feedback.ProgressActive();
    if (reporting) report(0);
    // Painting costs far more than waking the other threads, except for faces of a few pixels.
    ParallelBands(bandCount, size >= 64, walkBand, reporting ? std::function<void(int)>(report) : nullptr);
}

}  // namespace

std::uint32_t GeneratorFaceSize(const Panorama& panorama, bool antialiased) {
    const std::int32_t size = ChooseExportSize(panorama, SizeKind::Generator, 0, false, false);
    const bool doubled = antialiased && panorama.settings.antialiasing;
    return static_cast<std::uint32_t>(doubled ? 2 * size : size);
}

PixelFormat GeneratorFormat(const AppState& settings) {
    return settings.transparency ? PixelFormat::Rgba8 : PixelFormat::Rgb8;
}

void PaintFaces(Panorama& panorama, std::uint32_t size, const wchar_t* text, const PaintRun& paint,
                ProgressShare share) {
    const PixelFormat format = GeneratorFormat(panorama.settings);
    panorama.faceSize = size;
    for (Image& face : panorama.faces) {
        face.Clear();
        face = Image(size, size, format);
    }
    const std::uint32_t bytesPerPixel = BytesPerPixel(format);
    WalkFaces(panorama, size, text, share, [&](const FaceRun& run, DirectionBlock& directions, int) {
        Image& face = panorama.faces[static_cast<std::size_t>(run.face)];
        if (!face.IsValid()) return;
        Color8 colours[kBlockSize];
        paint(run, directions, colours);
        ConvertRow(PixelFormat::Rgba8, reinterpret_cast<const std::byte*>(colours), format,
                   face.Row(run.row) + std::size_t{run.first} * bytesPerPixel,
                   static_cast<std::size_t>(run.count));
    });
}

int VisitBandCount(std::uint32_t size) {
    return static_cast<int>(BandsPerFace(size) * kFaceCount);
}

void VisitFaces(Panorama& panorama, std::uint32_t size, const wchar_t* text, const VisitRun& visit,
                ProgressShare share) {
    WalkFaces(panorama, size, text, share, visit);
}

void FinishFaces(Panorama& panorama, bool antialiased) {
    if (antialiased && panorama.settings.antialiasing) AntialiasFaces(panorama, 0.5f);
}

}  // namespace skyvault
