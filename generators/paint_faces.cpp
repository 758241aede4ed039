#include "generators/paint_faces.h"

#include <algorithm>

#include "image/pixel_rows.h"
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

}  // namespace

FacePainting StartPainting(const ImportRequest& request, Feedback& feedback, Panorama& panorama,
                           const wchar_t* text, bool antialiased) {
    const std::uint32_t size = static_cast<std::uint32_t>(ResolutionOfIndex(request.settings.resolution0));
    const bool doubled = antialiased && request.settings.antialiasing;
    return {.panorama = panorama,
            .feedback = feedback,
            .text = text,
            .format = request.settings.transparency ? PixelFormat::Rgba8 : PixelFormat::Rgb8,
            .size = doubled ? 2 * size : size,
            .doubled = doubled};
}

void MakeFaces(const FacePainting& painting) {
    painting.panorama.faceSize = painting.size;
    for (Image& face : painting.panorama.faces) {
        face.Clear();
        face = Image(painting.size, painting.size, painting.format);
    }
}

void PaintBands(const FacePainting& painting, int bandCount, bool parallel, ProgressShare share,
                const std::function<void(int band)>& paint) {
    const auto report = [&](int finished) {
        const float done = static_cast<float>(finished) / static_cast<float>(bandCount);
        painting.feedback.SetProgress(share.from + done * (share.to - share.from), painting.text);
    };
    const bool reporting = painting.feedback.ProgressActive();
    if (reporting) report(0);
    ParallelBands(bandCount, parallel, paint, reporting ? std::function<void(int)>(report) : nullptr);
}

void PaintFaces(const FacePainting& painting, const PaintRun& paint, ProgressShare share) {
    MakeFaces(painting);
    const std::uint32_t bytesPerPixel = BytesPerPixel(painting.format);
    const auto visit = [&](const FaceRun& run, DirectionBlock& directions, int) {
        Image& face = painting.panorama.faces[static_cast<std::size_t>(run.face)];
        if (!face.IsValid()) return;
        Color8 colours[kBlockSize];
        paint(run, directions, colours);
        ConvertRow(PixelFormat::Rgba8, reinterpret_cast<const std::byte*>(colours), painting.format,
                   face.Row(run.row) + std::size_t{run.first} * bytesPerPixel,
                   static_cast<std::size_t>(run.count));
    };
    VisitFaces(painting, visit, share);
}

int VisitBandCount(std::uint32_t size) {
    return static_cast<int>(BandsPerFace(size) * kFaceCount);
}

void VisitFaces(const FacePainting& painting, const VisitRun& visit, ProgressShare share) {
    const std::uint32_t size = painting.size;
    const std::uint32_t bandsPerFace = BandsPerFace(size);
    const EdgeScale scale(static_cast<std::int32_t>(size));
    // Painting costs far more than waking the other threads, except for faces of a few pixels.
    PaintBands(painting, VisitBandCount(size), size >= 64, share, [&](int band) {
        const CubeFace face = static_cast<CubeFace>(static_cast<std::uint32_t>(band) / bandsPerFace);
        const std::uint32_t firstRow = static_cast<std::uint32_t>(band) % bandsPerFace * kFaceBandRows;
        const std::uint32_t endRow = std::min(firstRow + kFaceBandRows, size);
        DirectionBlock block;
        ForRowBlocks(size, firstRow, endRow, [&](std::uint32_t row, std::uint32_t first, int count) {
            FaceBlockDirections(face, scale, row, first, count, block);
            visit({face, row, first, count}, block, band);
        });
    });
}

Outcome FinishFaces(const FacePainting& painting) {
    Outcome outcome;
    if (painting.doubled) outcome = AntialiasFaces(painting.panorama, 0.5f, painting.feedback);
    const CubeFaces& faces = painting.panorama.faces;
    const bool whole =
        std::all_of(faces.begin(), faces.end(), [](const Image& face) { return face.IsValid(); });
    return whole ? outcome : Failure(Reason::NoMemory);
}

}  // namespace skyvault
