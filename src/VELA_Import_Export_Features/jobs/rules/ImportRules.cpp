#include "jobs/rules/ImportRules.h"

#include <QSet>

namespace ie
{

bool isProtectedFeature(const QString& name)
{
    static const QSet<QString> names = {"UserSetDefault", "UserSetSelector", "DeviceSerialNumber",
                                        "DeviceUserID",   "BoardDeviceType", "DeviceFirmwareVersion"};
    return names.contains(name);
}

const QStringList& importSkipList()
{
    static const QStringList names = {"LUTValueAll",
                                      "GevPAUSEFrameReception",
                                      "GevCurrentIPConfigurationPersistentIP",
                                      "GevCurrentIPConfigurationDHCP",
                                      "GevSCDA",
                                      "GevPersistentDefaultGateway",
                                      "GevPersistentSubnetMask",
                                      "GevPersistentIPAddress",
                                      "GevCurrentDefaultGateway",
                                      "GevCurrentSubnetMask",
                                      "GevCurrentIPAddress"};
    return names;
}

} // namespace ie
