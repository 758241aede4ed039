// The one numbering of panorama layouts and generators. Menus, views, settings and file dialogs use it.
#pragma once

#include <cstdint>

namespace skyvault {

enum class PanoramaFormat : std::int32_t {
    Equirectangular = 0,
    DirectXDds = 1,   ///< cube map file; never a view
    QuickTimeVr = 2,  ///< cubic movie; never a view
    HorizontalCross = 3,
    VerticalCross = 4,
    Strip = 5,
    StripXyz = 6,
    SingleFiles = 7,  ///< six pictures
    SphereMap = 8,
    MirrorBall = 9,
    Heart = 10,
    InteriorStrip = 11,
    InteriorSquare = 12,
    Preview = 13,  ///< perspective view; export and view only
    Html = 14,     ///< web page; export only

    Voronoi = 100,
    FractalPlanet = 101,
    DotsOfLight = 102,
    Blobs = 103,
    Rectangles = 104,

    Tetrahedron = 1000,
    Hexahedron = 1001,
    Octahedron = 1002,
    Dodecahedron = 1003,
    Icosahedron = 1004,
    Football = 1005,
};

}  // namespace skyvault
