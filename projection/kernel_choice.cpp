#include <atomic>

#include "projection/disc_kernels.h"
#include "projection/estimate_kernels.h"
#include "projection/row_kernels.h"

#ifdef _MSC_VER
#include <immintrin.h>
#include <intrin.h>
#endif

namespace skyvault {

namespace baseline_kernels {
extern const RowKernels kKernels;
extern const DiscKernels kDiscKernels;
extern const EstimateKernels kEstimateKernels;
}  // namespace baseline_kernels
namespace avx2_kernels {
extern const RowKernels kKernels;
extern const DiscKernels kDiscKernels;
extern const EstimateKernels kEstimateKernels;
}  // namespace avx2_kernels

namespace {

bool ProcessorHasAvx2() {
#ifdef _MSC_VER
    int leaf[4];
    __cpuid(leaf, 1);
    const bool savesYmm = (leaf[2] & (1 << 27)) != 0 && (_xgetbv(0) & 6) == 6;
    const bool fma = (leaf[2] & (1 << 12)) != 0;
    __cpuidex(leaf, 7, 0);
    return savesYmm && fma && (leaf[1] & (1 << 5)) != 0;
#else
    return __builtin_cpu_supports("avx2") != 0 && __builtin_cpu_supports("fma") != 0;
#endif
}

const RowKernels* FastestKernels() {
    return ProcessorHasAvx2() ? &avx2_kernels::kKernels : &baseline_kernels::kKernels;
}

std::atomic<const RowKernels*> chosen{nullptr};

}  // namespace

const RowKernels& Kernels() {
    const RowKernels* kernels = chosen.load(std::memory_order_relaxed);
    if (!kernels) {
        kernels = FastestKernels();
        chosen.store(kernels, std::memory_order_relaxed);
    }
    return *kernels;
}

KernelSet ChosenKernels() {
    return &Kernels() == &avx2_kernels::kKernels ? KernelSet::Avx2 : KernelSet::Baseline;
}

const DiscKernels& DiscPasses() {
    const bool baseline = &Kernels() == &baseline_kernels::kKernels;
    return baseline ? baseline_kernels::kDiscKernels : avx2_kernels::kDiscKernels;
}

const EstimateKernels& Estimates() {
    const bool baseline = &Kernels() == &baseline_kernels::kKernels;
    return baseline ? baseline_kernels::kEstimateKernels : avx2_kernels::kEstimateKernels;
}

bool UseKernels(KernelSet set) {
    if (set == KernelSet::Avx2 && !ProcessorHasAvx2()) return false;
    chosen = set == KernelSet::Fastest ? FastestKernels()
             : set == KernelSet::Avx2  ? &avx2_kernels::kKernels
                                       : &baseline_kernels::kKernels;
    return true;
}

}  // namespace skyvault
