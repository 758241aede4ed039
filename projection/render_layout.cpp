#include "projection/render_layout.h"

#include <algorithm>
#include <atomic>
#include <cassert>

#include "image/pixel_rows.h"
#include "platform/parallel_rows.h"
#include "projection/resize_image.h"
#include "projection/view_sampler.h"

namespace skyvault {

namespace {

/// Columns of the result averaged together: two blocks of the doubled picture.
constexpr std::uint32_t kDoubledTile = kBlockSize;

/// A block of background pixels, to be copied where the shape is not.
class Background {
  public:
    Background(PixelFormat format, const Color8& colour) : bytesPerPixel_(BytesPerPixel(format)) {
        for (int i = 0; i < kBlockSize; ++i) {
            WriteColor8(format, pixels_ + static_cast<std::size_t>(i) * bytesPerPixel_, colour);
        }
    }
    /// count ≤ kBlockSize pixels at destination.
    void Fill(std::byte* destination, int count) const {
        std::copy_n(pixels_, static_cast<std::size_t>(count) * bytesPerPixel_, destination);
    }

  private:
    std::uint32_t bytesPerPixel_;
    std::byte pixels_[kBlockSize * 8];
};

/// A block whose pixels were found and are on their way from memory.
struct PendingBlock {
    ViewSampler::Lookup lookup;
    std::byte* target = nullptr;  ///< null: none
    bool whole = true;            ///< else `inside` says which pixels count
    std::uint8_t inside[kBlockSize];

    void Finish(const ViewSampler& sampler) {
        if (!target) return;
        if (whole) {
            sampler.Fetch(lookup, target);
        } else {
            std::byte pixels[kBlockSize * 8];
            sampler.Fetch(lookup, pixels);
            const std::uint32_t bytesPerPixel = sampler.BytesPerPixel();
            for (int i = 0; i < lookup.count; ++i) {
                if (!inside[i]) continue;
                const std::size_t at = static_cast<std::size_t>(i) * bytesPerPixel;
                std::copy_n(pixels + at, bytesPerPixel, target + at);
            }
        }
        target = nullptr;
    }
};

/// A block's pixels from the first to the last inside the shape.
struct Stretch {
    int first = 0, count = 0;
    bool whole = true;  ///< all of them are inside
};

/// Moves the stretch to the start of the block and of the mask, so that nothing around it is sampled. At
/// the rims of round shapes that is half of all the pixels in blocks.
Stretch CutToShape(DirectionBlock& block, int count, std::uint8_t* inside) {
    int first = 0, end = count;
    while (first < end && !inside[first]) ++first;
    while (end > first && !inside[end - 1]) --end;
    if (first > 0) {
        for (float* v : {block.x, block.y, block.z}) std::copy(v + first, v + end, v);
        std::copy(inside + first, inside + end, inside);
    }
    const int stretch = end - first;
    return {first, stretch, std::count(inside, inside + stretch, 0) == 0};
}

/// A part of a grid.
struct GridPart {
    std::uint32_t firstColumn = 0, columns = 0, firstRow = 0, rows = 0;
};

/// Writes the part's pixels at destination. Each block is fetched after the next one was found, so that its
/// pixels have time to arrive.
void RenderPart(const LayoutGrid& grid, const GridPart& part, const ViewSampler& sampler,
                const Background& background, std::byte* destination, std::size_t stride) {
    const std::uint32_t bytesPerPixel = sampler.BytesPerPixel();
    PendingBlock pending[2];
    int current = 0;
    const auto render = [&](std::uint32_t row, std::uint32_t column, int count) {
        PendingBlock& found = pending[current];
        DirectionBlock& block = found.lookup.directions;
        const Coverage coverage =
            grid.directions(part.firstRow + row, part.firstColumn + column, count, block, found.inside);
        std::byte* target = destination + row * stride + std::size_t{column} * bytesPerPixel;
        if (coverage != Coverage::All) background.Fill(target, count);
        if (coverage == Coverage::None) return;
        Stretch inside{0, count};
        if (coverage == Coverage::Some) {
            inside = CutToShape(block, count, found.inside);
            target += static_cast<std::size_t>(inside.first) * bytesPerPixel;
        }
        sampler.Find(found.lookup, inside.count);
        found.target = target;
        found.whole = inside.whole;
        current = 1 - current;
        pending[current].Finish(sampler);
    };
    ForRowBlocks(part.columns, 0, part.rows, render);
    pending[1 - current].Finish(sampler);
}

Outcome OutOfMemory(Image& result) {
    result.Clear();
    return Failure(Reason::NoMemory);
}

}  // namespace

Outcome RenderLayout(const Panorama& panorama, const LayoutGrid& grid, const RenderOptions& options,
                     Image& result) {
    const std::uint32_t scale = options.halve ? 2 : 1;
    assert(grid.width % scale == 0 && grid.height % scale == 0);
    const std::uint32_t width = grid.width / scale;
    const std::uint32_t height = grid.height / scale;
    if (!result.IsValid() || result.width != width || result.height != height ||
        result.format != options.format) {
        result.Clear();
        result = Image(width, height, options.format);
        if (!result.IsValid()) return OutOfMemory(result);
    }
    const ViewSampler sampler(
        panorama,
        {.format = options.format, .emptyColour = options.emptyColour, .toUnitLength = grid.toUnitLength});
    const std::uint32_t bytesPerPixel = BytesPerPixel(options.format);
    const int bandCount = static_cast<int>((height + kBandRows - 1) / kBandRows);
    const BoxGrid halving = MakeBoxGrid(grid.width, grid.height, width, height);
    const Background background(options.format, options.emptyColour);
    std::atomic<bool> failed{false};

    const auto renderBand = [&](int band) {
        const std::uint32_t first = static_cast<std::uint32_t>(band) * kBandRows;
        const std::uint32_t rows = std::min(kBandRows, height - first);
        if (!options.halve) {
            RenderPart(grid, {0, width, first, rows}, sampler, background, result.Row(first), result.stride);
            return;
        }
        Image doubled(std::min(2 * kDoubledTile, grid.width), 2 * rows, options.format);
        if (!doubled.IsValid()) {
            failed = true;
            return;
        }
        for (std::uint32_t column = 0; column < width; column += kDoubledTile) {
            const std::uint32_t columns = std::min(kDoubledTile, width - column);
            doubled.width = 2 * columns;  // the last tile may be narrower; its rows stay where they are
            RenderPart(grid, {2 * column, 2 * columns, 2 * first, 2 * rows}, sampler, background,
                       doubled.Row(0), doubled.stride);
            BoxGrid tile = halving;
            tile.width = columns;
            tile.height = rows;
            for (std::uint32_t row = 0; row < rows; ++row) {
                std::byte* const target = result.Row(first + row) + std::size_t{column} * bytesPerPixel;
                AverageRow(doubled, tile, row, options.format, target);
            }
        }
    };
    const auto report = [&](int finished) {
        const std::uint32_t rows = std::min(static_cast<std::uint32_t>(finished) * kBandRows, height);
        const float last = static_cast<float>(std::max(height, 2u) - 1);
        options.feedback->SetProgress(static_cast<float>(rows - 1) / last, options.progressText);
    };
    const bool reporting = options.feedback != nullptr && options.feedback->ProgressActive();
    if (reporting) options.feedback->SetProgress(0.0f, options.progressText);
    const bool parallel = std::uint64_t{grid.width} * grid.height >= kParallelPixels;
    ParallelBands(bandCount, parallel, renderBand, reporting ? std::function<void(int)>(report) : nullptr);
    return failed ? OutOfMemory(result) : Outcome{};
}

}  // namespace skyvault
