#include "image/memory.h"

#include <atomic>
#include <cstdint>

#include "platform/debug_line.h"
#include "platform/large_block.h"

namespace skyvault {

namespace {

std::atomic<int> allocationsLeft{-1};

void* Allocate(std::size_t size, const wchar_t* failure) {
    if (size == 0) return nullptr;
    int left = allocationsLeft;
    while (left > 0 && !allocationsLeft.compare_exchange_weak(left, left - 1)) {
    }
    void* const block =
        left == 0 || size > SIZE_MAX - kReadableBehind ? nullptr : AllocateBlock(size + kReadableBehind);
    if (!block) DebugLine(failure);
    return block;
}

}  // namespace

void* MGetMemory(std::size_t size) {
    return Allocate(size, L"MGetMemory: out of memory exception\n");
}

void* AllocateForMVector(std::size_t size) {
    return Allocate(size, L"MVector: out of memory exception\n");
}

void FailAllocationsAfter(int count) {
    allocationsLeft = count;
}

ByteBuffer AllocateBytes(std::size_t size) {
    return ByteBuffer(static_cast<std::byte*>(MGetMemory(size)));
}

}  // namespace skyvault
