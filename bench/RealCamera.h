// An emulated camera with the description of a real one, and the jobs on it with the requests that they took.
#pragma once

#include "camera_emulator/EmulatedCamera.h"
#include "jobs/worker/QOperateThread.h"

#include <QStringList>
#include <QTemporaryDir>

namespace bench
{

// Of the folder that KX_DESCRIPTIONS names; empty without it.
QStringList realDescriptions();

struct JobCost
{
    uint64_t opening = 0;  // requests; what keeps and gives back control does not count, here and below
    uint64_t requests = 0; // after opening
    double seconds = 0;    // after opening, closing included
    unsigned error = 0;    // the worker's
};

struct ExportedFile
{
    int features = 0;
    int lines = 0; // plain features and register lines
};

class RealCamera
{
public:
    explicit RealCamera(const QString& description, std::chrono::milliseconds latency = {});
    ~RealCamera();

    JobCost exportFile();
    ExportedFile exportedFile() const; // none exported: no features
    JobCost importFile();
    // Of that many plain numbers of the file, spread over it, writes other ones into the camera. Gives how
    // many there were.
    int changeNumbers(int count);
    // What a generic tool asks when it reads all values; 0 where there is no such tool. Opening included.
    uint64_t toolRequests();

    // The description's size in 512-byte blocks, as cameras hand it out.
    uint64_t blocks() const { return (m_camera.description().size() + 511) / 512; }

private:
    static int watch(void* self, const KX_CallEvent* event);
    uint64_t asked() const;
    JobCost run();
    QString path() const;

    emu::EmulatedCamera m_camera;
    QTemporaryDir m_folder;
    StructDeviceInfo m_device;
    QOperateThread m_worker;
    uint64_t m_atOpen = 0;
    std::chrono::steady_clock::time_point m_openAt;
};

} // namespace bench
