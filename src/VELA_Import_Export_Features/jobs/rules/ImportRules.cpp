#include "jobs/rules/ImportRules.h"

#include <SuiteTools/SuiteTools.h>

#include <QSet>

namespace ie
{

bool isWritable(KX_XML_AccessMode mode)
{
    return mode == KX_AM_WRITE_ONLY || mode == KX_AM_READ_WRITE;
}

bool isProtectedFeature(const QString& name)
{
    static const QSet<QString> names = {"UserSetDefault", "UserSetSelector", "DeviceSerialNumber",
                                        "DeviceUserID",   "BoardDeviceType", "DeviceFirmwareVersion"};
    return names.contains(name);
}

const QStringList& commonSkipList()
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

bool isSkippedAsShown(const QString& name, const QString& representation)
{
    return representation == "IPV4Address" || representation == "MACAddress" ||
           (representation == "HexNumber" && name == "GevMACAddress");
}

const QStringList& lineScanOnlyList()
{
    static const QStringList names = {"AcquisitionLineRateEnable", "AcquisitionLineRate"};
    return names;
}

bool isLineScan(const QString& scanType)
{
    return scanType == "1";
}

ImportSkip importSkip(const QString& name, const std::function<QString()>& scanType)
{
    if (isProtectedFeature(name))
        return ImportSkip::Protected;
    if (commonSkipList().contains(name))
        return ImportSkip::Listed;
    return lineScanOnlyList().contains(name) && !isLineScan(scanType()) ? ImportSkip::LineScanOnly
                                                                        : ImportSkip::None;
}

Imported<bool> importedBoolean(const QString& text)
{
    bool ok = false;
    const int number = text.toInt(&ok, 10);
    return {number >= 1, ok && number >= 0};
}

Imported<quint32> importedNumber(const QString& text)
{
    bool ok = false;
    const quint32 number = text.toUInt(&ok, 10);
    return {number, ok};
}

Imported<float> importedFloat(const QString& text)
{
    bool ok = false;
    const float number = text.toFloat(&ok);
    return {number, ok};
}

Imported<quint32> importedWord(const QString& text)
{
    const qint64 number = VELAInterface::string2Int(text);
    const auto word = static_cast<quint32>(number);
    const bool isZero = text == "0x0" || (!text.isEmpty() && text.count('0') == text.size());
    return {word, number == qint64(word) && (number != 0 || isZero)};
}

QByteArray importedBytes(const QString& text)
{
    char bytes[kLongestText + 1] = {}; // a terminating zero always stands
    VELAInterface::CovertEncodeCharFromQString(text, bytes, kLongestText);
    return bytes;
}

} // namespace ie
