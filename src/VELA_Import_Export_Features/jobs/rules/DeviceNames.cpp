#include "jobs/rules/DeviceNames.h"

#include "camera_line/RecordTexts.h"

#include <SuiteTools/SuiteTools.h>

namespace ie
{
namespace
{

// The field is the camera line's, its end is not: a job that names its target reads up to the zero byte,
// however wide the field.
QString textOf(const camera_line::Field& field, FieldEnd end)
{
    if (end == FieldEnd::AtSize || !field.bytes)
        return field.text();
    return VELAInterface::GetEncodeQStringFromUnChar(field.bytes, -1);
}

} // namespace

DeviceNames deviceNames(const KX_DeviceInfo& device, FieldEnd end)
{
    return {textOf(camera_line::modelField(device), end), textOf(camera_line::serialField(device), end)};
}

QString modelNameAsUtf8(const KX_DeviceInfo& device)
{
    return QString::fromUtf8(camera_line::modelField(device).content());
}

QString featuresFileName(const DeviceNames& names)
{
    return QString("%1_%2.fpk").arg(names.model, names.serial);
}

} // namespace ie
