// Where the jobs take their large buffers from: one seam, so that tests can let an allocation fail.
#pragma once

#include <cstddef>
#include <memory>

namespace ie
{

// A zero-filled block of `bytes`, or null. Released with releaseMemory(), which takes null too.
void* allocateZeroed(std::size_t bytes);
// Whether it has given null on this thread since this was asked last: what was to come of the block is
// missing, and nothing but the log tells.
bool takeShortage();
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

// While one lives, a job is under way, and memory that is free goes back to the system, where the allocator
// can be told; what is left of it when the last job ends, too. The allocator has a heap for every few
// threads, each job is a new thread, and each heap would keep twice as much as the largest block that was
// ever freed.
class MemoryInUse
{
public:
    MemoryInUse();
    ~MemoryInUse();
    MemoryInUse(const MemoryInUse&) = delete;
    MemoryInUse& operator=(const MemoryInUse&) = delete;
};

} // namespace ie
