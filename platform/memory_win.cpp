#include <cstdlib>

#include "platform/memory.h"

namespace skyvault {

void* AllocateBlock(std::size_t size) {
    // Large pages are a privilege few users have.
    return std::malloc(size);
}

}  // namespace skyvault
