#include "projection/kernel_choice.h"

#include <atomic>

#ifdef _MSC_VER
#include <immintrin.h>
#include <intrin.h>
#endif

namespace skyvault {

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

KernelSet FastestSet() {
    return ProcessorHasAvx2() ? KernelSet::Avx2 : KernelSet::Baseline;
}

std::atomic<KernelSet> inUse{KernelSet::Fastest};  // until somebody asks which that is

}  // namespace

KernelSet ChosenKernels() {
    KernelSet set = inUse.load(std::memory_order_relaxed);
    if (set == KernelSet::Fastest) {
        set = FastestSet();
        inUse.store(set, std::memory_order_relaxed);
    }
    return set;
}

bool UseKernels(KernelSet set) {
    if (set == KernelSet::Avx2 && !ProcessorHasAvx2()) return false;
    inUse = set;
    return true;
}

}  // namespace skyvault
