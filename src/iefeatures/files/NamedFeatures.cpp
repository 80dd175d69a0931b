#include "iefeatures/files/NamedFeatures.h"

#include "iefeatures/files/FeatureBagInput.h"

#include "jobs/file/RegularFile.h"

#include <QFile>

namespace companion
{
namespace
{

// Nothing of what is no file, or too large for one.
QByteArray contentOf(const QString& path)
{
    QFile file(path);
    const bool isOpen = ie::openRegular(file, QIODevice::ReadOnly).isEmpty();
    return isOpen && file.size() <= kLargestBag ? file.readAll() : QByteArray();
}

} // namespace

void NamedFeatures::name(const QString& feature, const QString& text)
{
    if (feature.isEmpty())
        return;
    if (!values.contains(feature))
        names += feature;
    values[feature] = text;
}

void NamedFeatures::add(const NamedFeatures& behind)
{
    for (const QString& feature : behind.names)
        name(feature, behind.values[feature]);
    blocks.insert(behind.blocks.begin(), behind.blocks.end());
}

NamedFeatures namedBy(const ie::FeaturesContent& content)
{
    NamedFeatures features;
    for (const ie::FeaturesContent::Entry& entry : content.entries) {
        features.name(entry.isComplex ? entry.complex.name : entry.plain.name, entry.plain.value);
        for (const ie::RegisterValue& value : entry.complex.values)
            features.blocks.emplace(value.address, entry.complex.name);
    }
    return features;
}

NamedFeatures namedByBag(const QString& bagFile)
{
    NamedFeatures features;
    const QByteArray content = contentOf(bagFile);
    for (int begin = 0, end = 0; begin < content.size(); begin = end + 1) {
        end = content.indexOf('\n', begin);
        end = end < 0 ? content.size() : end;
        const QByteArray line = QByteArray::fromRawData(content.constData() + begin, end - begin);
        const int tab = line.indexOf('\t');
        if (!line.startsWith('#'))
            features.name(QString::fromUtf8(line.left(tab)).trimmed(), QString::fromUtf8(line.mid(tab + 1)));
    }
    return features;
}

bool isFeatureBag(const QString& path)
{
    QFile file(path);
    char first = 0;
    return ie::openRegular(file, QIODevice::ReadOnly).isEmpty() && file.getChar(&first) && first == '#';
}

} // namespace companion
