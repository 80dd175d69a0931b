#include "support/Processes.h"

#include <csignal>

namespace tests
{
namespace
{

bool isSent(const QProcess& process, int signal)
{
    return ::kill(static_cast<pid_t>(process.processId()), signal) == 0;
}

} // namespace

void startProgram(QProcess& process, const QString& program, const QStringList& arguments,
                  const QString& wrapper)
{
    if (wrapper.isEmpty())
        process.start(program, arguments);
    else
        process.start("/bin/sh", QStringList{"-c", wrapper + " exec \"$0\" \"$@\"", program} + arguments);
}

bool interruptProgram(const QProcess& process)
{
    return isSent(process, SIGINT);
}

bool endProgram(const QProcess& process)
{
    return isSent(process, SIGTERM);
}

bool askEmulatorToChange(const QProcess& process)
{
    return isSent(process, SIGUSR1);
}

bool askEmulatorToEnd(const QProcess& process)
{
    return isSent(process, SIGTERM);
}

} // namespace tests
