#include <sys/mman.h>

#include <cstdlib>

#include "platform/memory.h"

namespace skyvault {

void* AllocateBlock(std::size_t size) {
#ifdef MADV_HUGEPAGE
    constexpr std::size_t kLargePage = std::size_t{2} << 20;
    if (size >= 2 * kLargePage) {
        void* block = nullptr;
        if (posix_memalign(&block, kLargePage, size) != 0) return nullptr;
        // Only a wish: without large pages the block is as good as any.
        madvise(block, size / kLargePage * kLargePage, MADV_HUGEPAGE);
        return block;
    }
#endif
    return std::malloc(size);
}

}  // namespace skyvault
