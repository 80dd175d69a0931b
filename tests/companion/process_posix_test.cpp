// Signals and permissions that Windows has no counterpart of.
#include "companion/CompanionFixture.h"

#include <QFileInfo>

#include <csignal>

using tests::CompanionTest;
using tests::Program;

namespace
{

class PosixProcess : public CompanionTest
{
protected:
    static void hangUp(Program& program)
    {
        ASSERT_EQ(::kill(static_cast<pid_t>(program.process().processId()), SIGHUP), 0);
    }
};

} // namespace

TEST_F(PosixProcess, EndsProperlyWhenItsTerminalGoes)
{
    const emu::EmulatedCamera& camera =
        addCamera("S1", [](emu::CameraConfig& config) { config.latency = std::chrono::milliseconds(5); });
    Program program({"export", "--all", "--to", folder()});
    program.start();
    awaitRequests(camera, 100);
    hangUp(program);
    EXPECT_EQ(program.finish().code, 130);
    EXPECT_EQ(controlOf(camera), 0u);
    Program kept({"export", "--all", "--to", folder()}, "trap '' HUP;"); // as nohup does
    kept.start();
    awaitRequests(camera, camera.counters().requests() + 100);
    hangUp(kept);
    EXPECT_EQ(kept.finish().code, 0);
}

TEST_F(PosixProcess, LetsNobodyElseIntoTheFolderOfItsOwn)
{
    const emu::EmulatedCamera& camera =
        addCamera("S1", [](emu::CameraConfig& config) { config.latency = std::chrono::milliseconds(5); });
    Program program({"export", "--all", "--to", folder()});
    program.start();
    awaitRequests(camera, 100);
    const QStringList during = allInFolder();
    ASSERT_EQ(during.size(), 1);
    EXPECT_EQ(QFileInfo(QString::fromStdString(path(during.first().toStdString()))).permissions() & 0x0FFF,
              QFile::ReadUser | QFile::WriteUser | QFile::ExeUser);
    EXPECT_EQ(program.finish().code, 0);
}
