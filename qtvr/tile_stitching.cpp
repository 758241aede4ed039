#include "qtvr/tile_stitching.h"

#include <cassert>
#include <cstdint>
#include <cstdlib>
#include <utility>

#include "image/pixel_rows.h"
#include "platform/mvector.h"

namespace skyvault {

namespace {

constexpr wchar_t kProgressText[] = L"Stitching tiles...";

/// The tiles' edge pixels in rows of their own: edge k of tile t is row 4t + k, three bytes a pixel.
class EdgeRows {
  public:
    bool Read(std::span<const Image> tiles);

    int RowCount() const { return rowCount_; }

    /// Sum of the channels' differences of two edges that lie against each other: one is read clockwise, the
    /// other one against it. The same for (a, b) and (b, a).
    std::uint32_t Difference(int a, int b) const {
        const std::uint8_t* const one = clockwise_.get() + rowBytes_ * static_cast<std::size_t>(a);
        const std::uint8_t* const other = against_.get() + rowBytes_ * static_cast<std::size_t>(b);
        std::uint32_t sum = 0;
        for (std::size_t i = 0; i < rowBytes_; ++i) {
            sum += static_cast<std::uint32_t>(std::abs(int{one[i]} - int{other[i]}));
        }
        return sum;
    }

  private:
    using Buffer = std::unique_ptr<std::uint8_t[], FreeDeleter>;

    void ReadRow(const Image& tile, int edge, std::size_t row);

    int rowCount_ = 0;
    std::size_t rowBytes_ = 0;
    Buffer clockwise_, against_;
};

bool EdgeRows::Read(std::span<const Image> tiles) {
    rowCount_ = static_cast<int>(4 * tiles.size());
    rowBytes_ = std::size_t{3} * tiles.front().width;
    const std::size_t bytes = rowBytes_ * static_cast<std::size_t>(rowCount_);
    clockwise_.reset(static_cast<std::uint8_t*>(MGetMemory(bytes)));
    against_.reset(static_cast<std::uint8_t*>(MGetMemory(bytes)));
    if (!clockwise_ || !against_) return false;
    for (std::size_t t = 0; t < tiles.size(); ++t) {
        for (int edge = 0; edge < 4; ++edge) ReadRow(tiles[t], edge, 4 * t + static_cast<std::size_t>(edge));
    }
    return true;
}

void EdgeRows::ReadRow(const Image& tile, int edge, std::size_t row) {
    const std::int32_t size = static_cast<std::int32_t>(tile.width), last = size - 1;
    std::uint8_t* const forward = clockwise_.get() + rowBytes_ * row;
    std::uint8_t* const backward = against_.get() + rowBytes_ * row;
    for (std::int32_t i = 0; i < size; ++i) {
        const std::int32_t xs[] = {i, last, last - i, 0}, ys[] = {0, i, last, last - i};
        const Color8 colour = tile.GetPixel8(xs[edge], ys[edge]);
        const std::uint8_t channels[] = {colour.red, colour.green, colour.blue};
        for (std::size_t channel = 0; channel < 3; ++channel) {
            forward[3 * static_cast<std::size_t>(i) + channel] = channels[channel];
            backward[3 * static_cast<std::size_t>(last - i) + channel] = channels[channel];
        }
    }
}

/// What it costs to lay two edges against each other: the mean difference of a pixel, 0..765.
class EdgeCosts {
  public:
    bool Compute(const EdgeRows& rows, std::uint32_t edgeLength, Feedback& feedback) {
        count_ = static_cast<std::size_t>(rows.RowCount());
        costs_.reset(static_cast<float*>(MGetMemory(sizeof(float) * count_ * count_)));
        if (!costs_) return false;
        const float length = static_cast<float>(edgeLength);
        for (int a = 0; a < rows.RowCount(); ++a) {
            for (int b = 0; b <= a; ++b) {
                const float cost = static_cast<float>(rows.Difference(a, b)) / length;
                At(a, b) = cost;
                At(b, a) = cost;
            }
            if (feedback.ProgressActive()) {
                feedback.SetProgress(static_cast<float>(a + 1) / static_cast<float>(rows.RowCount()) * 0.5f,
                                     kProgressText);
            }
        }
        return true;
    }

    /// The costs of all edges against one: those of tile t are 4t .. 4t + 3.
    const float* Against(CellEdge tileEdge) const {
        return costs_.get() + count_ * static_cast<std::size_t>(4 * tileEdge.cell + tileEdge.edge);
    }

  private:
    float& At(int a, int b) {
        return costs_[count_ * static_cast<std::size_t>(a) + static_cast<std::size_t>(b)];
    }

    std::size_t count_ = 0;
    std::unique_ptr<float[], FreeDeleter> costs_;
};

struct BestTile {
    int tile = -1;
    float cost = 1000.0f;
};

BestTile FindBestTile(const FaceCell& cell, const EdgeCosts& costs, const TilePlaces& places,
                      const std::array<bool, kMostTiles>& used, int tileCount) {
    // The edges to cells that hold a tile, in the order of the cell's edges.
    std::array<const float*, 4> against{};
    int edgeCount = 0;
    for (std::size_t k = 0; k < 4; ++k) {
        const CellEdge across = cell.neighbours[k];
        const int placed = across.cell < 0 ? -1 : places[static_cast<std::size_t>(across.cell)];
        if (placed < 0) continue;
        against[static_cast<std::size_t>(edgeCount++)] = costs.Against({placed, across.edge}) + k;
    }
    BestTile best;
    for (int t = 0; t < tileCount; ++t) {
        if (used[static_cast<std::size_t>(t)]) continue;
        float cost = 0;
        for (int e = 0; e < edgeCount; ++e) cost += against[static_cast<std::size_t>(e)][4 * t];
        // Without an edge to go by, any tile is as good as another.
        if (edgeCount > 0) cost /= static_cast<float>(edgeCount);
        if (cost < best.cost) best = {t, cost};
    }
    return best;
}

/// Places the tiles from one first tile on; the sum of their costs.
float PlaceFrom(int first, const FaceGrid& grid, const EdgeCosts& costs, TilePlaces& places) {
    std::array<bool, kMostTiles> used{};
    places.fill(-1);
    places[0] = first;
    used[static_cast<std::size_t>(first)] = true;
    float total = 0;
    for (int c = 1; c < grid.cellCount; ++c) {
        const auto cell = static_cast<std::size_t>(c);
        const BestTile best = FindBestTile(grid.cells[cell], costs, places, used, grid.cellCount);
        if (best.tile < 0) continue;
        places[cell] = best.tile;
        used[static_cast<std::size_t>(best.tile)] = true;
        total += best.cost;
    }
    return total;
}

}  // namespace

bool StitchTiles(const FaceGrid& grid, std::span<const Image> tiles, Feedback& feedback, TilePlaces& places) {
    assert(static_cast<int>(tiles.size()) == grid.cellCount && tiles.front().IsValid());
    EdgeCosts costs;
    {
        EdgeRows rows;
        if (!rows.Read(tiles) || !costs.Compute(rows, tiles.front().width, feedback)) return false;
    }
    float bestTotal = 100000.0f;
    int best = 0;
    for (int first = 0; first < grid.cellCount; ++first) {
        const float total = PlaceFrom(first, grid, costs, places);
        if (total < bestTotal) {
            bestTotal = total;
            best = first;
        }
        if (feedback.ProgressActive()) {
            feedback.SetProgress(
                0.5f + static_cast<float>(first + 1) / static_cast<float>(grid.cellCount) * 0.5f,
                kProgressText);
        }
    }
    PlaceFrom(best, grid, costs, places);
    return true;
}

}  // namespace skyvault
