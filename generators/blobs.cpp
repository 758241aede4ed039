#include "generators/blobs.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstring>

#include "generators/field_kernels.h"
#include "generators/paint_faces.h"
#include "generators/palette.h"
#include "platform/memory.h"
#include "platform/numeric.h"

namespace skyvault {

namespace {

constexpr int kPaletteEntries = 1024;
constexpr int kMostPoints = 200;
constexpr const wchar_t* kText = L"Generating blobs...";

/// The lowest and highest field of all pixels. The threads meet here; which of them comes first does not
/// matter to the result.
struct Extent {
    std::atomic<float> lowest{2.0f}, highest{-1.0f};

    void Include(float low, float high) {
        float known = lowest.load(std::memory_order_relaxed);
        while (low < known && !lowest.compare_exchange_weak(known, low, std::memory_order_relaxed)) {
        }
        known = highest.load(std::memory_order_relaxed);
        while (high > known && !highest.compare_exchange_weak(known, high, std::memory_order_relaxed)) {
        }
    }
};

struct Blobs {
    std::array<RandomXyz, kMostPoints> points;
    int pointCount = 0;
    float power = 0, contrast = 0;
    std::array<Color8, kPaletteEntries> palette;

    /// The field of a run, and what it reaches in it.
    void Field(const DirectionBlock& directions, int count, float* v, float& lowest, float& highest) const {
        const FieldKernels& passes = FieldPasses();
        passes.pull(directions, count, points.data(), pointCount, power, v);
        passes.ramp(v, count, contrast, lowest, highest);
    }
};

/// Room for one float for every pixel of six faces; null when that is too much.
ByteBuffer FieldBuffer(std::uint32_t size, std::size_t mostBytes) {
    const std::uint64_t bytes = std::uint64_t{size} * size * kFaceCount * sizeof(float);
    return bytes <= mostBytes ? AllocateBytes(static_cast<std::size_t>(bytes)) : ByteBuffer();
}

std::byte* FieldOf(const ByteBuffer& field, std::uint32_t size, const FaceRun& run) {
    const std::size_t row = std::size_t{static_cast<std::uint32_t>(run.face)} * size + run.row;
    return field.get() + (row * size + run.first) * sizeof(float);
}

}  // namespace

Outcome GenerateBlobs(const ImportRequest& request, Feedback& feedback, Panorama& panorama) {
    return GenerateBlobs(request, feedback, panorama, kMostFieldBytes);
}

Outcome GenerateBlobs(const ImportRequest& request, Feedback& feedback, Panorama& panorama,
                      std::size_t mostFieldBytes) {
    if (request.Path().empty()) return Failure(Reason::CannotOpen);
    const GeneratorSettings& settings = request.generator;
    SeedRandom();
    Blobs blobs;
    Image picture;
    Outcome palette = ReadPalette(request, picture);
    if (!DiagonalPalette(picture, Diagonal::ToCorner, blobs.palette)) {
        blobs.palette.fill(Color8(255, 0, 0, 255));
    }
    for (Color8& colour : blobs.palette) colour.alpha = 255;
    blobs.pointCount = ClampInt(settings.blobsForceFields, 1, kMostPoints);
    for (int i = 0; i < blobs.pointCount; ++i) blobs.points[static_cast<std::size_t>(i)] = RandomVector(2.0f);
    blobs.power = settings.blobsPower;
    const float contrast = settings.blobsContrast;
    blobs.contrast = contrast > 0.0f ? Clamp01(contrast) : 0.0f;  // no number counts as 0

    const FacePainting painting = StartPainting(request, feedback, panorama, kText, true);
    const std::uint32_t size = painting.size;
    ByteBuffer field = FieldBuffer(size, mostFieldBytes);
    Extent extent;
    VisitFaces(painting,
               [&](const FaceRun& run, DirectionBlock& directions, int) {
                   float v[kBlockSize];
                   float lowest = extent.lowest, highest = extent.highest;
                   blobs.Field(directions, run.count, v, lowest, highest);
                   extent.Include(lowest, highest);
                   if (field)
                       std::memcpy(FieldOf(field, size, run), v,
                                   sizeof(float) * static_cast<std::size_t>(run.count));
               },
               {0.0f, 0.5f});

    const auto paint = [&](const FaceRun& run, DirectionBlock& directions, Color8* colours) {
        float v[kBlockSize];
        float lowest = extent.lowest, highest = extent.highest;
        if (field) {
            std::memcpy(v, FieldOf(field, size, run), sizeof(float) * static_cast<std::size_t>(run.count));
        } else {
            blobs.Field(directions, run.count, v, lowest, highest);
        }
        std::int32_t entries[kBlockSize];
        FieldPasses().paletteEntries(v, run.count, lowest, highest, kPaletteEntries, entries);
        for (int i = 0; i < run.count; ++i) colours[i] = blobs.palette[static_cast<std::size_t>(entries[i])];
    };
    PaintFaces(painting, paint, {0.5f, 1.0f});
    const auto missing = [](const Image& face) { return !face.IsValid(); };
    if (field && std::any_of(panorama.faces.begin(), panorama.faces.end(), missing)) {
        // Memory for the field must not cost a face.
        field.reset();
        PaintFaces(painting, paint, {0.5f, 1.0f});
    }
    return FirstFailure(FinishFaces(painting), std::move(palette));
}

}  // namespace skyvault
