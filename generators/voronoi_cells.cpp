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
    bool allBorder = false;  ///< the whole square is black

    SeedArrays Arrays() const { return {x, y, z, colour, count}; }
};

/// A ball around the directions of a square; its middle is a unit vector.
struct Ball {
    float x = 0, y = 0, z = 0, radius = 0;

    /// Whether the difference of the squared distances to two seeds that are (dx, dy, dz) apart changes by
    /// less than `limit` between the middle and any direction of the ball: by 2r times what the seeds are
    /// apart across the viewing direction, and by r² times what they are apart along it.
    bool ChangesLess(float dx, float dy, float dz, float limit) const {
        const float along = dx * x + dy * y + dz * z;
        const float acrossX = dx - along * x, acrossY = dy - along * y, acrossZ = dz - along * z;
        const float across = acrossX * acrossX + acrossY * acrossY + acrossZ * acrossZ;
        const float rest = limit - radius * radius * std::fabs(along);
        return rest > 0.0f && rest * rest > 4.0f * radius * radius * across;
    }
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

/// Looks at seeds from the middle of a ball.
class SeedView {
  public:
    SeedView(const SeedArrays& seeds, const Ball& ball) : seeds_(seeds), ball_(ball) {
        for (int k = 0; k < seeds.count; ++k) {
            const float dx = seeds.x[k] - ball.x, dy = seeds.y[k] - ball.y, dz = seeds.z[k] - ball.z;
            distance_[k] = dx * dx + dy * dy + dz * dz;
        }
    }

    /// The seed nearest to the middle but for one, which may be −1 for none. There must be another.
    int NearestBut(int other) const {
        int nearest = other == 0 ? 1 : 0;
        for (int k = nearest + 1; k < seeds_.count; ++k) {
            if (k != other && distance_[k] < distance_[nearest]) nearest = k;
        }
        return nearest;
    }

    /// In the whole ball, the squared distance of a is larger than that of b by more than margin.
    bool Farther(int a, int b, float margin) const {
        // Every seed below seeds_.count has a distance, which the analyzer does not follow.
        // NOLINTNEXTLINE(clang-analyzer-core.UndefinedBinaryOperatorResult)
        const float lead = distance_[a] - distance_[b] - margin - kSlack;
        return lead > 0.0f && ball_.ChangesLess(seeds_.x[a] - seeds_.x[b], seeds_.y[a] - seeds_.y[b],
                                                seeds_.z[a] - seeds_.z[b], lead);
    }

  private:
    const SeedArrays& seeds_;
    const Ball& ball_;
    float distance_[kMostSeeds];
};

/// From the seeds to those that may be nearest somewhere in the ball, or make a border there.
void KeepCandidates(const SeedArrays& seeds, const Ball& ball, float border, Candidates& kept) {
    const SeedView view(seeds, ball);
    const int nearest = view.NearestBut(-1);
    const int second = border > 0.0f && seeds.count > 1 ? view.NearestBut(nearest) : -1;
    // Borders everywhere: the two seeds are always so near that no other can be nearer by the border.
    kept.allBorder = second >= 0;
    kept.count = 0;
    for (int k = 0; k < seeds.count; ++k) {
        if (view.Farther(k, nearest, border)) continue;
        if (second >= 0) {
            // Neither the nearest nor the second nearest.
            if (view.Farther(k, nearest, 0.0f) && view.Farther(k, second, 0.0f)) continue;
            kept.allBorder =
                kept.allBorder && view.Farther(k, nearest, -border) && view.Farther(k, second, -border);
        }
        kept.x[kept.count] = seeds.x[k];
        kept.y[kept.count] = seeds.y[k];
        kept.z[kept.count] = seeds.z[k];
        kept.colour[kept.count] = seeds.colour[k];
        ++kept.count;
    }
}

/// The lists of a square and of those it lies in, finest last.
struct Painter {
    TileCanvas& canvas;
    float border;
    Candidates lists[kLevels];

    void Paint(const FaceRect& rect, std::uint32_t edge, const SeedArrays& seeds, int level) {
        Candidates& kept = lists[level];
        KeepCandidates(seeds, BallAround(rect, canvas), border, kept);
        if (kept.allBorder) {
            canvas.Fill(rect, Color8());
        } else if (kept.count == 1) {
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
        const VoronoiKernels& kernels = VoronoiPasses();
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
