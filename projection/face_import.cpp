#include "projection/face_import.h"

#include <algorithm>

#include "codecs/picture_files.h"
#include "image/pixel_rows.h"
#include "platform/mvector.h"
#include "platform/parallel_rows.h"
#include "projection/copy_pixels.h"
#include "projection/face_rows.h"

namespace skyvault {

namespace {

/// Brings positions into 0 .. size − 1. Most are there already.
void Wrap(std::int32_t* positions, int count, std::int32_t size) {
    std::uint32_t outside = 0;
    for (int i = 0; i < count; ++i) {
        outside |= static_cast<std::uint32_t>(positions[i]) >= static_cast<std::uint32_t>(size) ? 1 : 0;
    }
    if (outside == 0) return;
    for (int i = 0; i < count; ++i) {
        positions[i] %= size;
        if (positions[i] < 0) positions[i] += size;
    }
}

}  // namespace

Outcome LoadAndTell(const ImportRequest& request, Feedback& feedback, Image& picture) {
    Outcome loaded = LoadPicture(request.Path(), picture);
    if (!loaded.infoLog.empty()) feedback.Information(loaded.infoLog);
    return loaded;
}

Outcome LoadLayoutPicture(const ImportRequest& request, Feedback& feedback, Image& picture) {
    Outcome loaded = LoadAndTell(request, feedback, picture);
    if (loaded.IsDone() && !request.settings.transparency) {
        Color8 background = request.settings.backgroundColour;
        background.alpha = 255;
        picture.FlattenAlpha(background);
    }
    return loaded;
}

Outcome CreateFaces(Panorama& panorama, std::uint32_t faceSize, PixelFormat format, Feedback& feedback,
                    const std::function<void(CubeFace which, Image& face)>& fill) {
    panorama.faceSize = faceSize;
    Outcome outcome;
    for (int f = 0; f < kFaceCount; ++f) {
        if (feedback.ProgressActive()) {
            feedback.SetProgress(static_cast<float>(f + 1) / 6.0f, L"Creating cube faces...");
        }
        Image& face = panorama.faces[static_cast<std::size_t>(f)];
        face.Clear();
        face = Image(faceSize, faceSize, format);
        if (face.IsValid()) {
            fill(static_cast<CubeFace>(f), face);
        } else {
            face.Clear();
            outcome = Failure(Reason::NoMemory);
        }
    }
    return outcome;
}

void FillFace(Image& face, const Image& picture, const PixelLookup& lookup) {
    const std::uint32_t sourceBytes = BytesPerPixel(picture.format);
    const std::uint32_t faceBytes = BytesPerPixel(face.format);
    const bool convert = picture.format != face.format;
    const std::uintptr_t origin = reinterpret_cast<std::uintptr_t>(picture.pixels.get());
    const std::uint32_t stride = picture.stride;
    const auto fillBand = [&](int band) {
        std::int32_t columns[kBlockSize], rows[kBlockSize];
        std::uintptr_t addresses[kBlockSize];
        std::byte gathered[kBlockSize * 8];
        const std::uint32_t firstRow = static_cast<std::uint32_t>(band) * kBandRows;
        const std::uint32_t endRow = std::min(firstRow + kBandRows, face.height);
        ForRowBlocks(face.width, firstRow, endRow, [&](std::uint32_t row, std::uint32_t first, int count) {
            lookup(row, first, count, columns, rows);
            Wrap(columns, count, static_cast<std::int32_t>(picture.width));
            Wrap(rows, count, static_cast<std::int32_t>(picture.height));
            for (int i = 0; i < count; ++i) {
                addresses[i] = origin + std::uint64_t{static_cast<std::uint32_t>(rows[i])} * stride +
                               std::uint64_t{static_cast<std::uint32_t>(columns[i])} * sourceBytes;
            }
            std::byte* target = face.Row(row) + std::size_t{first} * faceBytes;
            CopyPixels(addresses, count, sourceBytes, convert ? gathered : target);
            if (convert) {
                ConvertRow(picture.format, gathered, face.format, target, static_cast<std::size_t>(count));
            }
        });
    };
    const int bandCount = static_cast<int>((face.height + kBandRows - 1) / kBandRows);
    ParallelBands(bandCount, std::uint64_t{face.width} * face.height >= kParallelPixels, fillBand);
}

void FillFaceByDirection(CubeFace which, Image& face, const Image& picture, const DirectionLookup& lookup) {
    const EdgeScale scale(static_cast<std::int32_t>(face.width));
    FillFace(
        face, picture,
        [&](std::uint32_t row, std::uint32_t first, int count, std::int32_t* columns, std::int32_t* rows) {
            DirectionBlock block;
            FaceBlockDirections(which, scale, row, first, count, block);
            lookup(block, count, columns, rows);
        });
}

}  // namespace skyvault
