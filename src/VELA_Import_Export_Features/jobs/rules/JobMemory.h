// Where the jobs take their large buffers from: one seam, so that tests can let an allocation fail.
#pragma once

#include <cstddef>
#include <memory>

namespace ie
{

// A zero-filled block of `bytes`, or null. Released with releaseMemory(), which takes null too.
void* allocateZeroed(std::size_t bytes);
void releaseMemory(void* block);

struct MemoryReleaser
{
    void operator()(void* block) const { releaseMemory(block); }
};
// Owner of a block of allocateZeroed().
using MemoryBlock = std::unique_ptr<void, MemoryReleaser>;

using AllocateHook = void* (*)(std::size_t bytes);
// Replaces the source of allocateZeroed (its blocks must come from calloc); null puts the real one back.
void setAllocateHook(AllocateHook hook);

// From now on memory that is free goes back to the system, where the allocator can be told. It has a heap for
// every few threads, each job is a new thread, and each heap would keep twice as much as the largest block
// that was ever freed. Any thread; more than once is no matter.
void giveFreeMemoryBack();

} // namespace ie
