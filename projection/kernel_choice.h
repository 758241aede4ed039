// Sets of kernels: the files of row kernels are compiled once for every instruction set, each time into a
// namespace of its own, and the fastest set this processor runs is chosen when it is first asked for. All
// sets give the same bytes.
//
// A further set is added here, in kernel_choice.cpp (which processors run it) and in skyvault_row_kernels
// (cmake/SkyvaultTargets.cmake), which compiles it.
#pragma once

namespace skyvault {

enum class KernelSet { Fastest, Baseline, Avx2 };

/// The set in use; never Fastest.
KernelSet ChosenKernels();

/// For tests and benchmarks: which set is in use from now on. False (and nothing changed) when the processor
/// cannot run it.
bool UseKernels(KernelSet set);

/// The table of the set in use.
template <typename Table>
const Table& ChosenOf(const Table& baseline, const Table& avx2) {
    return ChosenKernels() == KernelSet::Avx2 ? avx2 : baseline;
}

/// Declares a table of functions, k<Table>, which every set defines, and chosen(), which gives that of the
/// set in use.
#define SKYVAULT_KERNEL_TABLE(Table, chosen)                                 \
    namespace baseline_kernels {                                             \
    extern const Table k##Table;                                             \
    }                                                                        \
    namespace avx2_kernels {                                                 \
    extern const Table k##Table;                                             \
    }                                                                        \
    inline const Table& chosen() {                                           \
        return ChosenOf(baseline_kernels::k##Table, avx2_kernels::k##Table); \
    }

// The set that a file of kernels is being compiled for: its namespace, its name, and whether the processor
// multiplies and adds with one rounding.
#ifdef SKYVAULT_KERNELS_AVX2
#define KERNEL_SET avx2_kernels
namespace avx2_kernels {
inline constexpr const char* kSetName = "avx2";
inline constexpr bool kHasFma = true;
}  // namespace avx2_kernels
#else
#define KERNEL_SET baseline_kernels
namespace baseline_kernels {
inline constexpr const char* kSetName = "baseline";
inline constexpr bool kHasFma = false;
}  // namespace baseline_kernels
#endif

}  // namespace skyvault
