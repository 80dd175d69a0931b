#include "companion/RealSeed.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QStringList>

namespace tests
{
namespace
{

// The registers that the number of a node hangs on.
QStringList registersBehind(const QString& name, const QMap<QString, QDomElement>& nodes, int depth = 0)
{
    const QDomElement node = nodes.value(name);
    if (node.tagName() == "IntReg" || node.tagName() == "MaskedIntReg" || depth > 10)
        return {name};
    QStringList names;
    for (QDomElement child = node.firstChildElement(); !child.isNull(); child = child.nextSiblingElement()) {
        if (child.tagName() == "pValue" || child.tagName() == "pVariable")
            names += registersBehind(child.text(), nodes, depth + 1);
    }
    return names;
}

} // namespace

QByteArray seedFor(const QMap<QString, QDomElement>& nodes)
{
    QJsonObject seeds{{"DeviceFirmwareVersion", "1.2.3"}, {"DeviceModelName", "Model"}};
    const QDomElement firmware = nodes.value("DeviceFirmwareVersion");
    for (const char* tag : {"pIsImplemented", "pIsAvailable", "pLength"}) {
        for (const QString& name : registersBehind(firmware.firstChildElement(tag).text(), nodes))
            seeds[name] = qstrcmp(tag, "pLength") == 0 ? 8 : 1;
    }
    return QJsonDocument(QJsonObject{{"nodes", seeds}}).toJson();
}

} // namespace tests
