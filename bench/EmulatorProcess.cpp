#include "EmulatorProcess.h"

#include "gvcp/Gvcp.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <list>
#include <sys/wait.h>
#include <unistd.h>

namespace bench
{

namespace
{

void add(emu::Counters& sum, const emu::Counters& more)
{
    sum.discovery += more.discovery;
    sum.readReg += more.readReg;
    sum.writeReg += more.writeReg;
    sum.readMem += more.readMem;
    sum.writeMem += more.writeMem;
    sum.unknown += more.unknown;
    sum.registersRead += more.registersRead;
    sum.bytesRead += more.bytesRead;
    sum.settingWrites += more.settingWrites;
}

// Answers each byte with the counters, until the other end is closed.
[[noreturn]] void serve(const std::vector<emu::CameraConfig>& configs, int from, int to)
{
    std::list<emu::EmulatedCamera> cameras;
    for (const emu::CameraConfig& config : configs) {
        const emu::StartResult started = cameras.emplace_back(config).start();
        if (started)
            continue;
        std::fprintf(stderr, "%s\n", started.message.c_str());
        _exit(1);
    }
    emu::Counters sum;
    char byte = 0;
    do {
        if (write(to, &sum, sizeof sum) != sizeof sum)
            break;
        const ssize_t got = read(from, &byte, 1);
        if (got != 1)
            break;
        sum = {};
        for (emu::EmulatedCamera& camera : cameras) {
            add(sum, camera.counters());
            camera.resetCounters();
        }
    } while (true);
    _exit(0);
}

} // namespace

KX_DeviceInfo deviceInfo(const emu::CameraConfig& camera)
{
    KX_DeviceInfo info;
    std::memset(&info, 0, sizeof info);
    info.transportType = KX_TRANSPORT_GIGE;
    info.layout = KX_DEVICE_INFO_LAYOUT;
    KX_GigEDeviceInfo& gige = info.special.gige;
    std::snprintf(reinterpret_cast<char*>(gige.modelName), sizeof gige.modelName, "%s", camera.model.c_str());
    std::snprintf(reinterpret_cast<char*>(gige.serialNumber), sizeof gige.serialNumber, "%s",
                  camera.serial.c_str());
    gige.ipAddress = gvcp::parseAddress(camera.address).value_or(0);
    return info;
}

EmulatorProcess::EmulatorProcess(const std::vector<emu::CameraConfig>& cameras)
{
    int down[2], up[2];
    if (pipe(down) != 0 || pipe(up) != 0)
        std::abort();
    m_process = fork();
    if (m_process == 0) {
        close(down[1]);
        close(up[0]);
        serve(cameras, down[0], up[1]);
    }
    close(down[0]);
    close(up[1]);
    m_toCameras = down[1];
    m_fromCameras = up[0];
    emu::Counters none;
    if (read(m_fromCameras, &none, sizeof none) != sizeof none)
        std::exit(1);
}

EmulatorProcess::~EmulatorProcess()
{
    close(m_toCameras);
    close(m_fromCameras);
    waitpid(m_process, nullptr, 0);
}

emu::Counters EmulatorProcess::takeCounters()
{
    emu::Counters counters;
    const char byte = 'c';
    if (write(m_toCameras, &byte, 1) != 1 ||
        read(m_fromCameras, &counters, sizeof counters) != sizeof counters)
        std::exit(1);
    return counters;
}

} // namespace bench
