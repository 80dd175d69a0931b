#include "window/LocalConfig.h"

#include <SuiteTools/SuiteTools.h>

#include <QSettings>

namespace
{

constexpr char kColumnMaskKey[] =
    "View/MultiImportExportFeaturesShowFlage"; // "Flage" is part of the file's format
constexpr char kEncodingKey[] = "General/EncodingType";

QString configFile()
{
    return VELAInterface::programDataPath() + "/LocalConfig.ini";
}

} // namespace

int LocalConfig::columnMask(QObject* caller)
{
    return QSettings(configFile(), QSettings::IniFormat, caller)
        .value(kColumnMaskKey, kDefaultColumns)
        .toInt();
}

void LocalConfig::setColumnMask(int mask, QObject* caller)
{
    QSettings(configFile(), QSettings::IniFormat, caller).setValue(kColumnMaskKey, mask);
}

int LocalConfig::encodingType(QObject* caller)
{
    return QSettings(configFile(), QSettings::IniFormat, caller).value(kEncodingKey, 0).toInt();
}
