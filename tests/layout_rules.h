// Which direction every pixel of a layout shows, and where an import finds a face's pixel: the definitions of
// docs/layouts.md in double precision. Nothing is shared with the program but the grid of a cube face
// (FacePixelToDirection, which cube_face_test looks after).
#pragma once

#include <algorithm>
#include <cmath>
#include <optional>
#include <string>
#include <vector>

#include "image/image.h"
#include "projection/cube_face.h"
#include "projection/export_size.h"
#include "session/layouts.h"

namespace skyvault::test {

/// A picture that is shown: its size, that of the panorama's faces, the preview's camera and focal length,
/// and whether the magnifying glass lies over the equirectangular one.
struct Shown {
    int width, height, faceSize;
    Camera camera;
    float focalLength;
    bool magnified;
};

/// A picture that is read, and the edge of the faces. Positions in it are moved by a little before their
/// fractions are dropped.
struct Read {
    int width, height, faceSize;
    double moveX, moveY;
};
struct Place {
    int column, row;  ///< perhaps outside of the picture
};

struct LayoutRule {
    PanoramaFormat format;
    int columns, rows;             ///< the picture's proportions
    std::optional<SizeKind> size;  ///< none: always of one size
    /// The direction seen at a place of the picture, in pixels; none outside of the layout's shape.
    std::optional<Direction> (*look)(const LayoutRule&, const Shown&, double i, double j);
    /// Where a face's pixel is read from; none: nowhere.
    std::optional<Place> (*place)(const LayoutRule&, const Read&, CubeFace, int column, int row) = nullptr;
    /// A letter for each face in the place of its cell; b: Back turned, m: Back mirrored.
    std::vector<std::string> cells = {};

    const LayoutRow& Row() const { return *FindLayout(format); }
    bool IsCells() const { return !cells.empty(); }
};

inline Direction ToDirection(double x, double y, double z) {
    return {static_cast<float>(x), static_cast<float>(y), static_cast<float>(z)};
}

/// In single precision, as ties between faces are decided in it.
inline Direction OfAngles(double longitude, double latitude) {
    const Direction around = ToDirection(std::sin(longitude), std::sin(latitude), std::cos(longitude));
    const float across = static_cast<float>(std::cos(latitude));
    return {across * around.x, around.y, across * around.z};
}

/// The face of a cell's letter; none for a dot.
inline std::optional<CubeFace> FaceOfCell(char cell) {
    if (cell == '.') return std::nullopt;
    return static_cast<CubeFace>(cell == 'b' || cell == 'm' ? 2 : std::string("FRBLTD").find(cell));
}

inline std::optional<Direction> LookAtCells(const LayoutRule& rule, const Shown& s, double px, double py) {
    const int i = static_cast<int>(std::lround(px)), j = static_cast<int>(std::lround(py));
    const int S = s.width / rule.columns, N = s.faceSize;
    const char cell = rule.cells[static_cast<std::size_t>(j / S)][static_cast<std::size_t>(i / S)];
    if (!FaceOfCell(cell)) return std::nullopt;
    // Crosses repeat and leave out pixels; strips go from a face's first to its last.
    const auto onFace = [&](int at) {
        return rule.rows > 1 ? N * at / S : S > 1 ? (N - 1) * at / (S - 1) : 0;
    };
    int x = onFace(cell == 'm' ? S - 1 - i % S : i % S), y = onFace(j % S);
    if (cell == 'b') x = N - 1 - x, y = N - 1 - y;
    return FacePixelToDirection(N, *FaceOfCell(cell), x, y);
}

inline std::optional<Place> PlaceInCells(const LayoutRule& rule, const Read& r, CubeFace face, int x, int y) {
    const int N = r.faceSize;
    const auto letter = [&](int at) {
        return rule
            .cells[static_cast<std::size_t>(at / rule.columns)][static_cast<std::size_t>(at % rule.columns)];
    };
    int at = 0;
    while (FaceOfCell(letter(at)) != face) ++at;
    if (letter(at) == 'b' || letter(at) == 'm') x = N - 1 - x;
    if (letter(at) == 'b') y = N - 1 - y;
    const Place place{at % rule.columns * N + x, at / rule.columns * N + y};
    const bool wraps = rule.format == PanoramaFormat::InteriorStrip;
    return wraps || (place.column < r.width && place.row < r.height) ? std::optional(place) : std::nullopt;
}

inline std::optional<Direction> LookAround(const LayoutRule&, const Shown& s, double i, double j) {
    // The glass shows the surroundings of five points of the horizon four times as large.
    const double middle = s.height - 1 - s.height * 0.5;
    for (int quarter = 0; s.magnified && quarter <= 4; ++quarter) {
        const double x = i - s.width * quarter / 4.0, y = j - middle;
        if (std::hypot(x, y) >= s.width * 0.1) continue;
        i -= x * 0.75, j -= y * 0.75;
        break;
    }
    const float longitude = 2 * static_cast<float>(i) * kPi / static_cast<float>(s.width) + kPi;
    const double latitude = (s.height - 1 - j) * kPiWide / s.height - kHalfPiWide;
    return OfAngles(static_cast<double>(longitude), static_cast<double>(static_cast<float>(latitude)));
}

inline std::optional<Direction> LookThroughCamera(const LayoutRule&, const Shown& s, double i, double j) {
    double x = i - s.width / 2, y = s.height / 2 - j, z = static_cast<double>(s.width) * s.focalLength;
    const auto turn = [](double& a, double& b, double angle) {
        const double before = a;
        a = a * std::cos(angle) - b * std::sin(angle);
        b = before * std::sin(angle) + b * std::cos(angle);
    };
    turn(x, y, s.camera.roll);
    turn(y, z, s.camera.pitch);
    turn(z, x, s.camera.heading);
    return ToDirection(x, y, z);
}

inline std::optional<Direction> LookAtSphereMap(const LayoutRule&, const Shown& s, double i, double j) {
    const long S = s.width, across = std::lround(i) - S / 2, down = std::lround(j) - S / 2;
    if (across * across + down * down >= S * S / 4) return std::nullopt;
    const double x = 2 * i / s.width - 1, y = 1 - 2 * j / s.width,
                 n = std::sqrt(std::max(0.0, 1 - x * x - y * y));
    return ToDirection(2 * n * x, 2 * n * y, 2 * n * n - 1);
}

inline std::optional<Place> PlaceInSphereMap(const LayoutRule&, const Read& r, CubeFace face, int x, int y) {
    const Direction d = FacePixelToDirection(r.faceSize, face, x, y);
    const double m = 2 * std::hypot(d.x, d.y, d.z + 1);
    if (m == 0) return Place{r.width - 1, r.height / 2};
    return Place{static_cast<int>(r.width * (d.x / m + 0.5) + r.moveX),
                 static_cast<int>(r.height * (0.5 - d.y / m) + r.moveY)};
}

inline std::optional<Direction> LookAtMirrorBall(const LayoutRule&, const Shown& s, double i, double j) {
    // The rim is decided in single precision; with roundings a root there may be none, which shows white.
    const int half = s.width / 2;
    const float x = static_cast<float>(std::lround(i) - half) / static_cast<float>(half);
    const float y = static_cast<float>(half - std::lround(j)) / static_cast<float>(half);
    if (!(x * x + y * y <= 1)) return std::nullopt;
    return ToDirection((i - half) / half, (half - j) / half, std::sqrt(std::max(0.0f, 1 - x * x - y * y)));
}

inline std::optional<Place> PlaceInMirrorBall(const LayoutRule&, const Read& r, CubeFace face, int x, int y) {
    const Direction d = FacePixelToDirection(r.faceSize, face, x, y);
    const double k = r.width * 0.5 - 2;
    return Place{static_cast<int>(d.x * k + r.width * 0.5 + r.moveX),
                 static_cast<int>(r.height * 0.5 - d.y * k + r.moveY)};
}

inline constexpr double kParallel = 1.7453292519943295, kCone = -0.17632698070846498;  // 100°, its cotangent

inline std::optional<Direction> LookAtHeart(const LayoutRule&, const Shown& s, double i, double j) {
    const double X = i * 4.040308 / s.width - 2.020586, Y = 0.742636 - j * 4.058762 / s.width;
    const double rho = std::hypot(X, kCone - Y), latitude = kCone + kParallel - rho;
    const double longitude = std::atan2(X, kCone - Y) * rho / std::cos(latitude);
    if (std::fabs(latitude) > kHalfPiWide || std::fabs(longitude) > kPiWide) return std::nullopt;
    return OfAngles(longitude, latitude);
}

inline std::optional<Place> PlaceInHeart(const LayoutRule&, const Read& r, CubeFace face, int x, int y) {
    const Direction d = FacePixelToDirection(r.faceSize, face, x, y);
    const double latitude = std::atan2(d.y, std::hypot(d.x, d.z)), rho = kCone + kParallel - latitude;
    const double E = std::atan2(d.x, d.z) * std::cos(latitude) / rho;
    const double X = rho * std::sin(E), Y = kCone - rho * std::cos(E);
    return Place{static_cast<int>((X + 2.020586) * (r.width - 1) / 4.040308 + r.moveX),
                 r.height - 1 - static_cast<int>((Y + 3.3161261) * (r.height - 1) / 4.058762 + r.moveY)};
}

// The interior square is what an eye at (0, 0, −2) sees of the cube from −1 to 1: U = x / (2 + z).

inline std::optional<Direction> LookAtRoom(const LayoutRule&, const Shown& s, double i, double j) {
    const double U = (2 * i + 1) / s.width - 1, V = (2 * j + 1) / s.width - 1, N = s.faceSize;
    const double depth = 1 / std::max({std::fabs(U), std::fabs(V), 1.0 / 3});
    const double x = U * depth, y = -V * depth, z = depth - 2;
    // From a position of 0..1 on the wall, rightwards or downwards, to the middle of the face's pixel there.
    const auto middle = [&](double position) {
        const double limit = N > 1 ? std::max(N - 2, 0.0) / (N - 1) : 0;
        return N > 1 ? std::clamp((2 * position * N + 2 - N) / (N - 1), -limit, limit) : 0;
    };
    const double right = middle((1 + x) / 2), up = -middle((1 - y) / 2), away = middle((1 + z) / 2),
                 back = -middle((1 - z) / 2);
    const bool side = std::fabs(U) > std::fabs(V) || (std::fabs(U) == std::fabs(V) && U < 0);
    if (depth == 3) return ToDirection(right, up, 1);
    if (side) return U < 0 ? ToDirection(-1, up, away) : ToDirection(1, up, back);
    return V < 0 ? ToDirection(right, 1, away) : ToDirection(right, -1, back);
}

inline std::optional<Place> PlaceInRoom(const LayoutRule&, const Read& r, CubeFace face, int column,
                                        int row) {
    const double N = r.faceSize, a = 2 * column / N - 1, b = 2 * row / N - 1;
    const double points[][3] = {{a, -b, 1}, {1, -b, -a}, {}, {-1, -b, a}, {a, 1, b}, {a, -1, -b}};
    if (face == CubeFace::Back) return std::nullopt;
    const auto [x, y, z] = points[static_cast<int>(face)];
    const auto pixel = [&](double position, double move) {
        return static_cast<int>(std::clamp(N * (position / (2 + z) + 1) / 2 + move, 0.0, N - 1));
    };
    return Place{pixel(x, r.moveX), pixel(-y, r.moveY)};
}

/// The layouts that are one picture.
inline const std::vector<LayoutRule>& LayoutRules() {
    using enum PanoramaFormat;
    constexpr SizeKind kCube = SizeKind::CubeMap, kSquare = SizeKind::Square;
    static const std::vector<LayoutRule> rules = {
        {Equirectangular, 2, 1, SizeKind::Equirectangular, LookAround},
        {HorizontalCross, 4, 3, kCube, LookAtCells, PlaceInCells, {".T..", "LFRB", ".D.."}},
        {VerticalCross, 3, 4, kCube, LookAtCells, PlaceInCells, {".T.", "LFR", ".D.", ".b."}},
        {Strip, 6, 1, kCube, LookAtCells, PlaceInCells, {"FRBLTD"}},
        {StripXyz, 6, 1, kCube, LookAtCells, PlaceInCells, {"RLTDFB"}},
        {InteriorStrip, 6, 1, kCube, LookAtCells, PlaceInCells, {"mRFLTD"}},
        {SphereMap, 1, 1, kSquare, LookAtSphereMap, PlaceInSphereMap},
        {MirrorBall, 1, 1, kSquare, LookAtMirrorBall, PlaceInMirrorBall},
        {Heart, 1, 1, kSquare, LookAtHeart, PlaceInHeart},
        {InteriorSquare, 1, 1, kSquare, LookAtRoom, PlaceInRoom},
        {Preview, 16, 9, std::nullopt, LookThroughCamera},
    };
    return rules;
}

/// Of a file: the chosen size, at most what the panorama's faces of N fill.
inline PictureSize FileSizeBy(const LayoutRule& rule, const ExportSettings& settings, int N) {
    if (!rule.size) return {1280, 720};
    const bool isCube = *rule.size == SizeKind::CubeMap, isSquare = *rule.size == SizeKind::Square;
    const int chosen = isCube ? settings.resolution0 : isSquare ? settings.resolution2 : settings.resolution1;
    const int most = isCube ? N : isSquare ? 2 * N : 4 * N;
    const int edge = most < 1 ? 256 << chosen : std::min(256 << chosen, most);
    const int wide = isCube ? edge * rule.columns : edge,
              high = isCube ? edge * rule.rows : edge / rule.columns;
    return {static_cast<std::uint32_t>(wide), static_cast<std::uint32_t>(high)};
}

/// Of a view: as large as the room is, and but for crosses, strips and the preview no larger than the file.
inline PictureSize ViewSizeBy(const LayoutRule& rule, ClientSize room, const ExportSettings& settings,
                              int N) {
    if (!rule.IsCells() && rule.size) {
        const PictureSize file = FileSizeBy(rule, settings, N);
        const int built = rule.columns == 2 && settings.antialiasing ? 2 : 1;
        room.width = std::min(room.width, built * static_cast<int>(file.width));
        room.height = std::min(room.height, built * static_cast<int>(file.height));
    }
    const int edge = std::min(room.width / rule.columns, room.height / rule.rows);
    int wide = edge * rule.columns, high = edge * rule.rows;
    if (!rule.IsCells() && rule.columns * room.height > rule.rows * room.width) {
        wide = room.width, high = rule.rows * room.width / rule.columns;
    } else if (!rule.IsCells()) {
        wide = rule.columns * room.height / rule.rows, high = room.height;
    }
    return {static_cast<std::uint32_t>(wide), static_cast<std::uint32_t>(high)};
}

}  // namespace skyvault::test
