// One scripted camera for targets of the jobs and the companion.
#pragma once

#include "fuzz/Fuzz.h"
#include "support/Recorder.h"
#include "support/ScriptedCamera.h"

#include <QCoreApplication>
#include <QTemporaryDir>

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

namespace fuzz
{

// Files of targets lie where nothing waits for a disk.
inline QString newFolder()
{
    static QTemporaryDir folder(QDir("/dev/shm").exists() ? "/dev/shm/fuzz-XXXXXX"
                                                          : QDir::tempPath() + "/fuzz-XXXXXX");
    return folder.path();
}

// A file of the process that is written anew for each input.
class InputFile
{
public:
    explicit InputFile(const QString& path)
        : m_path(path), m_file(::open(path.toLocal8Bit(), O_RDWR | O_CREAT, 0600))
    {}
    ~InputFile() { ::close(m_file); }
    InputFile(const InputFile&) = delete;
    InputFile& operator=(const InputFile&) = delete;

    void write(const void* data, size_t size)
    {
        promise(ftruncate(m_file, 0) == 0 && pwrite(m_file, data, size, 0) == static_cast<ssize_t>(size),
                "the input can be written");
    }
    const QString& path() const { return m_path; }

private:
    const QString m_path;
    const int m_file;
};

// What a fresh camera "Cam" with the serial number "S1" has.
inline tests::ScriptedDevice& freshCamera()
{
    tests::resetScriptedCamera();
    tests::Recorder::instance().clear();
    tests::ScriptedDevice& camera = tests::scriptedDevice("S1");
    camera.setString("DeviceFirmwareVersion", "V1");
    camera.setEnumeration("DeviceScanType", 0, {0, 1});
    camera.setInteger("Width", 640, 8, 4096, 8);
    camera.setInteger("Root", 0);
    camera.setFloat("Gain", 1.5F);
    camera.setBool("Flip", false);
    camera.setEnumeration("Format", 1, {1, 2});
    camera.setString("Name", "cam", 16);
    camera.setInteger("Locked", 5);
    camera.setAccessMode("Locked", KX_AM_READ_ONLY);
    camera.makeUnreadable(0x900, 16);
    camera.makeUnwritable(0xA00, 16);
    return camera;
}

// Behind every use of it.
inline void checkCamera()
{
    promise(tests::livingHandles() == 0, "every handle is given back");
    promise(tests::cameraViolations().isEmpty(), "every call is one that a correct caller makes");
}

// What the program logs goes nowhere, and a QCoreApplication is there.
inline void prepareQt()
{
    static int argc = 1;
    static char name[] = "fuzz";
    static char* argv[] = {name, nullptr};
    static QCoreApplication* const application = [] {
        qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
        return new QCoreApplication(argc, argv);
    }();
    (void)application;
}

} // namespace fuzz
