// A camera of a line that is replaced, over transports that have no addresses.
#include "support/AllTransports.h"
#include "support/QtPrinting.h"
#include "support/RunProgram.h"

#include "gencp/Gencp.h"

#include <QTemporaryDir>

#include <algorithm>

using tests::Ran;
using tests::Transport;

namespace
{

class LineOver : public testing::TestWithParam<Transport>
{
protected:
    LineOver()
    {
        qputenv("VELA_PROGRAM_DATA", m_folder.path().toLocal8Bit());
        qputenv("KX_GENTL_TIMEOUT", "3000");
        emu::CameraConfig config;
        config.serial = "OLD";
        config.userName = "Gate 1";
        old = &m_cameras.add(GetParam(), config);
        config.serial = "NEW";
        config.userName.clear();
        config.restartTime = std::chrono::milliseconds(2500); // long enough to be seen off the line
        fresh = &m_cameras.add(GetParam(), config);
        fresh->stop();
    }
    ~LineOver() override
    {
        qunsetenv("KX_GENTL_TIMEOUT");
        qunsetenv("VELA_PROGRAM_DATA");
    }

    Ran line(const QStringList& arguments) const
    {
        return tests::runProgram(
            IEFEATURES, QStringList{"line", arguments[0], m_folder.filePath("hall.toml")} + arguments.mid(1));
    }
    static std::string nameOf(const emu::Shell& camera)
    {
        const emu::Bytes field = camera.peek(gencp::RegUserName, gencp::kTextSize);
        return {field.begin(), std::find(field.begin(), field.end(), 0)};
    }
    static int64_t height(const emu::Shell& camera) { return std::get<int64_t>(*camera.node("Height")); }

    emu::Shell* old = nullptr;
    emu::Shell* fresh = nullptr;

private:
    QTemporaryDir m_folder;
    tests::AllTransports m_cameras;
};

} // namespace

// A search tells the name with which USB cameras were switched on, and no names of serial lines and
// producers.
TEST_P(LineOver, ReplacesACameraAndProvesItOverARestart)
{
    const bool isNamed = GetParam() == Transport::Usb3;
    ASSERT_EQ(old->change(R"({"nodes": {"Height": 16}})"), std::vector<std::string>());
    const Ran init = line(QStringList{"init", "--all", "--pause", "0"} +
                          (isNamed ? QStringList() : QStringList{"--name-by", "serial"}));
    ASSERT_EQ(init.code, 0) << init;
    old->stop();
    ASSERT_TRUE(fresh->start());
    const Ran run = line({"replace", "--camera", isNamed ? "Gate 1" : "OLD", "--yes"});
    ASSERT_EQ(run.code, 0) << run;
    EXPECT_TRUE(run.errors.contains("proven over a restart.\n")) << run;
    EXPECT_FALSE(run.errors.contains(" at once")) << run;
    EXPECT_EQ(fresh->counters().restarts, 1u);
    EXPECT_EQ(nameOf(*fresh), isNamed ? "Gate 1" : "");
    EXPECT_EQ(height(*fresh), 16);
    const Ran check = line({"check"});
    EXPECT_EQ(check.code, 0) << check;
}

INSTANTIATE_TEST_SUITE_P(Transports, LineOver,
                         testing::Values(Transport::Usb3, Transport::Serial, Transport::Clser,
                                         Transport::GenTl),
                         tests::transportName);
