#include "iefeatures/imports/UserSet.h"

#include "iefeatures/cameras/CameraConnection.h"
#include "iefeatures/cameras/FeatureReader.h"
#include "iefeatures/console/Text.h"

#include <algorithm>
#include <optional>

namespace companion
{
namespace
{

// The number that stands behind an entry which the camera has now.
std::optional<uint32_t> entryValue(KX_HANDLE handle, const char* enumeration, const QString& name)
{
    FeatureReader reader(handle);
    const auto entries = reader.read(ie::FeatureKind::Enumeration, enumeration).enumeration;
    for (uint32_t i = 0; entries && i < std::min<uint32_t>(entries->supportedCount, KX_ENUM_CAPACITY); ++i)
        if (reader.entryName(enumeration, entries->supported[i]) == name)
            return entries->supported[i];
    return {};
}

QString sentence(const QString& what, KX_Status status)
{
    return what + ": " + KX_CC_StatusText(status);
}

// Empty when it took.
QString choose(KX_HANDLE handle, const char* selector, const QString& name)
{
    const std::optional<uint32_t> value = entryValue(handle, selector, name);
    if (!value)
        return QString("%1 has no entry %2.").arg(selector, printable(name));
    const KX_Status status = KX_CC_SetEnumValue(handle, selector, *value);
    return status == KX_OK ? QString() : sentence(QString("%1 did not take %2").arg(selector, name), status);
}

bool exists(KX_HANDLE handle, const char* name)
{
    KX_XML_AccessMode mode = KX_AM_UNDEFINED;
    return KX_XML_GetNodeAccessMode(handle, name, &mode) == KX_OK && mode != KX_AM_NOT_IMPLEMENTED;
}

QString chooseForStartUp(KX_HANDLE handle, const QString& set)
{
    const bool isNew = exists(handle, "UserSetDefault");
    return choose(handle, isNew ? "UserSetDefault" : "UserSetDefaultSelector", set);
}

// Saves or loads the set, whose command came to that.
struct Commanded
{
    KX_Status status = KX_E_ABORTED; // also where it was not given
    QString problem;
};

Commanded atSet(const CameraConnection& line, const QString& set, const char* command)
{
    if (line.status() != KX_OK)
        return {KX_E_ABORTED, sentence("the camera could not be opened", line.status())};
    QString problem = choose(line.handle(), "UserSetSelector", set);
    if (!problem.isEmpty())
        return {KX_E_ABORTED, problem};
    const KX_Status status = KX_CC_ExecuteCommand(line.handle(), command);
    return {status, status == KX_OK ? QString() : sentence(QString(command) + " failed", status)};
}

} // namespace

bool hasUserSet(const ListedCamera& camera, const QString& name)
{
    const CameraConnection line(camera.device.stDeviceInfo, KX_ACCESS_MONITOR);
    return line.status() == KX_OK && entryValue(line.handle(), "UserSetSelector", name).has_value();
}

SavedSet saveUserSet(const ListedCamera& camera, const UserSet& set)
{
    const CameraConnection line(camera.device.stDeviceInfo, KX_ACCESS_EXCLUSIVE);
    const Commanded saved = atSet(line, set.name, "UserSetSave");
    if (saved.status == KX_OK)
        return {SavedSet::State::Saved,
                set.isForStartUp ? chooseForStartUp(line.handle(), set.name) : QString()};
    const bool isInDoubt = saved.status != KX_E_ABORTED && KX_IS_LINE_FAILURE(saved.status);
    return {isInDoubt ? SavedSet::State::InDoubt : SavedSet::State::NotSaved, saved.problem};
}

QString savingText(const QString& set, const SavedSet& saved)
{
    switch (saved.state) {
    case SavedSet::State::NotSaved:
        return printable(set) + " was not saved: " + saved.problem;
    case SavedSet::State::InDoubt:
        return printable(set) + " may have been saved, as no answer came: " + saved.problem;
    case SavedSet::State::Saved:
        break;
    }
    return saved.problem.isEmpty()
               ? "saved into " + printable(set) + '.'
               : printable(set) + " was saved, and the camera does not start with it: " + saved.problem;
}

QString loadUserSet(const ListedCamera& camera, const QString& set)
{
    const CameraConnection line(camera.device.stDeviceInfo, KX_ACCESS_EXCLUSIVE);
    return atSet(line, set, "UserSetLoad").problem;
}

QString startWithUserSet(const ListedCamera& camera, const QString& set)
{
    const CameraConnection line(camera.device.stDeviceInfo, KX_ACCESS_EXCLUSIVE);
    return line.status() == KX_OK ? chooseForStartUp(line.handle(), set)
                                  : sentence("the camera could not be opened", line.status());
}

} // namespace companion
