// What runs out: memory, the size that files may have, the room of a terminal.
#include "companion/ImportCompanion.h"

#include "jobs/rules/JobMemory.h"

#include <nlohmann/json.hpp>

#include <QFile>

#include <new>

using ::testing::HasSubstr;
using tests::Arguments;
using tests::Program;
using tests::Result;
using tests::runInProcess;

namespace
{

class ResourceLimits : public tests::ImportCompanion
{
protected:
    static Result run(const Arguments& arguments, const QString& wrapper)
    {
        Program program(arguments, wrapper);
        program.start();
        return program.finish();
    }

    static QByteArray fileWith(const QByteArray& features)
    {
        return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r\n<FeaturesFile version=\"1.0.0\">\r\n"
               "<DeviceFirmwareVersion>1</DeviceFirmwareVersion>\r\n<DeviceModelName>EMU-1</"
               "DeviceModelName>\r\n"
               "<Features>\r\n" +
               features + "</Features>\r\n</FeaturesFile>";
    }
};

const std::string kNoMemory = "There is not enough memory.\n";

// While one lives, jobs find no memory for their large buffers, and say so as the language does.
struct NoMemory
{
    NoMemory()
    {
        ie::setAllocateHook([](std::size_t) -> void* { throw std::bad_alloc(); });
    }
    ~NoMemory() { ie::setAllocateHook(nullptr); }
};

} // namespace

TEST_F(ResourceLimits, EndAJobWithItsCameraGivenBack)
{
    const emu::EmulatedCamera& camera = addCamera("S1");
    addCamera("S2");
    write("EMU-1_S1.fpk", "yesterday");
    const NoMemory none;
    const Result result = runInProcess({"export", "--all", "--to", folder()});
    EXPECT_EQ(result.code, 1);
    for (const char* const title : {"EMU-1 S1", "EMU-1 S2"})
        EXPECT_THAT(result.err, HasSubstr(std::string(title) + ": Out of memory.\n"));
    EXPECT_THAT(result.out, HasSubstr("0 exported, 2 failed\n"));
    EXPECT_GT(camera.counters().writeReg, 0u); // control was taken
    EXPECT_EQ(controlOf(camera), 0u);
    EXPECT_EQ(fileText("EMU-1_S1.fpk"), "yesterday");
    EXPECT_EQ(allInFolder(), QStringList{"EMU-1_S1.fpk"});
}

// What is left out of a file for want of memory is nothing that the camera lacks.
TEST_F(ResourceLimits, LeaveNoFileThatLacksFeatures)
{
    const emu::EmulatedCamera& camera = addCamera("S1");
    write("EMU-1_S1.fpk", "yesterday");
    ie::setAllocateHook([](std::size_t) -> void* { return nullptr; });
    const Result result = runInProcess({"export", "--all", "--to", folder()});
    ie::setAllocateHook(nullptr);
    EXPECT_EQ(result.code, 1);
    EXPECT_THAT(result.err,
                HasSubstr("EMU-1 S1: memory ran out during the export; a file that lacks features is "
                          "not kept.\n"));
    EXPECT_EQ(controlOf(camera), 0u);
    EXPECT_EQ(fileText("EMU-1_S1.fpk"), "yesterday");
    EXPECT_EQ(runInProcess({"export", "--all", "--to", folder()}).code, 0);
}

// A block of registers that could not be prepared was not applied.
TEST_F(ResourceLimits, AreNoImportThatWentWell)
{
    emu::EmulatedCamera& camera = addCamera("S1");
    const std::string file = exported("S1");
    ie::setAllocateHook([](std::size_t) -> void* { return nullptr; });
    const Result result = import(file, {"--all", "--json"});
    ie::setAllocateHook(nullptr);
    EXPECT_EQ(result.code, 1);
    EXPECT_EQ(tests::lastObject(result, "result")["result"], "failed");
    EXPECT_EQ(tests::lastObject(result, "result")["error"],
              "memory ran out. A part of the file may have been applied, and not all of it told.");
    EXPECT_EQ(controlOf(camera), 0u);
}

TEST_F(ResourceLimits, EndTheProgramWithAMessage)
{
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP() << "SKIPPED: AddressSanitizer needs all addresses there are";
#endif
    const emu::EmulatedCamera& camera = addCamera("S1");
    write("large", fileWith(feature("Note", "StringReg", QByteArray(100 << 20, 'x').constData())));
    for (const Arguments& arguments :
         {Arguments{"show", path("large")}, Arguments{"import", path("large"), "--all", "--no-audit"}}) {
        const Result result = run(arguments, "ulimit -v 450000;");
        EXPECT_EQ(result.code, 6) << arguments[0];
        EXPECT_EQ(result.err, kNoMemory) << arguments[0];
    }
    EXPECT_EQ(controlOf(camera), 0u);
}

TEST_F(ResourceLimits, OfFilesAreAFailureOfOutput)
{
    const emu::EmulatedCamera& camera = addCamera("S1");
    write("EMU-1_S1.fpk", "yesterday");
    const Result result = run({"export", "--all", "--to", folder()}, "ulimit -f 8;");
    EXPECT_EQ(result.code, 6);
    EXPECT_THAT(result.err, HasSubstr("A file met the limit on the size of files (ulimit -f).\n"));
    EXPECT_EQ(controlOf(camera), 0u);
    EXPECT_EQ(fileText("EMU-1_S1.fpk"), "yesterday");
    EXPECT_EQ(allInFolder(), QStringList{"EMU-1_S1.fpk"});
}

// One long value does not make every row of a table as long.
TEST_F(ResourceLimits, OfTerminalsAreNotForOneValueToBreak)
{
    QByteArray a = feature("Note", "StringReg", QByteArray(1 << 20, 'x').constData());
    QByteArray b = feature("Note", "StringReg", QByteArray(1 << 20, 'y').constData());
    for (int i = 0; i < 100; ++i) {
        const QByteArray name = "F" + QByteArray::number(i);
        a += feature(name.constData(), "Integer", "1");
        b += feature(name.constData(), "Integer", "2");
    }
    write("a", fileWith(a));
    write("b", fileWith(b));
    const Result result = runInProcess({"diff", path("a"), path("b")});
    EXPECT_EQ(result.code, 1);
    EXPECT_THAT(result.out, HasSubstr("\ndiffers  F99 "));
    EXPECT_LT(result.out.size(), 3u << 20);
}
