#include "iefeatures/files/NamedFeatures.h"

#include <SuiteTools/SuiteTools.h>

#include <QFile>
#include <QFileInfo>
#include <QXmlStreamReader>

namespace companion
{
namespace
{

constexpr qint64 kLargest = 64 << 20;

// Nothing of what is no file: a device never ends.
QByteArray contentOf(const QString& path)
{
    QFile file(path);
    if (!QFileInfo(path).isFile() || file.size() > kLargest || !file.open(QIODevice::ReadOnly))
        return {};
    return file.readAll();
}

void takeOnce(const QString& name, QStringList& names, std::map<QString, bool>& isKnown)
{
    if (!name.isEmpty() && !std::exchange(isKnown[name], true))
        names += name;
}

} // namespace

ImportedFeatures featuresOfFile(const QString& featuresFile)
{
    ImportedFeatures features;
    std::map<QString, bool> isKnown;
    QXmlStreamReader reader(contentOf(featuresFile));
    QString block;
    while (!reader.atEnd()) {
        if (reader.readNext() != QXmlStreamReader::StartElement)
            continue;
        const QXmlStreamAttributes attributes = reader.attributes();
        if (reader.name() == QLatin1String("DeviceModelName")) {
            features.model = reader.readElementText(QXmlStreamReader::SkipChildElements);
        } else if (reader.name() == QLatin1String("Name")) {
            takeOnce(reader.readElementText(QXmlStreamReader::SkipChildElements), features.names, isKnown);
        } else if (reader.name() == QLatin1String("ComplexFeature")) {
            block = attributes.value("name").toString();
            takeOnce(block, features.names, isKnown);
        } else if (attributes.hasAttribute("address")) {
            features.blocks.emplace(VELAInterface::string2Int(attributes.value("address").toString()), block);
        }
    }
    return features;
}

ImportedFeatures featuresOfBag(const QString& bagFile)
{
    ImportedFeatures features;
    std::map<QString, bool> isKnown;
    for (const QByteArray& line : contentOf(bagFile).split('\n'))
        if (!line.startsWith('#'))
            takeOnce(QString::fromUtf8(line.left(line.indexOf('\t'))).trimmed(), features.names, isKnown);
    return features;
}

} // namespace companion
