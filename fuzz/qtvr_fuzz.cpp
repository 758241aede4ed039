#include <memory>

#include "fuzz/require.h"
#include "platform/debug_line.h"
#include "qtvr/movie_scan.h"

using namespace skyvault;

namespace {

const FaceGrid& GridOf(int tilesPerSide) {
    static std::array<FaceGrid, kMostTilesPerSide + 1> grids;
    FaceGrid& grid = grids[static_cast<std::size_t>(tilesPerSide)];
    if (grid.cellCount == 0) BuildFaceGrid(tilesPerSide, grid);
    return grid;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const DebugLineCapture quiet;
    const MovieBytes movie = BytesOf(data, size);
    const auto pictures = std::make_unique<MoviePictures>();
    FindPictures(movie, *pictures);
    Require(pictures->count >= 0 && pictures->count <= kMostPictures);
    for (int i = 0; i < pictures->count; ++i) {
        const ByteRange range = pictures->ranges[static_cast<std::size_t>(i)];
        Require(range.size >= 4 && range.offset <= size && range.size <= size - range.offset);
    }
    const auto table = std::make_unique<FaceTable>();
    for (int n = 1; n <= kMostTilesPerSide; ++n) {
        const FaceGrid& grid = GridOf(n);
        if (!ReadFaceTable(movie, n, *table)) continue;
        Require(table->count == grid.cellCount);
        TilePlaces places;
        const bool placed = PlaceTiles(movie, grid, *table, places);
        for (int c = 0; c < grid.cellCount; ++c) {
            const int place = places[static_cast<std::size_t>(c)];
            Require(place >= (placed ? 0 : -1) && place < grid.cellCount);
        }
    }
    return 0;
}
