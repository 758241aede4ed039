// Raw allocation and the growable array: both report failure by their result, never by an exception.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>

namespace skyvault {

/// A new block of uninitialised memory, released with std::free, or null: for size 0, and when there is
/// not enough memory ("MGetMemory: out of memory exception\n" then goes to the debugger channel).
/// kReadableBehind bytes behind the block may be read as well, whatever they are, so that small things can be
/// read in larger pieces.
void* MGetMemory(std::size_t size);
inline constexpr std::size_t kReadableBehind = 8;

/// The same for MVector (platform/mvector.h), which names itself in the debugger line.
void* AllocateForMVector(std::size_t size);

/// The system's part of both: like std::malloc, and released with std::free, but where the system offers
/// large pages on request they are requested for blocks of several megabytes: touching fresh memory then
/// costs a fraction, and reading from all over a picture misses fewer address translations.
void* AllocateBlock(std::size_t size);

/// For tests of what happens without memory: while set, MGetMemory and MVector fail as soon as this many
/// further allocations have succeeded; negative (the start value) means never.
void FailAllocationsAfter(int count);

/// The same, but only the one allocation fails and those after it succeed.
void FailOneAllocationAfter(int count);

struct FreeDeleter {
    void operator()(void* block) const { std::free(block); }
};

/// A block from MGetMemory and its owner.
using ByteBuffer = std::unique_ptr<std::byte[], FreeDeleter>;

/// MGetMemory as an owned block.
ByteBuffer AllocateBytes(std::size_t size);

}  // namespace skyvault
