#include "jobs/file/FeaturesFile.h"

#include "jobs/file/RegularFile.h"
#include "jobs/file/XmlSafety.h"

#include <SuiteTools/SuiteTools.h>

#include <QFile>
#include <QStringList>

namespace ie
{

QString fileBegin(const QString& version)
{
    return QString("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r\n"
                   "<FeaturesFile version=\"%1\">\r\n")
        .arg(version);
}

QString headerLine(const QString& element, const QString& text)
{
    return QString("<%1>%2</%1>\r\n").arg(element, text);
}

QString featuresBegin()
{
    return "<Features>\r\n";
}

QString plainBlock(const PlainFeature& feature)
{
    return QString("<Feature>\r\n"
                   "<Name>%1</Name>\r\n"
                   "<Type>%2</Type>\r\n"
                   "<Value>%3</Value>\r\n"
                   "<Streamable>Yes</Streamable>\r\n"
                   "</Feature>\r\n")
        .arg(feature.name, feature.type, feature.value);
}

QString complexBegin(const QString& name, qint64 length, const QString& reg)
{
    return QString("<ComplexFeature name=\"%1\" len=\"%2\" reg=\"%3\">\r\n")
        .arg(name, QString::number(length), reg);
}

QString registerLine(const RegisterValue& value)
{
    const QString address = QString::number(value.address);
    if (!value.converted)
        return QString("<RegValue address=\"%1\" variables=\"%2\">%3</RegValue>\r\n")
            .arg(address, value.variables, value.content);
    return QString("<RegValue address=\"%1\" variables=\"%2\" to=\"%4\" from=\"%5\">%3</RegValue>\r\n")
        .arg(address, value.variables, value.content, value.to, value.from.toHtmlEscaped());
}

QString complexEnd()
{
    return "</ComplexFeature>\r\n";
}

QString fileEnd()
{
    return "</Features>\r\n</FeaturesFile>";
}

QString booleanText(bool value)
{
    return value ? "1" : "0";
}

QString integerText(qint64 value)
{
    return QString::number(value);
}

QString enumerationText(quint32 value)
{
    return QString::number(value);
}

QString floatText(double value)
{
    return QString::number(value, 'f', 6);
}

QString wordsText(const QVector<quint32>& words)
{
    QStringList texts;
    texts.reserve(words.size());
    for (const quint32 word : words)
        texts.append(QString::number(word));
    return texts.join(',');
}

LoadedFile loadFeaturesFile(const QString& path)
{
    LoadedFile loaded;
    QFile file(path);
    if (!openRegular(file, QIODevice::ReadOnly).isEmpty()) {
        loaded.failure = LoadedFile::Failure::NotOpened;
        return loaded;
    }
    if (file.size() > kMaximumFileSize) {
        loaded.failure = LoadedFile::Failure::TooLarge;
        return loaded;
    }
    return loadFeaturesText(file.readAll());
}

LoadedFile loadFeaturesText(const QString& text)
{
    LoadedFile loaded;
    if (text.isEmpty())
        loaded.failure = LoadedFile::Failure::Empty;
    else if (!isSafeToParse(text) || !loaded.document.setContent(text))
        loaded.failure = LoadedFile::Failure::NotLoaded;
    return loaded;
}

namespace
{

FeaturesHeader readHeader(const QDomElement& root)
{
    FeaturesHeader header;
    header.version = root.attribute("version");
    const QDomElement firmware = root.firstChildElement("DeviceFirmwareVersion");
    header.hasFirmware = !firmware.isNull();
    header.firmware = firmware.text();
    const QDomElement model = root.firstChildElement("DeviceModelName");
    header.hasModel = !model.isNull();
    header.model = model.text();
    const QDomElement boardType = root.firstChildElement("BoardDeviceType");
    header.hasBoardType = !boardType.isNull();
    header.boardType = boardType.text();
    return header;
}

// A later child of the same name overwrites an earlier one.
PlainFeature readPlain(const QDomElement& element, QStringList& names)
{
    PlainFeature feature;
    for (QDomElement child = element.firstChildElement(); !child.isNull();
         child = child.nextSiblingElement()) {
        const QString tag = child.tagName();
        if (tag == "Name")
            names += feature.name = child.text();
        else if (tag == "Type")
            feature.type = child.text();
        else if (tag == "Value")
            feature.value = child.text();
    }
    return feature;
}

RegisterValue readRegisterValue(const QDomElement& element)
{
    RegisterValue value;
    value.addressText = element.attribute("address");
    value.address = VELAInterface::string2Int(value.addressText);
    value.variables = element.attribute("variables");
    value.content = element.text();
    value.to = element.attribute("to");
    value.from = element.attribute("from");
    value.converted = !value.to.isEmpty();
    return value;
}

ComplexFeature readComplex(const QDomElement& element)
{
    ComplexFeature feature;
    feature.name = element.attribute("name");
    feature.lengthText = element.attribute("len");
    feature.length = VELAInterface::string2Int(feature.lengthText);
    feature.reg = element.attribute("reg");
    for (QDomElement child = element.firstChildElement(); !child.isNull(); child = child.nextSiblingElement())
        feature.values.append(readRegisterValue(child));
    return feature;
}

} // namespace

FeaturesContent readFeatures(const QDomElement& root)
{
    FeaturesContent content;
    content.header = readHeader(root);
    const QDomElement features = root.firstChildElement("Features");
    content.hasFeatures = !features.isNull();
    for (QDomElement child = features.firstChildElement(); !child.isNull();
         child = child.nextSiblingElement()) {
        FeaturesContent::Entry entry;
        entry.isComplex = child.tagName() == "ComplexFeature";
        if (entry.isComplex)
            entry.complex = readComplex(child);
        else
            entry.plain = readPlain(child, entry.names);
        content.entries.append(entry);
    }
    return content;
}

} // namespace ie
