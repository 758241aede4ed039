// The loop all generators share: six new faces, painted row by row on several cores.
#pragma once

#include <cstdint>
#include <functional>

#include "projection/panorama.h"
#include "projection/row_kernels.h"

namespace skyvault {

/// The edge of the faces a generator paints: "Resolution0", and twice as much with antialiased and
/// "Antialiasing" on, to be finished with FinishFaces.
std::uint32_t GeneratorFaceSize(const Panorama& panorama, bool antialiased);

/// The format of generated faces: Rgba8 with "Transparency", else Rgb8.
PixelFormat GeneratorFormat(const AppState& settings);

/// A run of pixels of one row of a face.
struct FaceRun {
    CubeFace face = CubeFace::Front;
    std::uint32_t row = 0, first = 0;
    int count = 0;  ///< at most kBlockSize
};

/// Gives the colours of a run; directions are its pixels' unit directions and may be overwritten. Called from
/// several threads at once: only for reading what the generator prepared.
using PaintRun = std::function<void(const FaceRun& run, DirectionBlock& directions, Color8* colours)>;

/// What part of the whole progress a painting is, 0..1.
struct ProgressShare {
    float from = 0.0f, to = 1.0f;
};

/// Makes six faces of size × size pixels, sets the panorama's faceSize and paints them. A face without memory
/// is skipped and stays empty. Progress shows `text`. The faces are painted as FacePixelToDirection sees
/// them: a panorama that is being made has no modifications yet.
void PaintFaces(Panorama& panorama, std::uint32_t size, const wchar_t* text, const PaintRun& paint,
                ProgressShare share = {});

/// The same walk without faces, for what must be known of all pixels first. visit: as paint, without colours;
/// gets the number of the band it works for, below VisitBandCount(size), so that each band can keep results
/// of its own.
using VisitRun = std::function<void(const FaceRun& run, DirectionBlock& directions, int band)>;
int VisitBandCount(std::uint32_t size);
void VisitFaces(Panorama& panorama, std::uint32_t size, const wchar_t* text, const VisitRun& visit,
                ProgressShare share = {});

/// Halves faces painted at double size ("Antialiasing").
void FinishFaces(Panorama& panorama, bool antialiased);

}  // namespace skyvault
