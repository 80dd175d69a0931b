#include "iefeatures/files/NamedFeatures.h"

#include "iefeatures/files/FeaturesFileInput.h"

#include <QFile>
#include <QFileInfo>

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
    const ie::FeaturesContent content = readFeaturesFile(featuresFile).content;
    ImportedFeatures features;
    features.model = content.header.model;
    std::map<QString, bool> isKnown;
    for (const ie::FeaturesContent::Entry& entry : content.entries) {
        for (const QString& name : entry.names)
            takeOnce(name, features.names, isKnown);
        takeOnce(entry.complex.name, features.names, isKnown);
        for (const ie::RegisterValue& value : entry.complex.values)
            if (!value.addressText.isEmpty())
                features.blocks.emplace(value.address, entry.complex.name);
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
