#include "startup/PlatformCalls.h"

#include <windows.h>

#include <dbghelp.h>

namespace Platform
{
namespace
{

static_assert(kMutexAllAccess == MUTEX_ALL_ACCESS, "");
static_assert(kShowNoActivate == SW_SHOWNOACTIVATE, "");
static_assert(kGenericWrite == GENERIC_WRITE, "");
static_assert(kCreateAlways == CREATE_ALWAYS, "");
static_assert(kFileAttributeNormal == FILE_ATTRIBUTE_NORMAL, "");
static_assert(kMiniDumpNormal == MiniDumpNormal, "");
static_assert(kExceptionExecuteHandler == EXCEPTION_EXECUTE_HANDLER, "");

Handle openMutex(unsigned long access, int inherit, const wchar_t* name)
{
    return ::OpenMutexW(access, inherit, name);
}

Handle createMutex(void* security, int initialOwner, const wchar_t* name)
{
    return ::CreateMutexW(static_cast<LPSECURITY_ATTRIBUTES>(security), initialOwner, name);
}

int closeHandle(Handle handle)
{
    return ::CloseHandle(handle);
}

Window findWindow(const wchar_t* className, const wchar_t* windowName)
{
    return ::FindWindowW(className, windowName);
}

int showWindow(Window window, int command)
{
    return ::ShowWindow(static_cast<HWND>(window), command);
}

int setForegroundWindow(Window window)
{
    return ::SetForegroundWindow(static_cast<HWND>(window));
}

ExceptionFilter setUnhandledExceptionFilter(ExceptionFilter filter)
{
    return reinterpret_cast<ExceptionFilter>(
        ::SetUnhandledExceptionFilter(reinterpret_cast<LPTOP_LEVEL_EXCEPTION_FILTER>(filter)));
}

Handle createFile(const char* path, unsigned long access, unsigned long share, void* security,
                  unsigned long disposition, unsigned long attributes, Handle templateFile)
{
    return ::CreateFileA(path, access, share, static_cast<LPSECURITY_ATTRIBUTES>(security), disposition,
                         attributes, templateFile);
}

Handle getCurrentProcess()
{
    return ::GetCurrentProcess();
}

unsigned long getCurrentProcessId()
{
    return ::GetCurrentProcessId();
}

unsigned long getCurrentThreadId()
{
    return ::GetCurrentThreadId();
}

int miniDumpWriteDump(Handle process, unsigned long processId, Handle file, int type,
                      const DumpException* exception, const void* streams, const void* callback)
{
    MINIDUMP_EXCEPTION_INFORMATION information = {};
    if (exception) {
        information.ThreadId = exception->threadId;
        information.ExceptionPointers = reinterpret_cast<PEXCEPTION_POINTERS>(exception->pointers);
        information.ClientPointers = exception->clientPointers;
    }
    return ::MiniDumpWriteDump(process, processId, file, static_cast<MINIDUMP_TYPE>(type),
                               exception ? &information : nullptr,
                               static_cast<PMINIDUMP_USER_STREAM_INFORMATION>(const_cast<void*>(streams)),
                               static_cast<PMINIDUMP_CALLBACK_INFORMATION>(const_cast<void*>(callback)));
}

} // namespace

const Calls& systemCalls()
{
    static const Calls calls = {openMutex,
                                createMutex,
                                closeHandle,
                                findWindow,
                                showWindow,
                                setForegroundWindow,
                                setUnhandledExceptionFilter,
                                createFile,
                                getCurrentProcess,
                                getCurrentProcessId,
                                getCurrentThreadId,
                                miniDumpWriteDump};
    return calls;
}

// Windows of other processes are reached directly.
void setWindowHost(WindowHost) {}

} // namespace Platform
