// What a camera is called in file names and in the features file.
#pragma once

#include <KXCameraControl/KXCameraControl.h>

#include <QString>

namespace ie
{

struct DeviceNames
{
    QString model;
    QString serial;
};

// How far a text field of the device record is read.
enum class FieldEnd
{
    AtZero, // the field must hold a zero byte
    AtSize  // a zero byte or the field's size
};

// Model and serial number of the record's part that its transport names, converted under the suite's
// encoding. Both empty for a transport that has no part.
DeviceNames deviceNames(const KX_DeviceInfo& device, FieldEnd end);

// The model name with its bytes taken as UTF-8, whatever the suite's encoding. Meant: the import compares it
// so.
QString modelNameAsUtf8(const KX_DeviceInfo& device);

// "model_serial.fpk"; "_.fpk" for an unknown transport.
QString featuresFileName(const DeviceNames& names);

} // namespace ie
