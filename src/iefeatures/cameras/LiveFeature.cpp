#include "iefeatures/cameras/LiveFeature.h"

#include "jobs/rules/ImportRules.h"

#include <QXmlStreamReader>

#include <algorithm>

namespace companion
{
namespace
{

constexpr ie::FeatureKind kKinds[] = {ie::FeatureKind::Integer, ie::FeatureKind::Enumeration,
                                      ie::FeatureKind::Boolean, ie::FeatureKind::Float,
                                      ie::FeatureKind::StringReg};

QString valueText(FeatureReader& reader, const LiveFeature& feature)
{
    switch (*feature.kind) {
    case ie::FeatureKind::Boolean:
        return feature.reading.text == "1" ? "true" : "false";
    case ie::FeatureKind::Enumeration: {
        const QString entry = reader.entryName(feature.name, feature.reading.enumeration->current);
        return entry.isEmpty() ? feature.reading.text : entry;
    }
    default:
        return feature.reading.text;
    }
}

QStringList entriesOf(FeatureReader& reader, const LiveFeature& feature)
{
    QStringList names;
    const KX_EnumValue& entries = *feature.reading.enumeration;
    for (uint32_t i = 0; i < std::min<uint32_t>(entries.supportedCount, KX_ENUM_CAPACITY); ++i)
        names += reader.entryName(feature.name, entries.supported[i]);
    return names;
}

MeantValue meantEntry(FeatureReader& reader, const LiveFeature& feature, const QString& written)
{
    const KX_EnumValue& entries = *feature.reading.enumeration;
    const QStringList names = entriesOf(reader, feature);
    if (const int index = names.indexOf(written); index >= 0)
        return {QString::number(entries.supported[index]), {}};
    bool isNumber = false;
    written.toUInt(&isNumber);
    if (isNumber)
        return {written, {}};
    return {{}, '"' + written + "\" is none of its entries: " + names.join(", ") + '.'};
}

MeantValue meantBoolean(const QString& written)
{
    const QString word = written.toLower();
    if (QStringList{"true", "on", "yes", "1"}.contains(word))
        return {"1", {}};
    if (QStringList{"false", "off", "no", "0"}.contains(word))
        return {"0", {}};
    return {{}, '"' + written + "\" is neither true nor false."};
}

QString withoutUnit(const QString& written, const QString& unit)
{
    const bool hasUnit = !unit.isEmpty() && written.endsWith(unit);
    return (hasUnit ? written.chopped(unit.size()) : written).trimmed();
}

MeantValue meantInteger(const QString& written)
{
    const std::optional<qint64> number = ie::meantInteger(written);
    if (number)
        return {QString::number(*number), {}};
    return {{}, '"' + written + "\" is no whole number."};
}

MeantValue meantReal(const QString& written)
{
    bool isNumber = false;
    written.toDouble(&isNumber);
    return isNumber ? MeantValue{written, {}} : MeantValue{{}, '"' + written + "\" is no number."};
}

} // namespace

QString LiveFeature::number() const
{
    return kind == ie::FeatureKind::Enumeration ? reading.text : QString();
}

LiveFeature readLiveFeature(FeatureReader& reader, const QString& name)
{
    LiveFeature feature;
    feature.name = name;
    for (const ie::FeatureKind kind : kKinds) {
        feature.reading = reader.read(kind, name);
        if (feature.reading.isGood()) {
            feature.kind = kind;
            feature.value = valueText(reader, feature);
            return feature;
        }
        if (feature.reading.status != KX_E_GC_LOGICAL)
            break;
    }
    feature.problem = feature.reading.status == KX_E_GC_LOGICAL
                          ? QString("It is a command, or a register without a value.")
                          : QString(KX_CC_StatusText(feature.reading.status));
    return feature;
}

MeantValue meantValue(FeatureReader& reader, const LiveFeature& feature, const QString& unit,
                      const QString& written)
{
    switch (*feature.kind) {
    case ie::FeatureKind::Boolean:
        return meantBoolean(written);
    case ie::FeatureKind::Enumeration:
        return meantEntry(reader, feature, written);
    case ie::FeatureKind::Integer:
    case ie::FeatureKind::IntReg:
        return meantInteger(withoutUnit(written, unit));
    case ie::FeatureKind::Float:
        return meantReal(withoutUnit(written, unit));
    case ie::FeatureKind::StringReg:
        break;
    }
    return {written.isNull() ? QString("") : written, {}};
}

// Not through the import's rules, which cut numbers to 32 bits.
KX_Status writeLiveFeature(KX_HANDLE handle, const LiveFeature& feature, const QString& meant)
{
    const QByteArray name = feature.name.toUtf8();
    switch (*feature.kind) {
    case ie::FeatureKind::Boolean:
        return KX_CC_SetBoolValue(handle, name, meant == "1");
    case ie::FeatureKind::Enumeration:
        return KX_CC_SetEnumValue(handle, name, meant.toUInt());
    case ie::FeatureKind::Integer:
    case ie::FeatureKind::IntReg:
        return KX_CC_SetIntValueEx(handle, name, meant.toLongLong());
    case ie::FeatureKind::Float:
        return KX_CC_SetFloatValue(handle, name, meant.toFloat());
    case ie::FeatureKind::StringReg:
        break;
    }
    return KX_CC_SetStringValue(handle, name, ie::importedBytes(meant));
}

QString unitOf(const QByteArray& description, const QString& feature)
{
    QXmlStreamReader xml(description);
    while (!xml.atEnd()) {
        if (xml.readNext() != QXmlStreamReader::StartElement || xml.attributes().value("Name") != feature)
            continue;
        while (xml.readNextStartElement()) {
            if (xml.name() == QLatin1String("Unit"))
                return xml.readElementText();
            xml.skipCurrentElement();
        }
        return {};
    }
    return {};
}

QByteArray descriptionText(KX_HANDLE handle)
{
    uint32_t length = 0;
    QByteArray text(1, '\0');
    if (KX_XML_GetGenICamXML(handle, text.data(), 1, &length) != KX_E_BUFFER_TOO_SMALL)
        return {};
    text.resize(int(length));
    if (KX_XML_GetGenICamXML(handle, text.data(), length, &length) != KX_OK)
        return {};
    text.chop(1);
    return text;
}

} // namespace companion
