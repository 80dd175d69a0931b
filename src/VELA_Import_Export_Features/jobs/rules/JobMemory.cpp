#include "jobs/rules/JobMemory.h"

#include <atomic>
#include <cstdlib>
#include <utility>

#if defined(__GLIBC__)
#include <malloc.h>
#endif

namespace ie
{
namespace
{
std::atomic<AllocateHook> g_hook{nullptr};
std::atomic<int> g_jobs{0};
thread_local bool t_isShort = false;
} // namespace

void* allocateZeroed(std::size_t bytes)
{
    const AllocateHook hook = g_hook.load();
    void* const block = hook ? hook(bytes) : std::calloc(1, bytes);
    t_isShort = t_isShort || !block;
    return block;
}

bool takeShortage()
{
    return std::exchange(t_isShort, false);
}

void releaseMemory(void* block)
{
    std::free(block);
}

void setAllocateHook(AllocateHook hook)
{
    g_hook.store(hook);
}

MemoryInUse::MemoryInUse()
{
    ++g_jobs;
#if defined(__GLIBC__)
    constexpr int kKept = 128 * 1024; // the allocator's own value, as long as it is left alone
    mallopt(M_TRIM_THRESHOLD, kKept);
#endif
}

MemoryInUse::~MemoryInUse()
{
    if (--g_jobs > 0)
        return;
#if defined(__GLIBC__)
    malloc_trim(0);
#endif
}

} // namespace ie
