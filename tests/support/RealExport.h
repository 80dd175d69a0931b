// One XML export or import of an emulated camera by the worker, over the camera library and the suite's
// library as they are: nothing scripted.
#pragma once

#include "camera_emulator/CameraConfig.h"

#include <SuiteTools/StructDeviceInfo.h>

#include <QByteArray>
#include <QString>
#include <QStringList>

namespace tests
{

// The record under which discovery would announce the GigE Vision camera; its device id is 1.
StructDeviceInfo deviceRecord(const emu::CameraConfig& config);

struct ExportOutcome
{
    QStringList messages; // of SigThreadInfo
    QStringList log;      // the worker's critical lines: their texts without the quotes around them
    QString path;         // of SigEndThread
    QByteArray file;      // null when there is none
};

// Runs a worker of its own to its end. `folder` exists; the filter folder is looked for below it, so that no
// filter file of this machine counts.
ExportOutcome exportCamera(const StructDeviceInfo& record, const QString& folder);
inline ExportOutcome exportCamera(const emu::CameraConfig& config, const QString& folder)
{
    return exportCamera(deviceRecord(config), folder);
}

struct ImportOutcome
{
    QStringList messages;
    QStringList log;
    unsigned int errorCode = 0; // the worker's
};

// The same for an import of a features file.
ImportOutcome importFile(const StructDeviceInfo& record, const QString& file);
inline ImportOutcome importFile(const emu::CameraConfig& config, const QString& file)
{
    return importFile(deviceRecord(config), file);
}

} // namespace tests
