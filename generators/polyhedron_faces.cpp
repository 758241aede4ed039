#include "generators/polyhedron_faces.h"

#include <algorithm>
#include <cassert>
#include <cmath>

#include "projection/fast_math.h"

namespace skyvault {

namespace {

struct Vector {
    double x = 0, y = 0, z = 0;
};
double Dot(const Vector& a, const Vector& b) {
    return a.x * b.x + a.y * b.y + a.z * b.z;
}
Vector Scaled(const Vector& v, double factor) {
    return {v.x * factor, v.y * factor, v.z * factor};
}
Vector Minus(const Vector& a, const Vector& b) {
    return {a.x - b.x, a.y - b.y, a.z - b.z};
}
Vector Cross(const Vector& a, const Vector& b) {
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}
Vector Unit(const Vector& v) {
    return Scaled(v, 1.0 / std::sqrt(Dot(v, v)));
}
Direction ToDirection(const Vector& v) {
    return {static_cast<float>(v.x), static_cast<float>(v.y), static_cast<float>(v.z)};
}

/// A solid as nothing but the planes of its faces; its edges and corners follow from them.
struct Planes {
    struct Plane {
        Vector normal;
        double distance;
    };
    std::array<Plane, 32> planes;
    int count = 0;

    /// `faces` planes around the vertical axis, their normals at height y above the horizon, the first one
    /// turned to the right by `turn` of a full circle.
    void Ring(int faces, double y, double turn, double distance = 1.0) {
        const double out = std::sqrt(1.0 - y * y);
        for (int i = 0; i < faces; ++i) {
            const SineCosine angle = SinCosWide(2.0 * 3.14159265358979323846 * (turn + double(i) / faces));
            planes[count++] = {{out * angle.sine, y, out * angle.cosine}, distance};
        }
    }
    /// A ceiling (up = 1) or floor (−1).
    void Level(double up, double distance = 1.0) { planes[count++] = {{0.0, up, 0.0}, distance}; }
};

/// The 12 corners of an icosahedron that stands on one of them: a rectangle of 1 to φ has two opposite edges
/// of the solid for its short sides, which puts the rings at a height of 1/√5. They are the middles of the
/// dodecahedron's faces and of the football's pentagons.
void AddIcosahedronCorners(Planes& planes, double distance) {
    const double y = 1.0 / std::sqrt(5.0);
    planes.Level(1.0, distance);
    planes.Ring(5, y, 0.5, distance);
    planes.Ring(5, -y, 0.0, distance);
    planes.Level(-1.0, distance);
}

/// The 20 middles of its faces: the means of three neighbouring corners, which are at a height of φ² and 1/φ
/// when they are √(3 + 3φ²) away from the centre.
void AddIcosahedronFaces(Planes& planes) {
    const double phi = 0.5 + 0.5 * std::sqrt(5.0);
    const double outside = std::sqrt(3.0 + 3.0 * phi * phi);
    planes.Ring(5, phi * phi / outside, 0.0);
    planes.Ring(5, 1.0 / phi / outside, 0.0);
    planes.Ring(5, -1.0 / phi / outside, 0.5);
    planes.Ring(5, -phi * phi / outside, 0.5);
}

Planes PlanesOf(PanoramaFormat solid) {
    Planes planes;
    switch (solid) {
        case PanoramaFormat::Tetrahedron:
            // Any two normals have the cosine −1/3.
            planes.Ring(3, 1.0 / 3.0, 0.0);
            planes.Level(-1.0);
            break;
        case PanoramaFormat::Hexahedron:
            planes.Ring(4, 0.0, 0.0);
            planes.Level(1.0);
            planes.Level(-1.0);
            break;
        case PanoramaFormat::Octahedron:
            // Normals are as far from the vertical axis as from the two others. The lower ring starts a face
            // further on: so odd and even numbers lie like the colours of a chessboard.
            planes.Ring(4, 1.0 / std::sqrt(3.0), 0.0);
            planes.Ring(4, -1.0 / std::sqrt(3.0), 0.25);
            break;
        case PanoramaFormat::Dodecahedron:
            AddIcosahedronCorners(planes, 1.0);
            break;
        case PanoramaFormat::Icosahedron:
            AddIcosahedronFaces(planes);
            break;
        case PanoramaFormat::Football: {
            // An icosahedron whose corners are cut off a third of an edge away. For edges of 1 hexagons are
            // then (√3/2)φ² away from the centre and pentagons ½√((125 + 41√5)/10).
            const double root5 = std::sqrt(5.0);
            const double phi = 0.5 + 0.5 * root5;
            const double hexagon = 0.5 * std::sqrt(3.0) * phi * phi;
            const double pentagon = 0.5 * std::sqrt((125.0 + 41.0 * root5) / 10.0);
            AddIcosahedronCorners(planes, pentagon / hexagon);
            AddIcosahedronFaces(planes);
            break;
        }
        default:
            assert(false && "not a solid");
    }
    return planes;
}

/// The line in which another plane cuts a face's: how far the face's middle is from it, and what gives the
/// distance of any point of the face.
struct Cut {
    double distance;
    Vector edge;
};

Cut CutOf(const Planes::Plane& face, const Planes::Plane& other) {
    const Vector a = Scaled(face.normal, 1.0 / face.distance);
    const Vector b = Scaled(other.normal, 1.0 / other.distance);
    // On the face a · p = 1, on the line b · p = 1 as well, and only the part of b along the face counts.
    const Vector along = Minus(b, Scaled(face.normal, Dot(b, face.normal)));
    const double length = std::sqrt(Dot(along, along));
    if (length < 1e-9) return {1e9, {}};  // parallel
    const Vector edge = Scaled(Minus(a, b), 1.0 / length);
    return {Dot(edge, Scaled(face.normal, face.distance)), edge};
}

}  // namespace

Polyhedron MakePolyhedron(PanoramaFormat solid) {
    const Planes planes = PlanesOf(solid);
    Polyhedron result;
    result.faceCount = planes.count;
    result.pentagonCount = solid == PanoramaFormat::Football ? 12 : 0;
    result.leastInRadius = 1e9f;
    for (int i = 0; i < planes.count; ++i) {
        const Planes::Plane& plane = planes.planes[i];
        const Vector& normal = plane.normal;
        PolyhedronFace& face = result.faces[i];
        face.plane = ToDirection(Scaled(normal, 1.0 / plane.distance));
        // Along a ceiling +Y points nowhere; there "up" is what it tends to for faces in front.
        const bool level = std::fabs(normal.y) > 0.999;
        const Vector upright = level ? Vector{0.0, 0.0, normal.y > 0.0 ? -1.0 : 1.0} : Vector{0.0, 1.0, 0.0};
        const Vector up = Unit(Minus(upright, Scaled(normal, Dot(upright, normal))));
        face.up = ToDirection(up);
        face.right = ToDirection(Cross(up, normal));

        // The nearest cuts are its edges: faces are regular.
        double inRadius = 1e9;
        for (int k = 0; k < planes.count; ++k) {
            if (k != i) inRadius = std::min(inRadius, CutOf(plane, planes.planes[k]).distance);
        }
        for (int k = 0; k < planes.count; ++k) {
            if (k == i) continue;
            const Cut cut = CutOf(plane, planes.planes[k]);
            if (cut.distance > inRadius * 1.0001) continue;
            assert(face.edgeCount < 6);
            face.edges[face.edgeCount++] = ToDirection(cut.edge);
        }
        const double halfAngle = 3.14159265358979323846 / face.edgeCount;
        face.radius = static_cast<float>(inRadius / SinCosWide(halfAngle).cosine);
        result.leastInRadius = std::min(result.leastInRadius, static_cast<float>(inRadius));
    }
    return result;
}

}  // namespace skyvault
