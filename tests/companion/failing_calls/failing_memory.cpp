// Memory that runs out, as calls of failing_calls.c:
//
//   new      operator new, called by the programs and libraries of this project, or by the standard library
//   malloc   malloc() and its like, called by those of this project
//   qt       the same, called by Qt's core, which throws then
#include "failing_calls.h"

#include <dlfcn.h>
#include <link.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <new>

extern "C" {
void* __libc_malloc(size_t size);
void* __libc_calloc(size_t count, size_t size);
void* __libc_realloc(void* block, size_t size);
}

namespace
{

enum class Owner
{
    Project,
    StandardLibrary,
    Qt,
    Other
};

struct Part
{
    uintptr_t begin;
    uintptr_t end;
    Owner owner;
};

constexpr size_t kMost = 256;
Part parts[kMost];
size_t count = 0;

Owner ownerOf(const char* file)
{
    if (*file == '\0') // the program itself
        return Owner::Project;
    for (const char* const name : {"KXCameraControl", "SuiteTools", "ie_jobs"})
        if (std::strstr(file, name))
            return Owner::Project;
    if (std::strstr(file, "libstdc++"))
        return Owner::StandardLibrary;
    return std::strstr(file, "libQt5Core") ? Owner::Qt : Owner::Other;
}

int note(dl_phdr_info* info, size_t, void*)
{
    for (int i = 0; i < info->dlpi_phnum && count < kMost; ++i) {
        const auto& header = info->dlpi_phdr[i];
        if (header.p_type != PT_LOAD || (header.p_flags & PF_X) == 0)
            continue;
        const uintptr_t begin = info->dlpi_addr + header.p_vaddr;
        const Owner owner = ownerOf(info->dlpi_name);
        if (owner != Owner::Other)
            parts[count++] = {begin, begin + header.p_memsz, owner};
    }
    return 0;
}

using Main = int (*)(int, char**, char**);
Main programMain = nullptr;
bool isBegun = false; // what comes before main() nobody can catch

int begin(int words, char** arguments, char** environment)
{
    dl_iterate_phdr(note, nullptr);
    isBegun = true;
    return programMain(words, arguments, environment);
}

Owner callerOf(const void* address)
{
    if (!isBegun)
        return Owner::Other;
    const auto place = reinterpret_cast<uintptr_t>(address);
    for (size_t i = 0; i < count; ++i)
        if (place >= parts[i].begin && place < parts[i].end)
            return parts[i].owner;
    return Owner::Other;
}

bool failsForNew(const void* caller)
{
    const Owner owner = callerOf(caller);
    return (owner == Owner::Project || owner == Owner::StandardLibrary) && failing_calls_fails(NEW);
}

bool failsForC(const void* caller)
{
    const Owner owner = callerOf(caller);
    return (owner == Owner::Project && failing_calls_fails(ALLOCATE)) ||
           (owner == Owner::Qt && failing_calls_fails(QT_ALLOCATE));
}

void* newBlock(size_t size, const void* caller)
{
    void* const block = failsForNew(caller) ? nullptr : __libc_malloc(size);
    if (!block)
        throw std::bad_alloc();
    return block;
}

} // namespace

void* operator new(size_t size)
{
    return newBlock(size, __builtin_return_address(0));
}

void* operator new[](size_t size)
{
    return newBlock(size, __builtin_return_address(0));
}

extern "C" {

int __libc_start_main(Main main, int words, char** arguments, void (*init)(), void (*atEnd)(),
                      void (*loaderAtEnd)(), void* stackEnd)
{
    programMain = main;
    const auto next = reinterpret_cast<decltype(&__libc_start_main)>(dlsym(RTLD_NEXT, "__libc_start_main"));
    return next(begin, words, arguments, init, atEnd, loaderAtEnd, stackEnd);
}

void* malloc(size_t size)
{
    return failsForC(__builtin_return_address(0)) ? nullptr : __libc_malloc(size);
}

void* calloc(size_t members, size_t size)
{
    return failsForC(__builtin_return_address(0)) ? nullptr : __libc_calloc(members, size);
}

void* realloc(void* block, size_t size)
{
    return failsForC(__builtin_return_address(0)) ? nullptr : __libc_realloc(block, size);
}

} // extern "C"
