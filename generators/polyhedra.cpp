#include "generators/polyhedra.h"

#include <algorithm>
#include <cassert>
#include <cmath>

#include "generators/paint_faces.h"
#include "generators/palette.h"
#include "generators/polyhedron_faces.h"
#include "image/pixel_rows.h"
#include "platform/numeric.h"

namespace skyvault {

namespace {

constexpr Color8 kBorderColour{0, 0, 0, 255};

/// Smaller pictures than this would be all the same colour.
constexpr float kLeastScale = 0.001f;

/// One picture of the filmstrip.
struct Frame {
    const Color8* pixels = nullptr;
    std::ptrdiff_t stride = 0;  ///< pixels from row to row
    std::int32_t width = 0, height = 0;
};

/// The texture with four channels; a picture that cannot be read (PictureMissing) stays invalid.
Outcome ReadTexture(const ImportRequest& request, Image& picture) {
    Outcome read = ReadPalette(request, picture);
    if (!read.IsDone()) return read;
    if (picture.format != PixelFormat::Rgba8) {
        Image converted(picture.width, picture.height, PixelFormat::Rgba8);
        if (!converted.IsValid()) return Failure(Reason::NoMemory);
        for (std::uint32_t row = 0; row < picture.height; ++row) {
            ConvertRow(picture.format, picture.Row(row), PixelFormat::Rgba8, converted.Row(row),
                       picture.width);
        }
        picture = std::move(converted);
    }
    if (!request.settings.transparency) picture.FlattenAlpha(request.settings.backgroundColour);
    return {};
}

Frame FrameOf(const Image& texture, int which, int frames) {
    const bool sideBySide = texture.width >= texture.height;
    const std::int64_t length = sideBySide ? texture.width : texture.height;
    const std::int32_t from = static_cast<std::int32_t>(length * which / frames);
    const std::int32_t to = static_cast<std::int32_t>(length * (which + 1) / frames);
    const std::int32_t width = static_cast<std::int32_t>(texture.width);
    const std::int32_t height = static_cast<std::int32_t>(texture.height);
    const Color8* const pixels = reinterpret_cast<const Color8*>(texture.pixels.get());
    if (sideBySide) return {pixels + from, width, to - from, height};
    return {pixels + std::size_t{texture.width} * from, width, width, to - from};
}

/// A face ready for painting: what a ray is multiplied with to give a place in the picture, in pictures, from
/// the middle of the face.
struct PaintedFace {
    PolyhedronFace shape;
    Direction across, down;
    Frame frame;
};

class PolyhedronPainter {
  public:
    /// texture: Rgba8 or invalid.
    PolyhedronPainter(const Polyhedron& solid, const Image& texture, const GeneratorSettings& settings)
        : faceCount_(solid.faceCount) {
        const float border = settings.polyhedraBorder;
        border_ = border > 0.0f ? border * solid.leastInRadius : 0.0f;
        const float asked = settings.polyhedraTextureScale;
        const float scale = asked > kLeastScale ? ClampFloat(asked, kLeastScale, 1000.0f) : kLeastScale;
        const std::int32_t longest = static_cast<std::int32_t>(std::max(texture.width, texture.height));
        const int frames = ClampInt(settings.polyhedraFrames, 1, std::max(longest, 1));
        for (int i = 0; i < faceCount_; ++i) {
            PaintedFace& face = faces_[i];
            face.shape = solid.faces[i];
            if (!texture.IsValid()) continue;
            face.frame = FrameOf(texture, FrameOfFace(i, faceCount_, solid.pentagonCount, frames), frames);
            const float width = static_cast<float>(face.frame.width);
            const float height = static_cast<float>(face.frame.height);
            const float perPixel = std::min(width, height) / (2.0f * face.shape.radius * scale);
            face.across = Times(face.shape.right, perPixel / width);
            face.down = Times(face.shape.up, -perPixel / height);
        }
    }

    void Paint(int count, const DirectionBlock& d, Color8* colours) const {
        float nearness[kBlockSize];
        std::int32_t hit[kBlockSize];
        FindFaces(count, d, nearness, hit);
        // Neighbouring pixels mostly see the same face.
        for (int from = 0, to; from < count; from = to) {
            to = from + 1;
            while (to < count && hit[to] == hit[from]) ++to;
            const PaintedFace& face = faces_[hit[from]];
            if (face.frame.pixels) {
                PaintTexture(face, from, to, d, nearness, colours);
            } else {
                std::fill(colours + from, colours + to, Color8(255, 0, 0, 255));
            }
            if (border_ > 0.0f) PaintBorder(face.shape, from, to, d, nearness, colours);
        }
    }

  private:
    static Direction Times(const Direction& v, float factor) {
        return {v.x * factor, v.y * factor, v.z * factor};
    }

    /// Which plane a ray meets first, and one divided by how far away.
    void FindFaces(int count, const DirectionBlock& d, float* nearness, std::int32_t* hit) const {
        for (int i = 0; i < count; ++i) {
            nearness[i] = 0.0f;
            hit[i] = 0;
        }
        for (int f = 0; f < faceCount_; ++f) {
            const Direction plane = faces_[f].shape.plane;
            for (int i = 0; i < count; ++i) {
                const float product = plane.x * d.x[i] + plane.y * d.y[i] + plane.z * d.z[i];
                // Faces come in the order of their numbers: the larger of two is the later one.
                const float nearest = nearness[i];
                const std::int32_t before = hit[i];
                const std::int32_t nearer = product > nearest ? f : 0;
                hit[i] = nearer > before ? nearer : before;
                nearness[i] = product > nearest ? product : nearest;
            }
        }
    }

    static void PaintTexture(const PaintedFace& face, int from, int to, const DirectionBlock& d,
                             const float* nearness, Color8* colours) {
        const Direction across = face.across, down = face.down;
        const Frame frame = face.frame;
        const float width = static_cast<float>(frame.width), height = static_cast<float>(frame.height);
        const std::int32_t lastColumn = frame.width - 1, lastRow = frame.height - 1;
        std::int32_t columns[kBlockSize], rows[kBlockSize];
        for (int i = from; i < to; ++i) {
            const float distance = 1.0f / nearness[i];
            const float u = (across.x * d.x[i] + across.y * d.y[i] + across.z * d.z[i]) * distance + 0.5f;
            const float v = (down.x * d.x[i] + down.y * d.y[i] + down.z * d.z[i]) * distance + 0.5f;
            // Everything repeats with period 1. A hair below a whole number the rest rounds to 1.
            const std::int32_t column = static_cast<std::int32_t>((u - std::floor(u)) * width);
            const std::int32_t row = static_cast<std::int32_t>((v - std::floor(v)) * height);
            columns[i] = std::min(column, lastColumn);
            rows[i] = std::min(row, lastRow);
        }
        for (int i = from; i < to; ++i) colours[i] = frame.pixels[rows[i] * frame.stride + columns[i]];
    }

    void PaintBorder(const PolyhedronFace& shape, int from, int to, const DirectionBlock& d,
                     const float* nearness, Color8* colours) const {
        // On the plane, not along the ray: a border is as wide everywhere.
        float nearest[kBlockSize];
        for (int i = from; i < to; ++i) nearest[i] = 1e9f;
        for (int k = 0; k < shape.edgeCount; ++k) {
            const Direction edge = shape.edges[k];
            for (int i = from; i < to; ++i) {
                const float away = edge.x * d.x[i] + edge.y * d.y[i] + edge.z * d.z[i];
                nearest[i] = away < nearest[i] ? away : nearest[i];
            }
        }
        const float border = border_;
        for (int i = from; i < to; ++i) {
            // nearness is what the distance is divided by.
            colours[i] = nearest[i] < border * nearness[i] ? kBorderColour : colours[i];
        }
    }

    std::array<PaintedFace, 32> faces_;
    int faceCount_;
    float border_ = 0;
};

}  // namespace

int FrameOfFace(int face, int faceCount, int pentagons, int frames) {
    if (pentagons == 0 || frames == 1) return face % frames;
    // Each kind has as large a part of the frames as of the faces, and one at least.
    const int used = std::min(frames, faceCount);
    const int first = std::max(1, used * pentagons / faceCount);
    return face < pentagons ? face % first : first + (face - pentagons) % (used - first);
}

Outcome GeneratePolyhedron(const ImportRequest& request, Feedback& feedback, Panorama& panorama) {
    if (request.Path().empty()) return Failure(Reason::CannotOpen);
    Image texture;
    Outcome read = ReadTexture(request, texture);
    if (read.reason == Reason::NoMemory) return read;
    const PolyhedronPainter painter(MakePolyhedron(request.format), texture, request.generator);
    const FacePainting painting = StartPainting(request, feedback, panorama, L"Generating", true);
    PaintFaces(painting, [&painter](const FaceRun& run, DirectionBlock& directions, Color8* colours) {
        painter.Paint(run.count, directions, colours);
    });
    return FirstFailure(FinishFaces(painting), std::move(read));
}

}  // namespace skyvault
