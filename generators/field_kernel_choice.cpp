#include "generators/field_kernels.h"

namespace skyvault {

namespace baseline_kernels {
extern const FieldKernels kFieldKernels;
}
namespace avx2_kernels {
extern const FieldKernels kFieldKernels;
}

const FieldKernels& FieldPasses() {
    return ChosenKernels() == KernelSet::Avx2 ? avx2_kernels::kFieldKernels : baseline_kernels::kFieldKernels;
}

}  // namespace skyvault
