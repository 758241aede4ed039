// The benchmark program; its output names the row kernels it measured.
#include <benchmark/benchmark.h>

#include "projection/kernel_choice.h"

int main(int argc, char** argv) {
    benchmark::AddCustomContext("kernels",
                                skyvault::ChosenKernels() == skyvault::KernelSet::Avx2 ? "AVX2" : "SSE4");
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
