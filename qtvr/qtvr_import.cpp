#include "qtvr/qtvr_import.h"

#include <algorithm>
#include <memory>
#include <new>
#include <vector>

#include "codecs/picture_files.h"
#include "codecs/picture_trouble.h"
#include "image/pixel_rows.h"
#include "platform/debug_line.h"
#include "platform/file_stream.h"
#include "platform/files.h"
#include "platform/memory_budget.h"
#include "platform/scratch_folder.h"
#include "qtvr/movie_scan.h"
#include "qtvr/tile_stitching.h"

namespace skyvault {

namespace {

/// Of the pictures offered, those that are square and as large as the largest width or height met in any.
class LargestSquares {
  public:
    void Offer(Image picture) {
        if (!picture.IsValid()) return;
        const std::uint32_t larger = std::max(picture.width, picture.height);
        if (larger > edge_) {
            edge_ = larger;
            for (int t = 0; t < std::min(count_, kMostTiles); ++t)
                tiles_[static_cast<std::size_t>(t)].Clear();
            count_ = 0;
        }
        if (picture.width != edge_ || picture.height != edge_) return;
        // One too many is only counted: no grid has so many.
        if (count_ < kMostTiles) tiles_[static_cast<std::size_t>(count_)] = std::move(picture);
        ++count_;
    }

    int Count() const { return count_; }
    std::uint32_t Edge() const { return edge_; }
    std::span<const Image> Tiles() const {
        return std::span(tiles_).first(static_cast<std::size_t>(std::min(count_, kMostTiles)));
    }

  private:
    std::array<Image, kMostTiles> tiles_;
    int count_ = 0;
    std::uint32_t edge_ = 0;
};

/// Everything an import works with but the movie's bytes.
struct ImportState {
    MoviePictures pictures;
    LargestSquares squares;
    FaceGrid grid;
    FaceTable table;
    TilePlaces places{};
};

void Report(Feedback& feedback, float fraction, const wchar_t* text) {
    if (feedback.ProgressActive()) feedback.SetProgress(fraction, text);
}

/// The codecs read files.
Outcome DecodePicture(MovieBytes bytes, const std::wstring& path, Image& picture) {
    if (path.empty()) return Failure(Reason::CannotOpen);
    FileStream file(path, FileUse::Write);
    const bool written = file.Write(bytes.data(), bytes.size()) && file.Close();
    Outcome loaded = written ? LoadPicture(path, picture) : Failure(Reason::CannotOpen);
    file.Close();
    RemoveFile(path);
    loaded.file.clear();  // the movie is what is told of
    return loaded;
}

Outcome LoadTiles(MovieBytes movie, Feedback& feedback, ImportState& state) {
    const ScratchFolder scratch;
    if (!scratch.Exists()) return Failure(Reason::NoScratchFolder);
    for (int n = 0; n < state.pictures.count; ++n) {
        const ByteRange range = state.pictures.ranges[static_cast<std::size_t>(n)];
        Report(feedback, static_cast<float>(range.offset) / static_cast<float>(movie.size()),
               L"Extracting JPG files...");
        Image picture;
        Outcome decoded = DecodePicture(movie.subspan(range.offset, range.size),
                                        scratch.Path(std::to_wstring(n) + L".jpg"), picture);
        // A tile that is damaged leaves a gap; one there is no memory for is no reason to call the movie
        // wrong.
        if (decoded.reason == Reason::NeedsMemory) return decoded;
        state.squares.Offer(std::move(picture));
    }
    DebugLine(std::to_wstring(state.squares.Count()) +
              L" JPEG files found with the highest square resolution: " +
              std::to_wstring(state.squares.Edge()) + L"\n");
    return {};
}

bool PlaceByTables(MovieBytes movie, Feedback& feedback, ImportState& state) {
    Report(feedback, 0.0f, L"Parsing CUFA...");
    if (!ReadFaceTable(movie, state.grid.tilesPerSide, state.table)) return false;
    Report(feedback, 0.0f, L"Parsing STCO...");
    return PlaceTiles(movie, state.grid, state.table, state.places);
}

/// Copies the tiles of one face into place; what no tile covers is black.
void FillFace(const ImportState& state, int f, Image& face, Feedback& feedback) {
    face.Fill(PixelValue(Color8()));
    const int n = state.grid.tilesPerSide;
    const std::span<const Image> tiles = state.squares.Tiles();
    for (std::size_t c = 0; c < static_cast<std::size_t>(state.grid.cellCount); ++c) {
        const FaceCell& cell = state.grid.cells[c];
        const int place = state.places[c];
        if (static_cast<int>(cell.face) != f) continue;
        Report(feedback,
               static_cast<float>((n * f + cell.row) * n + cell.column) /
                   static_cast<float>(state.grid.cellCount),
               L"Creating cube faces...");
        if (place < 0 || place >= static_cast<int>(tiles.size())) continue;
        const Image& tile = tiles[static_cast<std::size_t>(place)];
        const auto left = std::size_t{tile.width} * static_cast<std::size_t>(cell.column);
        const auto top = tile.height * static_cast<std::uint32_t>(cell.row);
        for (std::uint32_t y = 0; y < tile.height; ++y) {
            ConvertRow(tile.format, tile.Row(y), face.format,
                       face.Row(top + y) + left * BytesPerPixel(face.format), tile.width);
        }
    }
}

bool CreateFaces(const ImportState& state, Feedback& feedback, CubeFaces& faces) {
    const std::uint32_t faceEdge = static_cast<std::uint32_t>(state.grid.tilesPerSide) * state.squares.Edge();
    for (int f = 0; f < kFaceCount; ++f) {
        Image& face = faces[static_cast<std::size_t>(f)];
        face = Image(faceEdge, faceEdge, PixelFormat::Rgba8);
        if (!face.IsValid()) return false;
        FillFace(state, f, face, feedback);
    }
    return true;
}

Outcome ImportMovie(const std::wstring& path, Feedback& feedback, ImportState& state, Panorama& panorama) {
    {
        std::vector<std::byte> movie;
        if (!ReadWholeFile(path, movie) || movie.empty()) {
            return {.reason = Reason::CannotOpen, .cause = WhyNotRead(path)};
        }
        FindPictures(movie, state.pictures);
        if (state.pictures.count == 0) return Failure(Reason::CannotOpen);
        Outcome loaded = LoadTiles(movie, feedback, state);
        if (!loaded.IsDone()) return loaded;

        const int tilesPerSide = TilesPerSide(state.squares.Count());
        if (tilesPerSide == 0) return Failure(Reason::NotACubicMovie);
        DebugLine(L"TileRes = " + std::to_wstring(tilesPerSide) + L"\n");
        BuildFaceGrid(tilesPerSide, state.grid);
        if (!PlaceByTables(movie, feedback, state)) {
            DebugLine(L"Could not parse header, switching to stitching mode...\n");
            if (!StitchTiles(state.grid, state.squares.Tiles(), feedback, state.places)) {
                return Failure(Reason::NoMemory);
            }
        }
    }
    std::uint64_t memory = 0;
    for (const Image& tile : state.squares.Tiles()) memory += tile.ByteCount();
    const std::uint64_t faceEdge = std::uint64_t{1} * state.grid.tilesPerSide * state.squares.Edge();
    memory += kFaceCount * faceEdge * faceEdge * BytesPerPixel(PixelFormat::Rgba8);
    Outcome within = WithinMemoryBudget(path, memory);
    if (!within.IsDone()) return within;
    CubeFaces faces;
    if (!CreateFaces(state, feedback, faces)) return Failure(Reason::NoMemory);
    panorama.faces = std::move(faces);
    panorama.faceSize = panorama.faces[0].width;
    return {};
}

}  // namespace

Outcome ImportQuickTimeVr(const ImportRequest& request, Feedback& feedback, Panorama& panorama) {
    // Too large for the stack.
    const std::unique_ptr<ImportState> state(new (std::nothrow) ImportState);
    if (!state) return Failure(Reason::NoMemory);
    return ImportMovie(request.Path(), feedback, *state, panorama);
}

}  // namespace skyvault
