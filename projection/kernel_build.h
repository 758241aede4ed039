// For the files of kernels, which are compiled twice: KERNEL_SET is the namespace of the build at hand, and
// SKYVAULT_RESTRICT promises that an array is reached through no other pointer.
#pragma once

#ifdef SKYVAULT_KERNELS_AVX2
#define KERNEL_SET avx2_kernels
#else
#define KERNEL_SET baseline_kernels
#endif

#if defined(_MSC_VER)
#define SKYVAULT_RESTRICT __restrict
#else
#define SKYVAULT_RESTRICT __restrict__
#endif
