// Programs that tests start, by what each system has for that.
#pragma once

#include <QProcess>
#include <QString>
#include <QStringList>

namespace tests
{

// `wrapper`: shell words in front of the program; where there is no such shell, it fails the test.
void startProgram(QProcess& process, const QString& program, const QStringList& arguments,
                  const QString& wrapper = {});
// As Ctrl-C at its terminal does. Whether it was asked.
bool interruptProgram(const QProcess& process);
// As the system asks programs to end: SIGTERM. Windows: what Ctrl-C does.
bool endProgram(const QProcess& process);
// As camera_emulator is asked: SIGUSR1 and SIGTERM, or its events.
bool askEmulatorToChange(const QProcess& process);
bool askEmulatorToEnd(const QProcess& process);

} // namespace tests
