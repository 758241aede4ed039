// Panoramas seen from inside a regular solid or a football, with a picture on each of its faces.
#pragma once

#include "projection/layout_requests.h"

namespace skyvault {

/// Replaces the panorama's faces. The format is that of the solid, Tetrahedron to Football;
/// generators/polyhedron_faces.h says how they stand and how their faces are numbered.
///
/// "PolyhedraTextureScale": the size of the pictures, in circles through a face's corners: with 1 a square
/// picture is as wide as the circle and so covers the face, with 0.7 its corners touch the circle. A picture
/// that is not square is measured along its shorter side. It lies in the middle of the face, upright, and
/// repeats around itself to all sides, so that small values tile a face.
///
/// "PolyhedraFrames": the texture is a filmstrip of this many pictures, side by side along its longer side
/// (from the left, or from the top). Faces show them in turn, by number. On a football each kind of face has
/// frames of its own, the pentagons the first ones: of two frames they show the first and the hexagons the
/// second; of 32 frames each face has its own.
///
/// "PolyhedraBorder": the width of a black border inside every face's edges, 1 being the radius of the circle
/// that fits into the smallest faces; 0 = none.
///
/// Where the texture is transparent the background colour shows, or, with "Transparency", nothing.
///
/// CannotOpen, and nothing is changed, for an empty path; NoMemory also for the texture. A texture that
/// cannot be read gives opaque red faces.
Outcome GeneratePolyhedron(const ImportRequest& request, Feedback& feedback, Panorama& panorama);

/// Which of `frames` frames (1 or more) a face shows. pentagons: how many of the faces come first and are of
/// another kind than the rest.
int FrameOfFace(int face, int faceCount, int pentagons, int frames);

}  // namespace skyvault
