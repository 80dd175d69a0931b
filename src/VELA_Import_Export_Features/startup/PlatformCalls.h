// The calls of the operating system that the process guards are written against: named as on Windows, where
// they are the real ones. Elsewhere each does what is nearest: a lock file, a request to the first copy, a
// signal handler, a backtrace. No Qt here, so that the Windows half builds from the Windows API and the C++
// library alone.
#pragma once

#include <functional>
#include <string>

namespace Platform
{

using Handle = void*;
using Window = void*;
// What the system hands to an unhandled-exception filter; opaque here.
struct ExceptionPointers;
using ExceptionFilter = long (*)(ExceptionPointers*);

// Values of the Windows API.
constexpr unsigned long kMutexAllAccess = 0x1F0001;
constexpr int kShowNoActivate = 4;
constexpr unsigned long kGenericWrite = 0x40000000;
constexpr unsigned long kCreateAlways = 2;
constexpr unsigned long kFileAttributeNormal = 0x80;
constexpr int kMiniDumpNormal = 0;
constexpr long kExceptionExecuteHandler = 1;

// As MINIDUMP_EXCEPTION_INFORMATION.
struct DumpException
{
    unsigned long threadId = 0;
    ExceptionPointers* pointers = nullptr;
    int clientPointers = 0;
};

// Arguments, results and errors as the Windows API documents them for the functions of these names.
struct Calls
{
    Handle (*OpenMutexW)(unsigned long access, int inherit, const wchar_t* name);
    Handle (*CreateMutexW)(void* security, int initialOwner, const wchar_t* name);
    int (*CloseHandle)(Handle handle);
    Window (*FindWindowW)(const wchar_t* className, const wchar_t* windowName);
    int (*ShowWindow)(Window window, int command);
    int (*SetForegroundWindow)(Window window);
    ExceptionFilter (*SetUnhandledExceptionFilter)(ExceptionFilter filter);
    Handle (*CreateFileA)(const char* path, unsigned long access, unsigned long share, void* security,
                          unsigned long disposition, unsigned long attributes, Handle templateFile);
    Handle (*GetCurrentProcess)();
    unsigned long (*GetCurrentProcessId)();
    unsigned long (*GetCurrentThreadId)();
    int (*MiniDumpWriteDump)(Handle process, unsigned long processId, Handle file, int type,
                             const DumpException* exception, const void* streams, const void* callback);
};

// The real ones of this system.
const Calls& systemCalls();

// What a second copy asks the first one's window, where windows of other processes cannot be reached. Called
// on a thread of this module.
struct WindowHost
{
    std::function<bool(const std::wstring& title)> hasWindow;
    std::function<void()> showWithoutActivation;
    std::function<void()> bringToFront;
};
// Does nothing on Windows. Default-constructed host: nobody answers any more; when the call returns, none of
// the functions runs.
void setWindowHost(WindowHost host);

} // namespace Platform
