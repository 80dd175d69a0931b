// However often a command opens a camera, it reads the camera's description once.
#include "companion/ImportCompanion.h"

#include <QDir>

namespace
{

class OneOpening : public tests::ImportCompanion
{
protected:
    // A process of its own, as whoever types the command has it; nothing is kept from one to the next.
    static void run(const tests::Arguments& arguments, int expected = 0)
    {
        tests::Program program(arguments);
        program.start();
        const tests::Result result = program.finish();
        EXPECT_EQ(result.code, expected) << result.out << result.err;
    }

    // How often the description could have been read from the camera since the counters were reset.
    static double readings(const emu::EmulatedCamera& camera)
    {
        return double(camera.counters().bytesRead) / double(camera.description().size());
    }

    void expectOneReading(const tests::Arguments& arguments, int expected = 0)
    {
        for (emu::EmulatedCamera* camera : m_cameras)
            camera->resetCounters();
        run(arguments, expected);
        double most = 0; // the second of two cameras may need none
        for (const emu::EmulatedCamera* camera : m_cameras)
            most = std::max(most, readings(*camera));
        EXPECT_GE(most, 1.0) << arguments[0];
        EXPECT_LT(most, 2.0) << arguments[0];
    }

    emu::EmulatedCamera& add(const std::string& serial)
    {
        m_cameras.push_back(&addCamera(serial));
        return *m_cameras.back();
    }

private:
    std::vector<emu::EmulatedCamera*> m_cameras;
};

TEST_F(OneOpening, ofAGuardedImportAndItsRollback)
{
    add("A");
    const std::string file = path(exported("A"));
    expectOneReading({"import", file, "--all", "--snapshot", folder(), "--verify", "--no-audit"});
    const QStringList snapshots =
        QDir(QString::fromStdString(folder())).entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    ASSERT_EQ(snapshots.size(), 1) << snapshots.join(' ').toStdString();
    expectOneReading({"rollback", path(snapshots[0].toStdString()), "--serial", "A", "--no-audit"});
}

TEST_F(OneOpening, ofPlanAndVerify)
{
    add("A");
    const std::string file = path(exported("A"));
    expectOneReading({"plan", file, "--all"});
    expectOneReading({"verify", file, "--all"});
}

TEST_F(OneOpening, ofACloneAndOfADifference)
{
    add("A");
    add("B");
    expectOneReading({"clone", "--from", "A", "--to", "B", "--yes", "--no-audit"});
    expectOneReading({"diff", "serial:A", "serial:B"});
}

} // namespace
