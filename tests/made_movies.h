// Cubic movies put together for tests: tiles of a smooth sky and tables, nothing a player would want.
#pragma once

#include <bit>
#include <cmath>

#include "projection/cube_face.h"
#include "tests/made_files.h"

namespace skyvault::test {

inline std::uint32_t Big32At(const std::string& bytes, std::size_t offset) {
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < 4; ++i) value = value << 8 | static_cast<std::uint8_t>(bytes.at(offset + i));
    return value;
}

/// Size and type of an atom, then its 32-bit fields.
inline std::string MakeAtom(const std::string& type, const std::vector<std::uint32_t>& fields) {
    const auto big = [](std::uint32_t value) {
        const Bytes little = Little(4, {value});
        return std::string(little.rbegin(), little.rend());
    };
    std::string bytes = big(static_cast<std::uint32_t>(8 + 4 * fields.size())) + type;
    for (const std::uint32_t field : fields) bytes += big(field);
    return bytes;
}
inline std::string MakeStco(std::vector<std::uint32_t> offsets) {
    offsets.insert(offsets.begin(), {0, static_cast<std::uint32_t>(offsets.size())});
    return MakeAtom("stco", offsets);
}

/// A tile of n × n on a face.
struct MadeTile {
    int n, face, column, row;
};
inline constexpr int kTileEdge = 32;

/// A face table: each face by the quaternion that real movies have for it.
inline std::string MakeCufa(const std::vector<MadeTile>& tiles) {
    constexpr float kTurns[6][3] = {{1, 0, 0},       {0.5f, 0, -0.5f}, {0, 0, -1},
                                    {0.5f, 0, 0.5f}, {0.5f, 0.5f, 0},  {0.5f, -0.5f, 0}};
    std::vector<std::uint32_t> fields = {1, 0, 0};
    for (const MadeTile& tile : tiles) {
        const float* const turn = kTurns[tile.face];
        const float x = static_cast<float>(2 * tile.column - (tile.n - 1));
        const float y = static_cast<float>(tile.n - 1 - 2 * tile.row);
        for (const float value : {turn[0], turn[1], turn[2], 0.0f, x, y, 1.0f, 0.0f}) {
            fields.push_back(std::bit_cast<std::uint32_t>(value));
        }
    }
    return MakeAtom("cufa", fields);
}

inline Image SkyTile(const MadeTile& tile) {
    Image picture(kTileEdge, kTileEdge, PixelFormat::Rgb8);
    const auto wave = [](float angle) { return static_cast<std::uint8_t>(128 + 110 * std::sin(angle)); };
    ForPixels(picture, [&](int x, int y) {
        const auto [dx, dy, dz] = FacePixelToDirection(tile.n * kTileEdge, static_cast<CubeFace>(tile.face),
                                                       tile.column * kTileEdge + x, tile.row * kTileEdge + y);
        picture.SetPixel(x, y,
                         Color8(wave(5.3f * dx + 3.1f * dy * dz + 0.4f), wave(4.1f * dy - 4.7f * dx * dz),
                                wave(6.1f * dz + 3.0f * dx * dy), 255));
    });
    return picture;
}

/// The bytes a picture has as a JPEG file.
inline std::string JpegBytes(Image picture) {
    const TemporaryFolder folder;
    return SavePicture(picture, folder / L"picture.jpg").IsDone() ? folder.Read(L"picture.jpg") : "";
}

}  // namespace skyvault::test
