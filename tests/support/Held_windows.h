// Held.h by handles, which files, sockets, events and threads are.
#pragma once

#include <windows.h>

#include <cstddef>
#include <psapi.h>
#include <tlhelp32.h>

namespace tests
{

inline size_t threadsHeld()
{
    const HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
    THREADENTRY32 entry;
    entry.dwSize = sizeof entry;
    size_t count = 0;
    for (BOOL found = Thread32First(snapshot, &entry); found; found = Thread32Next(snapshot, &entry))
        count += entry.th32OwnerProcessID == GetCurrentProcessId() ? 1 : 0;
    CloseHandle(snapshot);
    return count;
}

inline size_t filesHeld()
{
    DWORD count = 0;
    GetProcessHandleCount(GetCurrentProcess(), &count);
    return count;
}

// They are not told from other handles.
inline size_t socketsHeld()
{
    return 0;
}

inline size_t residentKilobytes()
{
    PROCESS_MEMORY_COUNTERS memory = {};
    memory.cb = sizeof memory;
    return K32GetProcessMemoryInfo(GetCurrentProcess(), &memory, memory.cb) ? memory.WorkingSetSize / 1024
                                                                            : 0;
}

// What of it is in use: of the heap that the C library allocates from.
inline size_t allocatedKilobytes()
{
    PROCESS_HEAP_ENTRY entry = {};
    size_t bytes = 0;
    const HANDLE heap = GetProcessHeap();
    HeapLock(heap);
    while (HeapWalk(heap, &entry))
        bytes += entry.wFlags & PROCESS_HEAP_ENTRY_BUSY ? entry.cbData : 0;
    HeapUnlock(heap);
    return bytes / 1024;
}

} // namespace tests
