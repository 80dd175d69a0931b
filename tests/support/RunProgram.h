// A program of ours or of others, run to its end.
#pragma once

#include <QProcess>
#include <QStringList>

#include <gtest/gtest.h>

#include <ostream>

namespace tests
{

struct Ran
{
    int code = -1;
    QString output;
    QString errors;
};

inline std::ostream& operator<<(std::ostream& out, const Ran& ran)
{
    return out << ran.output.toStdString() << ran.errors.toStdString();
}

// Within two minutes.
inline Ran runProgram(const QString& program, const QStringList& arguments)
{
    QProcess process;
    process.start(program, arguments);
    EXPECT_TRUE(process.waitForFinished(120000))
        << program.toStdString() << " " << arguments.join(' ').toStdString();
    return {process.exitCode(), QString::fromUtf8(process.readAllStandardOutput()),
            QString::fromUtf8(process.readAllStandardError())};
}

} // namespace tests
