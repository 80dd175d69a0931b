#include "gentl_host/OwnProcess.h"

#include "gentl/HostProtocol.h"

#include <windows.h>

#include <shellapi.h>

#include <chrono>
#include <filesystem>
#include <thread>

namespace gentl_host
{

// The standard input, which producers and the programs that they start must not take for one.
gentl::Channel controlChannel()
{
    const HANDLE input = GetStdHandle(STD_INPUT_HANDLE);
    DWORD state = 0;
    if (!input || input == INVALID_HANDLE_VALUE || GetFileType(input) != FILE_TYPE_PIPE ||
        !GetNamedPipeHandleStateW(input, &state, nullptr, nullptr, nullptr, nullptr, 0) ||
        (state & PIPE_READMODE_MESSAGE) == 0)
        return {};
    SetHandleInformation(input, HANDLE_FLAG_INHERIT, 0);
    SetStdHandle(STD_INPUT_HANDLE, nullptr);
    return gentl::Channel(reinterpret_cast<intptr_t>(input));
}

// Not those of main(), which are in the system's 8-bit encoding.
std::string libraryArgument(int, char**)
{
    int count = 0;
    wchar_t** const arguments = CommandLineToArgvW(GetCommandLineW(), &count);
    const std::string path = arguments && count == 2 ? std::filesystem::path(arguments[1]).u8string() : "";
    LocalFree(arguments);
    return path;
}

void volunteer()
{
    // The system ends nobody for want of memory: who asks for more gets none.
}

void endWithin(unsigned seconds)
{
    std::thread([seconds] {
        std::this_thread::sleep_for(std::chrono::seconds(seconds));
        TerminateProcess(GetCurrentProcess(), gentl::ExitDone);
    }).detach();
}

} // namespace gentl_host
