#include "support/Processes.h"

#include <windows.h>

#include <gtest/gtest.h>

namespace tests
{
namespace
{

// A test's own console events are nobody's wish.
BOOL WINAPI passOver(DWORD)
{
    return TRUE;
}

bool isRaised(const QProcess& process, const char* event)
{
    const QString name = QString("camera_emulator.%1.%2").arg(process.processId()).arg(event);
    const HANDLE handle = OpenEventW(EVENT_MODIFY_STATE, FALSE, name.toStdWString().c_str());
    const bool isRaised = handle && SetEvent(handle);
    CloseHandle(handle);
    return isRaised;
}

} // namespace

void startProgram(QProcess& process, const QString& program, const QStringList& arguments,
                  const QString& wrapper)
{
    ASSERT_TRUE(wrapper.isEmpty()) << "there is no shell";
    // A console of its own, where nobody else is interrupted.
    process.setCreateProcessArgumentsModifier(
        [](QProcess::CreateProcessArguments* about) { about->flags |= CREATE_NO_WINDOW; });
    process.start(program, arguments);
}

bool interruptProgram(const QProcess& process)
{
    static const BOOL isPassedOver = SetConsoleCtrlHandler(passOver, TRUE);
    FreeConsole();
    const bool isAsked = isPassedOver && AttachConsole(static_cast<DWORD>(process.processId())) &&
                         GenerateConsoleCtrlEvent(CTRL_C_EVENT, 0);
    FreeConsole();
    return isAsked;
}

bool endProgram(const QProcess& process)
{
    return interruptProgram(process);
}

bool askEmulatorToChange(const QProcess& process)
{
    return isRaised(process, "change");
}

bool askEmulatorToEnd(const QProcess& process)
{
    return isRaised(process, "end");
}

} // namespace tests
