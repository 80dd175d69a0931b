#include "iefeatures/files/NamedFeatures.h"

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

} // namespace

NamedFeatures namedBy(const ie::FeaturesContent& content)
{
    NamedFeatures features;
    for (const ie::FeaturesContent::Entry& entry : content.entries) {
        features.names += entry.isComplex ? entry.complex.name : entry.plain.name;
        for (const ie::RegisterValue& value : entry.complex.values)
            features.blocks.emplace(value.address, entry.complex.name);
    }
    features.names.removeAll({});
    features.names.removeDuplicates();
    return features;
}

NamedFeatures namedByBag(const QString& bagFile)
{
    NamedFeatures features;
    for (const QByteArray& line : contentOf(bagFile).split('\n'))
        if (!line.startsWith('#'))
            features.names += QString::fromUtf8(line.left(line.indexOf('\t'))).trimmed();
    features.names.removeAll({});
    features.names.removeDuplicates();
    return features;
}

bool isFeatureBag(const QString& path)
{
    QFile file(path);
    char first = 0;
    return QFileInfo(path).isFile() && file.open(QIODevice::ReadOnly) && file.getChar(&first) && first == '#';
}

} // namespace companion
