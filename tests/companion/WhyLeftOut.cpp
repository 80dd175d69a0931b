#include "companion/WhyLeftOut.h"

#include <QRegularExpression>

#include <algorithm>

namespace tests
{
namespace
{

const QStringList& neverExported()
{
    static const QStringList names = {"UserSetDefault", "UserSetSelector", "DeviceSerialNumber",
                                      "DeviceUserID",   "BoardDeviceType", "DeviceFirmwareVersion"};
    return names;
}

const QStringList& skipped()
{
    static const QStringList names = {
        "GevCurrentIPAddress",           "GevCurrentSubnetMask",
        "GevCurrentDefaultGateway",      "LUTValueAll",
        "GevPersistentIPAddress",        "GevPersistentSubnetMask",
        "GevPersistentDefaultGateway",   "GevSCDA",
        "GevCurrentIPConfigurationDHCP", "GevCurrentIPConfigurationPersistentIP",
        "GevPAUSEFrameReception"};
    return names;
}

QString text(const QDomElement& element, const QString& tag)
{
    return element.firstChildElement(tag).text();
}

// The node and what its value is taken from, up to the register.
QList<QDomElement> chainBehind(const QString& name, const QMap<QString, QDomElement>& nodes)
{
    QList<QDomElement> chain;
    for (QDomElement node = nodes.value(name); !node.isNull() && !chain.contains(node);
         node = nodes.value(text(node, "pValue")))
        chain += node;
    return chain;
}

// Names that a log line about the feature's registers may carry.
QStringList namesOnTheWay(const QList<QDomElement>& chain)
{
    QStringList names;
    for (const QDomElement& node : chain) {
        names += node.attribute("Name");
        for (QDomElement child = node.firstChildElement("pVariable"); !child.isNull();
             child = child.nextSiblingElement("pVariable"))
            names += child.text();
    }
    return names;
}

// Matches the log lines that are about one of these names.
QRegularExpression linesAbout(QStringList names)
{
    std::transform(names.begin(), names.end(), names.begin(),
                   [](const QString& name) { return QRegularExpression::escape(name); });
    return QRegularExpression(
        QString("(failed:|NodeName : )(%1)(;| |$)|^Reg(%1) value length:").arg(names.join('|')));
}

bool hasEmptyLength(const QDomElement& reg, const QMap<QString, QDomElement>& nodes)
{
    const QString length = text(reg, "Length");
    return length == "0" || (length.isEmpty() && text(nodes.value(text(reg, "pLength")), "Value") == "0");
}

} // namespace

QString ruleAgainst(const QString& name, const QMap<QString, QDomElement>& nodes)
{
    const QDomElement node = nodes.value(name);
    const QString shown = text(node, "Representation");
    if (neverExported().contains(name))
        return "never exported";
    if (skipped().contains(name))
        return "skipped";
    if (shown == "IPV4Address" || shown == "MACAddress" || (shown == "HexNumber" && name == "GevMACAddress"))
        return "shown as an address";
    return node.tagName() == "Command" ? "a command" : "";
}

QString whyLeftOut(const QString& name, const QMap<QString, QDomElement>& nodes, const QStringList& log)
{
    const QString rule = ruleAgainst(name, nodes);
    if (!rule.isEmpty())
        return rule;
    const QList<QDomElement> chain = chainBehind(name, nodes);
    const QStringList lines = log.filter(linesAbout(namesOnTheWay(chain)));
    if (!lines.isEmpty())
        return lines.first();
    return hasEmptyLength(chain.value(chain.size() - 1), nodes) ? "its register is empty" : "";
}

} // namespace tests
