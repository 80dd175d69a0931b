#include "jobs/rules/JobMemory.h"

#include <atomic>
#include <cstdlib>

namespace ie
{
namespace
{
std::atomic<AllocateHook> g_hook{nullptr};
}

void* allocateZeroed(std::size_t bytes)
{
    const AllocateHook hook = g_hook.load();
    return hook ? hook(bytes) : std::calloc(1, bytes);
}

void releaseMemory(void* block)
{
    std::free(block);
}

void setAllocateHook(AllocateHook hook)
{
    g_hook.store(hook);
}

} // namespace ie
