#include "iefeatures/files/FeaturesFileInput.h"

#include "jobs/file/XmlSafety.h"

#include <QDomDocument>
#include <QFile>
#include <QFileInfo>

namespace companion
{
namespace
{

constexpr qint64 kLargestFile = 512 * 1024 * 1024;

} // namespace

FeaturesFileInput readFeaturesFile(const QString& path)
{
    QFile file(path);
    // Devices never end.
    if (!QFileInfo(path).isFile() || file.size() > kLargestFile || !file.open(QIODevice::ReadOnly))
        return {{}, "The file cannot be read: " + path};
    const QString text(file.readAll());
    QDomDocument document;
    if (text.isEmpty() || !ie::isSafeToParse(text) || !document.setContent(text))
        return {{}, "The file is no features file: " + path};
    return {ie::readFeatures(document.documentElement()), {}};
}

} // namespace companion
