#include "generators/cube_heights.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <vector>

#include "generators/cube_surface.h"
#include "generators/random_bits.h"
#include "generators/sphere_waves.h"
#include "platform/parallel_rows.h"
#include "projection/fast_math.h"

namespace skyvault {

namespace {

/// Levels up to this one (squares of 22.5°) make the lie of the land, whatever the roughness.
constexpr int kLandLevels = 2;
/// How much higher than half of the level before the first rough steps are, with roughness 1.
constexpr float kRoughest = 5.0f;

/// The squares along an edge whose points the waves give; smaller ones are displaced.
constexpr std::uint32_t kWaveCells = 64;

/// Height of the largest step up or down at a level; level 0 are squares of 90°.
float StepHeight(int level, float roughness) {
    float height = level <= kLandLevels ? 1.0f : kRoughest * roughness;
    for (int i = 0; i < level; ++i) height *= 0.5f;
    return height;
}

/// The number of a point of the surface: the same on all faces it lies on and for any number of cells, for it
/// is made of its place in the cube, in units of the finest grid. Along a row it grows by the same amount
/// from point to point.
struct PointNumbers {
    std::uint32_t first = 0, perColumn = 0, perRow = 0;

    PointNumbers(int face, std::uint32_t cells, std::uint32_t seed) {
        const std::uint32_t unit = CubeHeights::kMostCells / cells;
        const auto number = [](const CubePoint& p) {
            return static_cast<std::uint32_t>(p.x) * 0x9e3779b1u +
                   static_cast<std::uint32_t>(p.y) * 0x85ebca77u +
                   static_cast<std::uint32_t>(p.z) * 0xc2b2ae3du;
        };
        const FaceLattice& lattice = LatticeOf(face);
        first = Scramble(seed) + number(lattice.origin) * CubeHeights::kMostCells;
        perColumn = number(lattice.perColumn) * unit;
        perRow = number(lattice.perRow) * unit;
    }
    std::uint32_t At(std::uint32_t column, std::uint32_t row) const {
        return first + column * perColumn + row * perRow;
    }
};

}  // namespace

/// What a level's passes need: squares of 2 · half cells are cut into four.
struct CubeHeights::Level {
    std::uint32_t seed, half;
    float step;
};

bool CubeHeights::Build(std::uint32_t cells, float roughness, std::uint32_t seed, const Report& report) {
    assert(cells >= 1 && cells <= kMostCells && (cells & (cells - 1)) == 0);
    cells_ = cells;
    heights_ = AllocateBytes(GridSize() * kFaceCount * sizeof(float));
    if (!heights_) {
        cells_ = 0;
        return false;
    }
    if (report) report(0.0f);
    const std::uint32_t spacing = std::max(1u, cells / kWaveCells);
    int number = MakeLand(spacing, roughness, seed);
    for (std::uint32_t half = spacing / 2; half >= 1; half /= 2) {
        const Level level{seed, half, StepHeight(++number, roughness)};
        // Bands of rows that each take long enough to be worth handing to a thread.
        const std::uint32_t rows = cells / half + 1;
        const std::uint32_t bandRows = std::max(1u, 16384 / rows);
        const int bandsPerFace = static_cast<int>((rows + bandRows - 1) / bandRows);
        const bool parallel = rows > 256;
        // The levels before this one were a quarter of its work.
        const float share = 1.0f / (static_cast<float>(half) * static_cast<float>(half));
        const auto pass = [&](int which, auto&& rowWork) {
            const auto band = [&](int b) {
                const std::uint32_t from = static_cast<std::uint32_t>(b % bandsPerFace) * bandRows;
                const std::uint32_t to = std::min(from + bandRows, rows);
                for (std::uint32_t row = from; row < to; ++row) rowWork(b / bandsPerFace, row * half);
            };
            ParallelBands(bandsPerFace * kFaceCount, parallel, band);
            if (report) report(share * (0.25f + 0.25f * static_cast<float>(which)));
        };
        pass(0, [&](int face, std::uint32_t row) { SquareRow(level, face, row); });
        pass(1, [&](int face, std::uint32_t row) { SideRow(level, face, row); });
        CubeEdgeSides(level);
        pass(2, [&](int face, std::uint32_t row) { OldPointRow(level, face, row); });
        CubeEdgeOldPoints(level);
    }
    if (report) report(1.0f);
    return true;
}

int CubeHeights::MakeLand(std::uint32_t spacing, float roughness, std::uint32_t seed) {
    const int squares = static_cast<int>(cells_ / spacing), points = squares + 1;
    std::vector<float> steps;
    for (std::uint32_t across = 1; across <= cells_ / spacing; across *= 2) {
        steps.push_back(StepHeight(static_cast<int>(steps.size()), roughness));
    }
    const SphereWaves waves(steps, seed);
    ParallelBands(kFaceCount * points, squares >= 32, [&](int band) {
        const int face = band / points, row = band % points;
        std::array<float, kWaveCells + 1> x, y, z, heights;
        for (int i = 0; i < points; ++i) {
            // From −squares to squares each way: points that several faces share have the same numbers.
            const FaceLattice& lattice = LatticeOf(face);
            const auto place = [&](int origin, int perColumn, int perRow) {
                return static_cast<float>(2 * (origin * squares + i * perColumn + row * perRow) - squares);
            };
            const float px = place(lattice.origin.x, lattice.perColumn.x, lattice.perRow.x);
            const float py = place(lattice.origin.y, lattice.perColumn.y, lattice.perRow.y);
            const float pz = place(lattice.origin.z, lattice.perColumn.z, lattice.perRow.z);
            const float length = SquareRoot(px * px + py * py + pz * pz);
            const auto at = static_cast<std::size_t>(i);
            x[at] = px / length;
            y[at] = py / length;
            z[at] = pz / length;
        }
        waves.At(x.data(), y.data(), z.data(), points, heights.data());
        float* const to = Grid(face) + static_cast<std::size_t>(row) * spacing * Pitch();
        for (int i = 0; i < points; ++i) {
            to[static_cast<std::size_t>(i) * spacing] = heights[static_cast<std::size_t>(i)];
        }
    });
    return static_cast<int>(steps.size()) - 1;
}

/// The middles of a row of squares.
void CubeHeights::SquareRow(const Level& level, int face, std::uint32_t row) {
    const std::uint32_t half = level.half;
    if (row / half % 2 == 0) return;
    const PointNumbers numbers(face, cells_, level.seed);
    float* const at = Grid(face) + row * Pitch();
    const float* const above = at - half * Pitch();
    const float* const below = at + half * Pitch();
    const std::uint32_t firstNumber = numbers.At(half, row);
    const std::uint32_t perSquare = numbers.perColumn * 2 * half;
    const int squares = static_cast<int>(cells_ / (2 * half));
    const std::size_t stride = 2 * std::size_t{half};
    const float step = level.step;
    for (int i = 0; i < squares; ++i) {
        const std::size_t left = i * stride, middle = left + half, right = left + stride;
        at[middle] = ((above[left] + above[right]) + (below[left] + below[right])) * 0.25f +
                     step * NoiseOf(firstNumber + static_cast<std::uint32_t>(i) * perSquare);
    }
}

/// The middles of sides that lie in or cross a row, but for those on the face's edges.
void CubeHeights::SideRow(const Level& level, int face, std::uint32_t row) {
    if (row == 0 || row == cells_) return;
    const std::uint32_t half = level.half;
    const PointNumbers numbers(face, cells_, level.seed);
    float* const at = Grid(face) + row * Pitch();
    const float* const above = at - half * Pitch();
    const float* const below = at + half * Pitch();
    // In a row of old points every other point is new, from the first on; in a row of squares' middles too,
    // but the first (and the last) is on the face's edge.
    const bool oldRow = row / half % 2 == 0;
    const std::uint32_t from = oldRow ? half : 2 * half;
    const int points = static_cast<int>(cells_ / (2 * half)) - (oldRow ? 0 : 1);
    const std::uint32_t firstNumber = numbers.At(from, row);
    const std::uint32_t perPoint = numbers.perColumn * 2 * half;
    const std::size_t stride = 2 * std::size_t{half};
    const float step = level.step;
    for (int i = 0; i < points; ++i) {
        const std::size_t column = from + i * stride;
        at[column] = ((at[column - half] + at[column + half]) + (above[column] + below[column])) * 0.25f +
                     step * NoiseOf(firstNumber + static_cast<std::uint32_t>(i) * perPoint);
    }
}

/// The old points of a row, but for those on the face's edges.
void CubeHeights::OldPointRow(const Level& level, int face, std::uint32_t row) {
    const std::uint32_t half = level.half;
    if (row == 0 || row == cells_ || row / half % 2 != 0) return;
    float* const at = Grid(face) + row * Pitch();
    const float* const above = at - half * Pitch();
    const float* const below = at + half * Pitch();
    const int points = static_cast<int>(cells_ / (2 * half)) - 1;
    const std::size_t stride = 2 * std::size_t{half};
    for (int i = 0; i < points; ++i) {
        const std::size_t column = (i + 1) * stride;
        const float sides = (at[column - half] + at[column + half]) + (above[column] + below[column]);
        const float middles =
            (above[column - half] + above[column + half]) + (below[column - half] + below[column + half]);
        at[column] = sides * 0.25f + (at[column] - middles * 0.25f) * 0.25f;
    }
}

void CubeHeights::CubeEdgeSides(const Level& level) {
    const std::uint32_t half = level.half;
    for (const CubeEdge& edge : CubeEdges()) {
        const GridLine first(edge.sides[0], cells_), second(edge.sides[1], cells_);
        float* const a = Grid(edge.sides[0].face);
        float* const b = Grid(edge.sides[1].face);
        const PointNumbers numbers(edge.sides[0].face, cells_, level.seed);
        for (std::uint32_t at = half; at < cells_; at += 2 * half) {
            const std::uint32_t number = numbers.At(first.Column(at), first.Row(at));
            const float ends = a[first.Index(at - half, 0)] + a[first.Index(at + half, 0)];
            const float middles = a[first.Index(at, half)] + b[second.Index(at, half)];
            const float height = (ends + middles) * 0.25f + level.step * NoiseOf(number);
            a[first.Index(at, 0)] = height;
            b[second.Index(at, 0)] = height;
        }
    }
}

void CubeHeights::CubeEdgeOldPoints(const Level& level) {
    const std::uint32_t half = level.half;
    for (const CubeEdge& edge : CubeEdges()) {
        const GridLine first(edge.sides[0], cells_), second(edge.sides[1], cells_);
        float* const a = Grid(edge.sides[0].face);
        float* const b = Grid(edge.sides[1].face);
        for (std::uint32_t at = 2 * half; at < cells_; at += 2 * half) {
            const float sides = (a[first.Index(at - half, 0)] + a[first.Index(at + half, 0)]) +
                                (a[first.Index(at, half)] + b[second.Index(at, half)]);
            const float middles = (a[first.Index(at - half, half)] + a[first.Index(at + half, half)]) +
                                  (b[second.Index(at - half, half)] + b[second.Index(at + half, half)]);
            const float height = sides * 0.25f + (a[first.Index(at, 0)] - middles * 0.25f) * 0.25f;
            a[first.Index(at, 0)] = height;
            b[second.Index(at, 0)] = height;
        }
    }
    // The cube's corners, where three sides and three squares meet: P' = (4 · mean E − mean F) / 3. Each side
    // is in two of the three grids.
    for (const CubeCorner& corner : CubeCorners()) {
        float sides = 0, middles = 0;
        for (const GridCorner& place : corner) {
            const float* const grid = Grid(place.face);
            const std::uint32_t column = place.right ? cells_ - half : half;
            const std::uint32_t row = place.bottom ? cells_ - half : half;
            sides += grid[row * Pitch() + (place.right ? cells_ : 0)] +
                     grid[(place.bottom ? cells_ : 0) * Pitch() + column];
            middles += grid[row * Pitch() + column];
        }
        const float height = (4.0f * (sides * (1.0f / 6.0f)) - middles * (1.0f / 3.0f)) * (1.0f / 3.0f);
        for (const GridCorner& place : corner) {
            Grid(place.face)[(place.bottom ? cells_ : 0) * Pitch() + (place.right ? cells_ : 0)] = height;
        }
    }
}

CubeHeights::Statistics CubeHeights::Measure() const {
    // Row by row, so that the sums do not depend on how many threads there are.
    double sum = 0, squares = 0;
    for (int face = 0; face < kFaceCount; ++face) {
        for (std::uint32_t row = 0; row <= cells_; ++row) {
            const float* const heights = Grid(face) + row * Pitch();
            double rowSum = 0, rowSquares = 0;
            for (std::size_t column = 0; column <= cells_; ++column) {
                const double height = static_cast<double>(heights[column]);
                rowSum += height;
                rowSquares += height * height;
            }
            sum += rowSum;
            squares += rowSquares;
        }
    }
    const double count = static_cast<double>(GridSize()) * kFaceCount;
    const double mean = sum / count;
    const double variance = std::max(squares / count - mean * mean, 0.0);
    return {static_cast<float>(mean), SquareRoot(static_cast<float>(variance))};
}

}  // namespace skyvault
