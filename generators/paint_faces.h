// The loop all generators share: six new faces, painted row by row on several cores.
#pragma once

#include <cstdint>
#include <functional>

#include "projection/layout_requests.h"
#include "projection/row_kernels.h"

namespace skyvault {

/// The six faces a generator paints, and who hears of it.
struct FacePainting {
    Panorama& panorama;
    Feedback& feedback;
    const wchar_t* text;   ///< of the progress
    PixelFormat format;    ///< Rgba8 with "Transparency", else Rgb8
    std::uint32_t size;    ///< edge of the painted faces
    bool doubled = false;  ///< FinishFaces halves them
};

/// Faces of "Resolution0"; antialiased: painted twice as large with "Antialiasing" on.
FacePainting StartPainting(const ImportRequest& request, Feedback& feedback, Panorama& panorama,
                           const wchar_t* text, bool antialiased);

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

/// Gives the panorama six new faces. One without memory stays empty.
void MakeFaces(const FacePainting& painting);

/// Runs paint(band) once for every band, on several cores with parallel, and reports the progress.
void PaintBands(const FacePainting& painting, int bandCount, bool parallel, ProgressShare share,
                const std::function<void(int band)>& paint);

/// Makes the six faces, sets the panorama's faceSize and paints them. A face without memory is skipped and
/// stays empty. The faces are painted as FacePixelToDirection sees them: a panorama that is being made has no
/// modifications yet.
void PaintFaces(const FacePainting& painting, const PaintRun& paint, ProgressShare share = {});

/// The same walk without faces, for what must be known of all pixels first. visit: as paint, without colours;
/// gets the number of the band it works for, below VisitBandCount(size), so that each band can keep results
/// of its own.
using VisitRun = std::function<void(const FaceRun& run, DirectionBlock& directions, int band)>;
int VisitBandCount(std::uint32_t size);
void VisitFaces(const FacePainting& painting, const VisitRun& visit, ProgressShare share = {});

/// Halves faces painted at double size. NoMemory when one of the six is missing or could not be halved.
Outcome FinishFaces(const FacePainting& painting);

}  // namespace skyvault
