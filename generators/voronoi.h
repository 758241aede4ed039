// Voronoi cells: seeds at random in the cube around the viewer, each of the colour of a random pixel of a
// palette picture; every direction takes the colour of the seed nearest to its point on the unit sphere, or
// a blend of all of them. Borders are black where the two smallest squared distances nearly agree.
#pragma once

#include "generators/paint_faces.h"
#include "generators/voronoi_kernels.h"
#include "platform/mvector.h"

namespace skyvault {

/// Fills the panorama's faces after the settings "VoronoiPoints", "VoronoiSmooth", "VoronoiPower" and
/// "VoronoiBorder". A palette that cannot be read gives black faces. Without memory for the seeds the
/// panorama is unchanged.
Outcome GenerateVoronoi(const ImportRequest& request, Feedback& feedback, Panorama& panorama);

/// Up to kMostSeeds seeds, their colours twice: as the bytes of an opaque Color8 and as numbers to blend.
class VoronoiSeeds {
  public:
    /// count black seeds in the middle; false without memory.
    bool Resize(int count);
    void Set(int k, float x, float y, float z, const Color8& colour);

    SeedArrays Arrays() const;
    SeedColours Colours() const;

  private:
    MVector<float> x_, y_, z_, red_, green_, blue_;
    MVector<std::uint32_t> colour_;
};

struct VoronoiLook {
    bool smooth = false;
    float power = 3.0f;   ///< of the blend, 0 .. 100
    float border = 0.0f;  ///< a difference of squared distances; none for 0 and for a single seed
};

/// Paints the six faces with these seeds.
void PaintVoronoi(const FacePainting& painting, const VoronoiSeeds& seeds, const VoronoiLook& look);

}  // namespace skyvault
