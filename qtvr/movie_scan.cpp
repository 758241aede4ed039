#include "qtvr/movie_scan.h"

#include <algorithm>
#include <bit>
#include <cassert>
#include <cstdint>
#include <cstring>
#include <limits>
#include <string>
#include <string_view>

#include "codecs/bytes.h"
#include "platform/debug_line.h"

namespace skyvault {

namespace {

constexpr std::size_t kNotFound = std::string_view::npos;

/// A movie that means harm has marks by the million.
constexpr int kMostSameLines = 100;

std::size_t FindTag(MovieBytes movie, std::string_view tag, std::size_t from) {
    return std::string_view(reinterpret_cast<const char*>(movie.data()), movie.size()).find(tag, from);
}

/// True when count bytes from offset on are in the movie.
bool Holds(MovieBytes movie, std::size_t offset, std::size_t count) {
    return offset <= movie.size() && count <= movie.size() - offset;
}

std::uint32_t BigEndian(MovieBytes movie, std::size_t offset) {
    return Big32(&movie[offset]);
}

/// Movies of one tile a face need no table: front, right, back, left, top, bottom.
constexpr FaceTableEntry kWholeFaces[kFaceCount] = {
    {.w = 1, .x = 0, .y = 0},   {.w = 1, .x = 0, .y = -1}, {.w = 0, .x = 0, .y = -1},
    {.w = -1, .x = 0, .y = -1}, {.w = 1, .x = 1, .y = 0},  {.w = 1, .x = -1, .y = 0},
};

/// The entry of each cell: the first on its face with its centre; −1 for none.
void FindEntries(const FaceGrid& grid, const FaceTable& table, TilePlaces& entryOfCell) {
    entryOfCell.fill(-1);
    for (int c = 0; c < grid.cellCount; ++c) {
        const FaceCell& cell = grid.cells[static_cast<std::size_t>(c)];
        for (int e = 0; e < table.count; ++e) {
            const FaceTableEntry& entry = table.entries[static_cast<std::size_t>(e)];
            if (FaceOfEntry(entry) == static_cast<int>(cell.face) &&
                entry.centerX == static_cast<float>(cell.centerX) &&
                entry.centerY == static_cast<float>(cell.centerY)) {
                entryOfCell[static_cast<std::size_t>(c)] = e;
                break;
            }
        }
    }
}

}  // namespace

void FindPictures(MovieBytes movie, MoviePictures& pictures) {
    constexpr std::uint64_t kMostOverlap = 4;
    constexpr std::byte kMark{0xff}, kStart{0xd8}, kEnd{0xd9};
    pictures.count = 0;
    std::size_t start = 0, position = 0;
    bool started = false;
    int headerLines = 0;
    std::uint64_t sum = 0;
    while (pictures.count < kMostPictures && position + 1 < movie.size()) {
        const void* const mark = std::memchr(&movie[position], 0xff, movie.size() - 1 - position);
        if (mark == nullptr) break;
        position = static_cast<std::size_t>(static_cast<const std::byte*>(mark) - movie.data());
        const std::byte kind = movie[position + 1];
        if (kind == kStart) {
            started = true;
            start = position;
            if (pictures.count == 0 && headerLines++ < kMostSameLines) {
                DebugLine(L"Header is " + std::to_wstring(start) + L" bytes\n");
            }
        } else if (kind == kEnd && started) {
            const std::size_t size = position + 2 - start;
            sum += size;
            if (sum > kMostOverlap * movie.size()) break;
            pictures.ranges[static_cast<std::size_t>(pictures.count++)] = {start, size};
        }
        // The second of two marks in a row may begin a pair itself.
        position += kind == kMark ? 1 : 2;
    }
    DebugLine(std::to_wstring(pictures.count) + L" JPEG files found\n");
}

bool ReadFaceTable(MovieBytes movie, int tilesPerSide, FaceTable& table) {
    constexpr std::size_t kAtomHeader = 20, kEntrySize = 32;
    assert(tilesPerSide >= 1 && tilesPerSide <= kMostTilesPerSide);
    const int expected = kFaceCount * tilesPerSide * tilesPerSide;
    table.count = 0;
    const std::size_t tag = FindTag(movie, "cufa", 0);
    if (tag == kNotFound) {
        if (tilesPerSide != 1) return false;
        std::copy(std::begin(kWholeFaces), std::end(kWholeFaces), table.entries.begin());
        table.count = kFaceCount;
        return true;
    }
    DebugLine(L"cufa found!\n");
    if (tag < 4) return false;
    const std::size_t atom = tag - 4;
    // The header counts as the rest of an entry.
    const std::int64_t size = BigEndian(movie, atom);
    if ((size - 4) / static_cast<std::int64_t>(kEntrySize) != expected) return false;
    if (!Holds(movie, atom + kAtomHeader, kEntrySize * static_cast<std::size_t>(expected))) return false;
    for (int e = 0; e < expected; ++e) {
        const std::size_t at = atom + kAtomHeader + kEntrySize * static_cast<std::size_t>(e);
        const auto field = [&](std::size_t i) { return std::bit_cast<float>(BigEndian(movie, at + 4 * i)); };
        // Aspect and skew follow.
        table.entries[static_cast<std::size_t>(e)] = {field(0), field(1), field(2),
                                                      field(3), field(4), field(5)};
    }
    table.count = expected;
    return true;
}

int FaceOfEntry(const FaceTableEntry& entry) {
    const float w = entry.w, x = entry.x, y = entry.y;
    if (x == 0 && y == 0 && w != 0) return static_cast<int>(CubeFace::Front);
    if (w > 0 && x == 0 && y == -w) return static_cast<int>(CubeFace::Right);
    if (w == 0 && x == 0 && y != 0) return static_cast<int>(CubeFace::Back);
    if (x == 0 && y == w) return static_cast<int>(CubeFace::Left);
    if (x == w && y == 0) return static_cast<int>(CubeFace::Top);
    if (x == -w && y == 0) return static_cast<int>(CubeFace::Bottom);
    return -1;
}

bool PlaceTiles(MovieBytes movie, const FaceGrid& grid, const FaceTable& table, TilePlaces& places) {
    assert(table.count == grid.cellCount);
    const auto count = static_cast<std::size_t>(grid.cellCount);
    TilePlaces entryOfCell;
    FindEntries(grid, table, entryOfCell);
    places.fill(-1);

    bool processed = false;
    std::uint32_t lowestBefore = 0;
    int foundLines = 0;
    for (std::size_t tag = FindTag(movie, "stco", 0); tag != kNotFound;
         tag = FindTag(movie, "stco", tag + 4)) {
        if (foundLines++ < kMostSameLines) DebugLine(L"stco found!\n");
        // Version and flags, number of offsets, offsets.
        if (!Holds(movie, tag + 8, 4 + 4 * count) || BigEndian(movie, tag + 8) != count) continue;
        std::array<std::uint32_t, kMostTiles> offsets{}, sorted{};
        for (std::size_t i = 0; i < count; ++i) offsets[i] = BigEndian(movie, tag + 12 + 4 * i);
        if (processed && offsets[0] < lowestBefore) continue;
        const auto sortedEnd = std::copy(offsets.begin(), offsets.begin() + count, sorted.begin());
        std::sort(sorted.begin(), sortedEnd);
        for (std::size_t c = 0; c < count; ++c) {
            if (entryOfCell[c] < 0) continue;
            const std::uint32_t offset = offsets[static_cast<std::size_t>(entryOfCell[c])];
            places[c] =
                static_cast<int>(std::lower_bound(sorted.begin(), sortedEnd, offset) - sorted.begin());
        }
        processed = true;
        lowestBefore = sorted[0];
    }
    return processed && std::find(places.begin(), places.begin() + count, -1) == places.begin() + count;
}

}  // namespace skyvault
