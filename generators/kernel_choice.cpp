#include "generators/field_kernels.h"
#include "generators/voronoi_kernels.h"

namespace skyvault {

namespace baseline_kernels {
extern const FieldKernels kFieldKernels;
extern const VoronoiKernels kVoronoiKernels;
}  // namespace baseline_kernels
namespace avx2_kernels {
extern const FieldKernels kFieldKernels;
extern const VoronoiKernels kVoronoiKernels;
}  // namespace avx2_kernels

const FieldKernels& FieldPasses() {
    return ChosenKernels() == KernelSet::Avx2 ? avx2_kernels::kFieldKernels : baseline_kernels::kFieldKernels;
}

const VoronoiKernels& VoronoiPasses() {
    const bool avx2 = ChosenKernels() == KernelSet::Avx2;
    return avx2 ? avx2_kernels::kVoronoiKernels : baseline_kernels::kVoronoiKernels;
}

}  // namespace skyvault
