#include <objbase.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string_view>

#include "bench/window/window_bench.h"

int main(int argc, char** argv) {
    const std::string_view what = argc > 1 ? argv[1] : "";
    const int count = argc > 2 ? std::max(std::atoi(argv[2]), 1) : 15;
    std::setvbuf(stdout, nullptr, _IONBF, 0);
    // The pictures are read and written on this thread, which pumps no messages.
    CoInitializeEx(nullptr, COINIT_MULTITHREADED);
    if (what == "soak") return skyvault::test::Soak(count) ? 0 : 1;
    if (what == "latency") return skyvault::test::Latency(count) ? 0 : 1;
    std::fprintf(stderr, "usage: skyvault-window-bench soak [ROUNDS] | latency [REPETITIONS]\n");
    return 2;
}
