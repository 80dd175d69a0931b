// What the platform's calls do on Windows. Built by a cross compiler without Qt and without a test library;
// each process of the test is this program again, told by its first argument what to be.
#include "startup/PlatformCalls.h"

#include <windows.h>

#include <cstdio>
#include <cstring>
#include <string>

using namespace Platform;

namespace
{

constexpr wchar_t kName[] = L"platform_calls_windows_test";
constexpr wchar_t kTitle[] = L"\u5BFC\u5165/\u5BFC\u51FA\u5C5E\u6027 of a test";
const Calls& g_calls = systemCalls();
int g_checks = 0;
int g_failures = 0;

void check(bool isTrue, const char* what)
{
    ++g_checks;
    if (isTrue)
        return;
    ++g_failures;
    std::printf("FAILED: %s\n", what);
}

// This program again, with one argument; gives its exit code, or -1.
int runSelf(const char* role)
{
    char program[MAX_PATH] = {};
    ::GetModuleFileNameA(nullptr, program, MAX_PATH);
    std::string command = std::string("\"") + program + "\" " + role;
    STARTUPINFOA startup = {};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION process = {};
    if (!::CreateProcessA(nullptr, &command[0], nullptr, nullptr, TRUE, 0, nullptr, nullptr, &startup,
                          &process))
        return -1;
    DWORD code = DWORD(-1);
    if (::WaitForSingleObject(process.hProcess, 60000) == WAIT_OBJECT_0)
        ::GetExitCodeProcess(process.hProcess, &code);
    ::CloseHandle(process.hThread);
    ::CloseHandle(process.hProcess);
    return int(code);
}

std::string dumpPath()
{
    char folder[MAX_PATH] = {};
    ::GetTempPathA(MAX_PATH, folder);
    return std::string(folder) + "platform_calls_windows_test.dmp";
}

// ---- roles of the other processes ----

int beSecondCopy()
{
    return g_calls.OpenMutexW(kMutexAllAccess, 0, kName) ? 1 : 0;
}

int beMutexOwner()
{
    return g_calls.CreateMutexW(nullptr, 1, kName) ? 7 : 0;
}

long writeDump(ExceptionPointers* pointers)
{
    const Handle file = g_calls.CreateFileA(dumpPath().c_str(), kGenericWrite, 0, nullptr, kCreateAlways,
                                            kFileAttributeNormal, nullptr);
    const DumpException exception = {g_calls.GetCurrentThreadId(), pointers, 1};
    const int written = g_calls.MiniDumpWriteDump(g_calls.GetCurrentProcess(), g_calls.GetCurrentProcessId(),
                                                  file, kMiniDumpNormal, &exception, nullptr, nullptr);
    g_calls.CloseHandle(file);
    ::ExitProcess(written ? 23 : 24);
    return kExceptionExecuteHandler;
}

int beCrashing()
{
    g_calls.SetUnhandledExceptionFilter(writeDump);
    ::RaiseException(EXCEPTION_ACCESS_VIOLATION, EXCEPTION_NONCONTINUABLE, 0, nullptr);
    return 0;
}

// ---- tests ----

void testMutex()
{
    check(g_calls.OpenMutexW(kMutexAllAccess, 0, kName) == nullptr, "no mutex at first");
    const Handle mutex = g_calls.CreateMutexW(nullptr, 1, kName);
    check(mutex != nullptr, "a mutex is made");
    check(runSelf("second-copy") == 1, "another process finds it");
    check(g_calls.CloseHandle(mutex) != 0, "it is closed");
    check(runSelf("second-copy") == 0, "closed, it is gone");
    check(runSelf("mutex-owner") == 7, "another process makes one");
    check(g_calls.OpenMutexW(kMutexAllAccess, 0, kName) == nullptr, "it ends with its process");
}

void testWindow()
{
    WNDCLASSW description = {};
    description.lpfnWndProc = ::DefWindowProcW;
    description.hInstance = ::GetModuleHandleW(nullptr);
    description.lpszClassName = L"PlatformCallsTest";
    ::RegisterClassW(&description);
    HWND window = ::CreateWindowW(description.lpszClassName, kTitle, WS_OVERLAPPEDWINDOW, 0, 0, 200, 100,
                                  nullptr, nullptr, description.hInstance, nullptr);
    check(window != nullptr, "the test has a window");
    check(g_calls.FindWindowW(nullptr, L"another title") == nullptr, "another title finds nothing");
    check(g_calls.FindWindowW(nullptr, kTitle) == window, "the title finds the window");
    check(!::IsWindowVisible(window), "it is hidden at first");
    g_calls.ShowWindow(window, kShowNoActivate);
    check(::IsWindowVisible(window), "it is shown");
    g_calls.SetForegroundWindow(window);
    check(::GetForegroundWindow() == window, "it comes to the foreground");
    check(g_calls.ShowWindow(nullptr, kShowNoActivate) == 0, "no window is not shown");
    check(g_calls.SetForegroundWindow(nullptr) == 0, "no window is not raised");
    ::DestroyWindow(window);
}

void testDump()
{
    char folder[MAX_PATH] = {};
    ::GetTempPathA(MAX_PATH, folder);
    check(g_calls.CreateFileA(folder, kGenericWrite, 0, nullptr, kCreateAlways, kFileAttributeNormal,
                              nullptr) == INVALID_HANDLE_VALUE,
          "a folder is not opened as a file");
    check(runSelf("crashing") == 23, "the filter runs and writes a dump");
    FILE* dump = std::fopen(dumpPath().c_str(), "rb");
    char signature[4] = {};
    check(dump && std::fread(signature, 1, 4, dump) == 4 && std::memcmp(signature, "MDMP", 4) == 0,
          "the dump is a minidump");
    if (dump)
        std::fclose(dump);
    std::remove(dumpPath().c_str());
}

} // namespace

int main(int argc, char** argv)
{
    const std::string role = argc > 1 ? argv[1] : "";
    if (role == "second-copy")
        return beSecondCopy();
    if (role == "mutex-owner")
        return beMutexOwner();
    if (role == "crashing")
        return beCrashing();
    testMutex();
    testWindow();
    testDump();
    std::printf("%d checks, %d failures\n", g_checks, g_failures);
    return g_failures == 0 ? 0 : 1;
}
