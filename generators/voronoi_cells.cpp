#include "generators/voronoi_cells.h"

#include <algorithm>
#include <bit>
#include <cmath>

namespace skyvault {

namespace {

/// Squares of 256, 64 and 16 pixels; the smallest fills one block of directions.
constexpr int kLevels = 3;
constexpr std::uint32_t kFinerBy = 4;
static_assert((kTileSize / 16) * (kTileSize / 16) == kBlockSize);

/// Squared distances reach 7.5 and are 5 roundings of 6e-8 off; four of them are compared.
constexpr float kSlack = 2e-5f;
/// Directions are unit vectors within this.
constexpr float kDirectionError = 1e-6f;

/// The seeds that matter in a square.
struct Candidates {
    float x[kMostSeeds], y[kMostSeeds], z[kMostSeeds];
    std::uint32_t colour[kMostSeeds];
    int count = 0;

    SeedArrays Arrays() const { return {x, y, z, colour, count}; }
};

/// A ball around the directions of a square.
struct Ball {
    float x = 0, y = 0, z = 0, radius = 0;
};

/// A cap of the sphere below a hemisphere that holds the corners holds what lies between them, too.
Ball BallAround(const FaceRect& rect, const TileCanvas& canvas) {
    float x[5], y[5], z[5];
    canvas.CornersAndMiddle(rect, x, y, z);
    Ball ball{x[4], y[4], z[4], 0.0f};
    for (int i = 0; i < 4; ++i) {
        const float dx = x[i] - ball.x, dy = y[i] - ball.y, dz = z[i] - ball.z;
        ball.radius = std::max(ball.radius, std::sqrt(dx * dx + dy * dy + dz * dz));
    }
    ball.radius += kDirectionError;
    return ball;
}

/// From the seeds to those that may be nearest somewhere in the ball, or make a border there.
void KeepCandidates(const SeedArrays& seeds, const Ball& ball, float border, Candidates& kept) {
    float distance[kMostSeeds];
    const int count = seeds.count;
    for (int k = 0; k < count; ++k) {
        const float dx = seeds.x[k] - ball.x, dy = seeds.y[k] - ball.y, dz = seeds.z[k] - ball.z;
        distance[k] = dx * dx + dy * dy + dz * dz;
    }
    int nearest = 0;
    for (int k = 1; k < count; ++k) nearest = distance[k] < distance[nearest] ? k : nearest;
    const float x = seeds.x[nearest], y = seeds.y[nearest], z = seeds.z[nearest];
    const float sure = distance[nearest] + kSlack + border;
    const float reach = 4.0f * ball.radius * ball.radius;
    int left = 0;
    for (int k = 0; k < count; ++k) {
        const float dx = seeds.x[k] - x, dy = seeds.y[k] - y, dz = seeds.z[k] - z;
        const float along = dx * ball.x + dy * ball.y + dz * ball.z;
        const float acrossX = dx - along * ball.x, acrossY = dy - along * ball.y,
                    acrossZ = dz - along * ball.z;
        const float across = acrossX * acrossX + acrossY * acrossY + acrossZ * acrossZ;
        const float lead = distance[k] - sure - ball.radius * ball.radius * std::fabs(along);
        const bool ruledOut = lead > 0.0f && lead * lead > reach * across;
        kept.x[left] = seeds.x[k];
        kept.y[left] = seeds.y[k];
        kept.z[left] = seeds.z[k];
        kept.colour[left] = seeds.colour[k];
        left += ruledOut ? 0 : 1;
    }
    kept.count = left;
}

/// The lists of a square and of those it lies in, finest last.
struct Painter {
    TileCanvas& canvas;
    float border;
    Candidates lists[kLevels];

    void Paint(const FaceRect& rect, std::uint32_t edge, const SeedArrays& seeds, int level) {
        Candidates& kept = lists[level];
        KeepCandidates(seeds, BallAround(rect, canvas), border, kept);
        if (kept.count == 1) {
            canvas.Fill(rect, std::bit_cast<Color8>(kept.colour[0]));
        } else if (level == kLevels - 1) {
            PaintPixels(rect, kept.Arrays());
        } else {
            PaintParts(rect, edge / kFinerBy, kept.Arrays(), level + 1);
        }
    }

    void PaintParts(const FaceRect& rect, std::uint32_t edge, const SeedArrays& seeds, int level) {
        for (std::uint32_t row = 0; row < rect.height; row += edge) {
            for (std::uint32_t column = 0; column < rect.width; column += edge) {
                const FaceRect part{rect.face, rect.column + column, rect.row + row,
                                    std::min(edge, rect.width - column), std::min(edge, rect.height - row)};
                Paint(part, edge, seeds, level);
            }
        }
    }

    void PaintPixels(const FaceRect& rect, const SeedArrays& seeds) {
        DirectionBlock block;
        canvas.Directions(rect, block);
        const int n = static_cast<int>(rect.width * rect.height);
        std::uint32_t packed[kBlockSize];
        const VoronoiKernels& kernels = ChosenVoronoiKernels();
        if (border > 0.0f) {
            kernels.nearestWithBorder(block.x, block.y, block.z, n, seeds, border, packed);
        } else {
            kernels.nearest(block.x, block.y, block.z, n, seeds, packed);
        }
        Color8 colours[kBlockSize];
        UnpackColours(packed, n, colours);
        canvas.Store(rect, colours);
    }
};

}  // namespace

void PaintCells(const FaceRect& tile, const SeedArrays& seeds, float border, TileCanvas& canvas) {
    Painter painter{canvas, border, {}};
    painter.Paint(tile, kTileSize, seeds, 0);
}

}  // namespace skyvault
