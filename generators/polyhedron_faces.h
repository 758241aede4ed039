// The faces of the six solids a viewer can stand in, and where their pictures and edges are.
//
// The viewer is at the solid's centre, +X right, +Y up, +Z front. The solids stand so that every face is the
// same to its left as to its right:
//
//   tetrahedron   on a face, one of the others in front
//   hexahedron    faces as a cube map's
//   octahedron    on a corner, the middle of an edge in front
//   dodecahedron  on a face
//   icosahedron   on a corner
//   football      on a pentagon
//
// Faces are numbered from the top down, each ring from the front to the right; but the hexahedron's as a cube
// map's, and the football has its 12 pentagons first.
#pragma once

#include <array>

#include "projection/direction.h"
#include "settings/panorama_format.h"

namespace skyvault {

struct PolyhedronFace {
    /// A ray d through the face meets its plane at d / (plane · d), and of all faces' products this face's is
    /// the largest. The face's normal, divided by its distance.
    Direction plane;
    /// Unit vectors in the plane, seen from inside: the picture's. Upright where a face is: `up` is as near
    /// to +Y as the plane allows. A floor's picture has its top towards the front, a ceiling's towards the
    /// back.
    Direction right, up;
    /// A point p of the face is edges[k] · p away from its edge k.
    std::array<Direction, 6> edges;
    int edgeCount = 0;
    float radius = 0;  ///< of the circle through the corners
};

struct Polyhedron {
    std::array<PolyhedronFace, 32> faces;
    int faceCount = 0;
    int pentagonCount = 0;    ///< of the football: faces 0 .. 11; 0 for the others, whose faces are all alike
    float leastInRadius = 0;  ///< radius of the circle that fits into the smallest faces
};

/// solid: Tetrahedron to Football.
Polyhedron MakePolyhedron(PanoramaFormat solid);

}  // namespace skyvault
