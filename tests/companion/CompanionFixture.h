// Runs the companion against emulated cameras: in the test's own process with swapped streams, or as a
// program.
#pragma once

#include "camera_emulator/EmulatedCamera.h"
#include "iefeatures/commands/Companion.h"
#include "support/QtPrinting.h"

#include <QByteArray>
#include <QProcess>
#include <QTemporaryDir>

#include <nlohmann/json_fwd.hpp>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <list>
#include <string>
#include <vector>

namespace tests
{

using Arguments = std::vector<std::string>;

struct Result
{
    int code = -1;
    std::string out;
    std::string err;
};

// What it printed for scripts, line by line; and the last object of a kind, null where there is none.
using Json = nlohmann::ordered_json;
std::vector<Json> objects(const Result& run);
Json lastObject(const Result& run, const char* kind);

// Every run with --json must end with the closing object, and its objects are held against the schema when
// the tests are over.
Result runInProcess(const Arguments& arguments);
// With cameras that nobody emulates: nothing is asked of them but what `enumerate` gives.
Result runInProcess(const Arguments& arguments, companion::Enumerate enumerate);

// "iefeatures" itself.
class Program
{
public:
    // `wrapper`: shell words in front of the program, e.g. a limit; empty: none. POSIX systems alone.
    explicit Program(const Arguments& arguments, const QString& wrapper = {});
    ~Program(); // ends it when it still runs

    static QString path();
    QProcess& process() { return m_process; }
    void start();
    void interrupt(); // as Ctrl-C does
    void end();       // as the system asks programs to end
    // Waits for its end.
    Result finish();

private:
    QProcess m_process;
    const Arguments m_words;
    QStringList m_arguments;
    QString m_wrapper;
};

// One record as the camera library gives it for a GigE Vision camera.
KX_DeviceEntry gigeEntry(const std::string& model, const std::string& serial,
                         const std::string& userName = {}, uint32_t address = 0x7F010203,
                         uint32_t availability = KX_AVAILABILITY_FREE);
// Enumerations for cameras that nobody emulates.
companion::Enumerate entries(std::vector<KX_DeviceEntry> list);

// A description whose only feature, "Zone", has no plain value: its registers are read last of all, in one
// request.
std::string descriptionWithOneRegister();

class CompanionTest : public ::testing::Test
{
protected:
    CompanionTest();
    ~CompanionTest() override;

    using Configure = std::function<void(emu::CameraConfig&)>;
    // Starts a camera on an address of its own; the companion is told of it. In the order of the addresses.
    emu::EmulatedCamera& addCamera(const std::string& serial, const Configure& configure = {});

    std::list<emu::EmulatedCamera>& cameras() { return m_cameras; }

    std::string folder() const { return m_folder.path().toStdString(); }
    std::string path(const std::string& name) const { return folder() + "/" + name; }
    QStringList filesInFolder() const;
    QStringList allInFolder() const; // folders and hidden files as well
    QByteArray fileText(const std::string& name) const;

    // Until `count` requests have come. Fails the test when they do not.
    static void awaitRequests(const emu::EmulatedCamera& camera, uint64_t count);
    static uint32_t controlOf(const emu::EmulatedCamera& camera);

private:
    std::list<emu::EmulatedCamera> m_cameras;
    QByteArrayList m_addresses;
    QTemporaryDir m_folder;
};

} // namespace tests
