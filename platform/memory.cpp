#include "platform/memory.h"

#include <atomic>
#include <cstdint>
#include <limits>

#include "platform/debug_line.h"

namespace skyvault {

namespace {

std::atomic<int> allocationsLeft{-1}, failuresLeft{0};

/// Whether a test wants this allocation to fail.
bool IsToFail() {
    int left = allocationsLeft.load(std::memory_order_relaxed);
    while (left > 0 && !allocationsLeft.compare_exchange_weak(left, left - 1)) {
    }
    if (left != 0) return false;
    const int failures = failuresLeft--;
    if (failures <= 1) allocationsLeft = -1;
    return failures > 0;
}

void* Allocate(std::size_t size, const wchar_t* failure) {
    if (size == 0) return nullptr;
    void* const block =
        IsToFail() || size > SIZE_MAX - kReadableBehind ? nullptr : AllocateBlock(size + kReadableBehind);
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
    failuresLeft = std::numeric_limits<int>::max();
    allocationsLeft = count;
}

void FailOneAllocationAfter(int count) {
    failuresLeft = 1;
    allocationsLeft = count;
}

ByteBuffer AllocateBytes(std::size_t size) {
    return ByteBuffer(static_cast<std::byte*>(MGetMemory(size)));
}

}  // namespace skyvault
